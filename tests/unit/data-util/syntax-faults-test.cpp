// What is said of a text that is not well-formed, and where.

#include <gtest/gtest.h>

#include "face-document.h"

namespace {

struct Slip {
    const char* text;
    int line, column;
    const char* says;
};

// clang-format off
constexpr Slip kSlips[] = {
    {"<a>\n  <b\n/>\n<c>", 4, 4, "the text ends where \"<c>\" of line 4 is open; close it with \"</c>\""},
    {"<a></a></b>", 1, 8, "\"</b>\" closes no element; remove it"},
    {"<a/>\n<b/>", 2, 1, "nothing may follow the end of the root element"},
    {"<a>x & y</a>", 1, 6, "a bare \"&\"; write \"&amp;\""},
    {"<a>AT&T</a>", 1, 6, "a bare \"&\"; write \"&amp;\""},
    {"<a x='fish & chips'/>", 1, 12, "a bare \"&\"; write \"&amp;\""},
    {"<a>&nbsp;</a>", 1, 4, "undefined entity; only &amp; &lt; &gt; &quot; &apos; and numeric references exist"},
    {"<a>1 < 2</a>", 1, 6, "a bare \"<\"; write \"&lt;\""},
    {"<a x=\"1<2\"/>", 1, 8, "\"<\" in the value of an attribute; write \"&lt;\", or end the value with its quote"},
    {"<a>\n<b x='1>Text</b></a>", 2, 13, "\"<\" in the value of an attribute; write \"&lt;\", or end the value with its quote"},
    {"<a>\n<b x='1'\n<c/></a>", 3, 1, "\"<\" within the tag that line 2 begins; end that with \">\""},
    {"<a x=5/>", 1, 6, "the value of an attribute stands in quotes"},
    {"<a b@='1'/>", 1, 5, "invalid token"},
    {"<a>\x01</a>", 1, 4, "the control character U+0001; remove it"},
    {"<a x='\x1F'/>", 1, 7, "the control character U+001F; remove it"},
    {"<a>\xFC" "ber</a>", 1, 4, "this byte is no UTF-8; save the file as UTF-8"},
    {"<a x='M\xFCnchen'/>", 1, 8, "this byte is no UTF-8; save the file as UTF-8"},
    {"<a>\xC3", 1, 4, "this byte is no UTF-8; save the file as UTF-8"},
    {"\x89PNG\r\n\x1A\n", 1, 1, "this is a PNG picture"},
    {"\xFF\xD8\xFF\xE0", 1, 1, "this is a JPEG picture"},
    {"<a><b", 1, 4, "the text ends before what begins here does"},
};

// A start tag on line 2 and an end tag on line 3 that do not match.
struct Mismatch {
    const char* text;
    const char* start;
    const char* end;
};
constexpr Mismatch kMisspelledEnds[] = {
    {"<a>\n<b><c/>\n</a>", "b", "a"},
    {"<a>\n<layer x='1'>\n</layr></a>", "layer", "layr"},
    {"<scene><layer>\n<hand>\n</layer>", "hand", "layer"},
    {"<options>\n<styel>\n</scene>", "styel", "scene"},
};
constexpr Mismatch kMisspelledStarts[] = {
    {"\n<face-results>\n</face-result>", "face-results", "face-result"},
    {"<options>\n<palete>\n</palette>", "palete", "palette"},
    {"<face-result>\n<scen>\n</scene>", "scen", "scene"},
    {"<face-result>\n<string language='de'><string key='a'/>\n</strings>", "string", "strings"},
    {"<watchface>\n<complicaton>\n</complication>", "complicaton", "complication"},
    {"<face-resutl>\n<optons>\n</options>", "optons", "options"},
    {"<scene>\n<palete>\n</palette>", "palete", "palette"},
};
// clang-format on

// The only finding.
std::string FindingOf(const std::string& text)
{
    const auto findings = DataUtil::ParseFace(text).findings;
    EXPECT_EQ(findings.size(), 1U) << text;
    return findings.empty() ? "" : DataUtil::FormatFinding(findings[0]);
}

std::string AtPlace(int line, int column, const std::string& says)
{
    return std::to_string(line) + ":" + std::to_string(column) + ": E-SYNTAX: not well-formed XML: " + says;
}

std::string Tag(const std::string& begin, const std::string& name)
{
    return "\"" + begin + name + ">\"";
}

}  // namespace

TEST(ATextThatIsNotWellFormed, has_a_finding_that_says_what_to_write)
{
    for (const Slip& slip : kSlips)
        EXPECT_EQ(FindingOf(slip.text), AtPlace(slip.line, slip.column, slip.says)) << slip.text;
}

TEST(ATextThatIsNotWellFormed, is_told_which_end_tag_is_missing_or_misspelled)
{
    for (const auto& [text, start, end] : kMisspelledEnds) {
        EXPECT_EQ(FindingOf(text), AtPlace(3, 1,
                                           Tag("</", end) + " where " + Tag("<", start) +
                                               " of line 2 is open; close it with " + Tag("</", start)));
    }
}

TEST(ATextThatIsNotWellFormed, is_told_which_start_tag_is_misspelled)
{
    for (const auto& [text, start, end] : kMisspelledStarts) {
        EXPECT_EQ(FindingOf(text), AtPlace(2, 1,
                                           Tag("<", start) + ", which " + Tag("</", end) +
                                               " of line 3 closes; open it with " + Tag("<", end)));
    }
}

TEST(ATextThatIsNotWellFormed, is_quoted_in_part_however_long_its_names_are)
{
    const std::string name(100000, 'n');
    const auto findings = DataUtil::ParseFace("<" + name + "></" + name + "x>").findings;
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_LT(findings[0].message.size(), 500U);
}
