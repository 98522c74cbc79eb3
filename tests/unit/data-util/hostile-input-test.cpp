// Texts that mean harm. Each is refused with one finding, quickly and without a half result.

#include <algorithm>
#include <chrono>

#include "a-face-document.h"
#include "nearest-name.h"
#include "xml-gate.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;

namespace {

std::string Times(int count, std::string_view text)
{
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

// Long names that differ in their last letters only: nothing is slower to compare.
std::string LongName(int number, char last)
{
    const std::string digits = std::to_string(10000 + number);
    return std::string(57, 'a') + digits + last;
}

class ADocumentOfManyNames : public AFaceDocument {
protected:
    // So many texts, and 999 elements that show none of them, but each one with nearly the same name.
    void FillWith(int texts, int timesEach = 1)
    {
        mText =
            R"(<face-result format="1" id="a" version="1" width="360" height="360" shape="round" default-language="en")"
            R"( preview-time="10:08:36" title-key=")" +
            LongName(0, 'k') + "\"><strings language=\"en\">\n";
        for (int i = 0; i < texts; ++i) mText += "<string key=\"" + LongName(i, 'k') + "\">T</string>\n";
        mText += "</strings><scene>\n";
        for (int i = 0; i < 999; ++i) {
            mText += "<text text-key=\"" + LongName(i / timesEach, 'x') +
                     "\" x=\"1\" y=\"1\" size=\"9\" color=\"#FFFFFF\"/>\n";
        }
        mText += "</scene></face-result>\n";
    }

    static std::size_t SuggestionsIn(const std::vector<DataUtil::Finding>& findings)
    {
        return static_cast<std::size_t>(
            std::count_if(findings.begin(), findings.end(), [](const DataUtil::Finding& finding) {
                return !DataUtil::SuggestedName(finding.message).empty();
            }));
    }
};

}  // namespace

TEST_F(AFaceDocument, refuses_a_doctype)
{
    AddBefore("<face-result", "<!DOCTYPE face-result>\n");
    ExpectOnly("E-DOCTYPE", "<!DOCTYPE");
}

TEST_F(AFaceDocument, refuses_a_billion_laughs_at_the_doctype)
{
    AddBefore("<face-result", "<!DOCTYPE lolz [<!ENTITY a \"lol\"><!ENTITY b \"&a;&a;&a;&a;\">]>\n");
    Replace(">Dawn<", ">&b;<");
    ExpectOnly("E-DOCTYPE", "<!DOCTYPE");
}

TEST_F(AFaceDocument, refuses_an_external_entity_at_the_doctype)
{
    AddBefore("<face-result", "<!DOCTYPE x [<!ENTITY e SYSTEM \"file:///etc/passwd\">]>\n");
    ExpectOnly("E-DOCTYPE", "<!DOCTYPE");
}

TEST_F(AFaceDocument, refuses_an_undefined_entity)
{
    Replace(">Dawn<", ">D&auml;wn<");
    ExpectOnly("E-SYNTAX", "&auml;", "&amp;");
}

TEST_F(AFaceDocument, refuses_a_duplicate_attribute)
{
    AddAfter("<switch id=\"seconds\"", " id=\"other\"");
    ExpectOnly("E-SYNTAX", "<switch", "duplicate attribute");
}

TEST_F(AFaceDocument, refuses_two_roots)
{
    mText += "<face-result/>\n";
    ExpectOnly("E-SYNTAX", "<face-result/>");
}

TEST_F(AFaceDocument, refuses_bytes_that_are_no_utf8)
{
    Replace(">Dawn<", ">D\xE4wn<");
    ExpectOnly("E-SYNTAX", "<string key=\"title\">D");
}

TEST_F(AFaceDocument, refuses_overlong_utf8)
{
    Replace(">Dawn<",
            ">\xC0\xBC"
            "script<");
    EXPECT_THAT(Codes(), ElementsAre("E-SYNTAX"));
}

TEST_F(AFaceDocument, refuses_another_encoding)
{
    Replace("encoding=\"UTF-8\"", "encoding=\"ISO-8859-1\"");
    ExpectOnly("E-ENCODING", "<?xml");
}

TEST_F(AFaceDocument, refuses_utf_16_with_a_mark_and_without)
{
    const std::string whole = mText;
    for (const bool isBig : {false, true}) {
        for (const bool isMarked : {false, true}) {
            mText = !isMarked ? "" : isBig ? "\xFE\xFF" : "\xFF\xFE";
            for (const char c : whole) mText += isBig ? std::string{'\0', c} : std::string{c, '\0'};
            ASSERT_THAT(Check(), SizeIs(1));
            EXPECT_EQ(DataUtil::FormatFinding(Check()[0]),
                      "1:1: E-ENCODING: encoding \"UTF-16\"; store it as UTF-8");
        }
    }
}

TEST_F(AFaceDocument, accepts_its_encoding_in_small_letters)
{
    Replace("encoding=\"UTF-8\"", "encoding=\"utf-8\"");
    EXPECT_THAT(Codes(), ElementsAre());
}

TEST_F(AFaceDocument, refuses_an_empty_text)
{
    mText.clear();
    EXPECT_THAT(Codes(), ElementsAre("E-SYNTAX"));
}

TEST_F(AFaceDocument, refuses_a_cut_text_at_every_length)
{
    const std::string whole = mText;
    const std::size_t end = whole.find("</face-result>");
    for (std::size_t length = 0; length < end; length += 7) {
        mText = whole.substr(0, length);
        ASSERT_THAT(Codes(), ElementsAre("E-SYNTAX")) << length;
    }
}

TEST_F(AFaceDocument, refuses_a_zero_byte)
{
    const int line = LineOf(">Dawn<");
    Replace(">Dawn<", std::string_view(">D\0wn<", 6));
    ASSERT_THAT(Codes(), ElementsAre("E-SYNTAX"));
    EXPECT_EQ(Check()[0].line, line);
    EXPECT_THAT(Check()[0].message, EndsWith("the control character U+0000; remove it"));
}

TEST_F(AFaceDocument, accepts_one_mebibyte_and_not_a_byte_more)
{
    mText.insert(mText.find("<scene>"),
                 "<!--" + std::string(DataUtil::kMostBytes - mText.size() - 7, 'x') + "-->");
    ASSERT_THAT(mText, SizeIs(DataUtil::kMostBytes));
    EXPECT_THAT(Codes(), ElementsAre());
    mText += "\n";
    ASSERT_THAT(Codes(), ElementsAre("E-LIMIT-SIZE"));
    EXPECT_EQ(DataUtil::FormatFinding(Check()[0]),
              "1:1: E-LIMIT-SIZE: the document has more than the 1048576 bytes that are allowed");
}

TEST_F(AFaceDocument, refuses_elements_nested_too_deeply)
{
    // The root and the scene are two levels.
    const std::string ok =
        Times(13, "<layer>") + "<circle cx=\"1\" cy=\"1\" r=\"1\" fill=\"main\"/>" + Times(13, "</layer>");
    Replace("  </scene>", ok + "</scene>");
    EXPECT_THAT(Codes(), ElementsAre());
    Replace(ok, "\n" + Times(200000 / 7, "<layer>"));
    ExpectOnly("E-LIMIT-DEPTH", "<layer><layer><layer>", "16 levels");
}

TEST_F(AFaceDocument, refuses_too_many_elements)
{
    Replace("  </scene>", Times(8192, "<layer/>") + "</scene>");
    ExpectOnly("E-LIMIT-COUNT", "<layer/>", "8192 elements");
}

TEST_F(AFaceDocument, refuses_too_many_attributes)
{
    std::string attributes;
    for (int i = 0; i < 33; ++i) attributes += " a" + std::to_string(i) + "=\"1\"";
    Replace("<scene>", "<scene" + attributes + ">");
    ExpectOnly("E-LIMIT-COUNT", "<scene", "32 attributes");
}

TEST_F(AFaceDocument, lists_at_most_a_thousand_findings_and_says_that_it_stopped)
{
    Replace("  </scene>", Times(3000, "<nothing/>") + "</scene>");
    const auto findings = Check();
    ASSERT_THAT(findings, SizeIs(DataUtil::Findings::kMostFindings + 1));
    EXPECT_EQ(findings.back().code, "E-LIMIT-FINDINGS");
}

TEST_F(AFaceDocument, is_refused_when_warnings_kept_the_checks_from_reaching_an_error)
{
    Replace("  </scene>", Times(1000, "<circle cx=\"1\" cy=\"1\" r=\"1\"/>") +
                              "<circle cx=\"1\" cy=\"1\" r=\"1\" fill=\"no-role\"/></scene>");
    EXPECT_FALSE(DataUtil::ParseFace(mText).document);
}

TEST_F(AFaceDocument, costs_little_time_however_many_faults_one_long_line_has)
{
    std::string line;
    for (int i = 0; line.size() < 900000; ++i)
        line += "<layer a" + std::string(100, 'x') + "=\"1\" opacity=\"2\"/>";
    Replace("  </scene>", line + "</scene>");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(DataUtil::ParseFace(mText).document);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST_F(ADocumentOfManyNames, has_each_unknown_one_compared_once_with_the_known_and_not_without_end)
{
    FillWith(512);
    const auto findings = Check();
    ASSERT_EQ(findings.size(), 999U);
    EXPECT_EQ(SuggestionsIn(findings), DataUtil::NameGuesses::kMostComparisons / 512);
}

TEST_F(ADocumentOfManyNames, has_definitions_compared_with_what_may_mean_them_not_without_end_either)
{
    FillWith(512, 3);
    const auto findings = Check();
    EXPECT_GT(SuggestionsIn(findings), DataUtil::NameGuesses::kMostComparisons / 512);
    EXPECT_LE(SuggestionsIn(findings), 2 * DataUtil::NameGuesses::kMostComparisons / 512);
}

TEST_F(ADocumentOfManyNames, has_none_of_those_compared_that_are_too_many)
{
    FillWith(6000);
    const auto findings = Check();
    EXPECT_EQ(findings.front().code, "E-CHILD-COUNT");
    EXPECT_EQ(SuggestionsIn(findings), DataUtil::NameGuesses::kMostComparisons / 512);
}

TEST_F(AFaceDocument, quotes_the_text_of_a_finding_on_one_line)
{
    Replace("value=\"#0000FF\"", "value=\"&#10;&#9;x\"");
    EXPECT_EQ(DataUtil::FormatFinding(Check().at(0)).find_first_of("\n\t"), std::string::npos);
}
