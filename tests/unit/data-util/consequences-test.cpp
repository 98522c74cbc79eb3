// A slip is told once: what only follows from it, and ends when it is mended, is no finding.

#include <algorithm>
#include <set>

#include "a-face-document.h"
#include "face-schema.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class ASlip : public AFullFaceDocument {
protected:
    // Every `from` that `ends` follow, to `to`.
    void ReplaceAll(const std::string& from, const std::string& to, std::string_view ends)
    {
        for (std::size_t at = mText.find("<face-result"); (at = mText.find(from, at)) != std::string::npos;
             at += to.size()) {
            if (ends.find(mText[at + from.size()]) != std::string_view::npos)
                mText.replace(at, from.size(), to);
        }
    }
    void RenameElement(const std::string& name, const std::string& to)
    {
        ReplaceAll("<" + name, "<" + to, " >/\n");
        ReplaceAll("</" + name, "</" + to, ">");
    }
};

std::set<std::string> ElementNames()
{
    std::set<std::string> names;
    for (const DataUtil::ElementRule& rule : DataUtil::FaceSchema().Rules()) names.insert(rule.name);
    names.erase(DataUtil::FaceSchema().Root().name);
    return names;
}

std::set<std::string> AttributeNames()
{
    std::set<std::string> names;
    for (const DataUtil::ElementRule& rule : DataUtil::FaceSchema().Rules()) {
        for (const std::string_view name : DataUtil::AttributeNames(rule)) names.emplace(name);
    }
    return names;
}

}  // namespace

TEST_F(ASlip, in_the_name_of_any_element_is_the_only_finding)
{
    const std::string whole = mText;
    for (const std::string& name : ElementNames()) {
        mText = whole;
        RenameElement(name, name + name.back());
        EXPECT_THAT(Codes(), Not(IsEmpty())) << name;
        EXPECT_THAT(Codes(), Each("E-ELEMENT-UNKNOWN")) << name;
    }
}

TEST_F(ASlip, in_the_name_of_any_attribute_is_the_only_finding)
{
    const std::string whole = mText;
    for (const std::string& name : AttributeNames()) {
        mText = whole;
        for (const char before : {' ', '\n'}) ReplaceAll(before + name, before + name + name.back(), "=");
        EXPECT_THAT(Codes(), Each("E-ATTRIBUTE-UNKNOWN")) << name;
    }
}

TEST_F(ASlip, that_makes_an_element_unheard_of_is_the_only_finding)
{
    const std::string whole = mText;
    for (const std::string& name : ElementNames()) {
        mText = whole;
        RenameElement(name, "unheard-of");
        EXPECT_THAT(Codes(), Not(IsEmpty())) << name;
        EXPECT_THAT(Codes(), Each("E-ELEMENT-UNKNOWN")) << name;
    }
}

TEST_F(ASlip, that_makes_one_of_several_elements_unheard_of_is_the_only_finding)
{
    const std::string whole = mText;
    std::size_t at = whole.find("<face-result");
    while ((at = whole.find("\n  ", at + 1)) != std::string::npos) {
        const std::size_t begin = whole.find_first_not_of(' ', at + 1);
        if (whole[begin] != '<' || whole[begin + 1] == '/') continue;
        const std::string name = whole.substr(begin + 1, whole.find_first_of(" >/", begin) - begin - 1);
        const std::size_t end = whole.find('>', begin);
        mText = whole;
        // No element holds one of its own name here.
        if (whole[end - 1] != '/')
            mText.replace(whole.find("</" + name + ">", end) + 2, name.size(), "unheard-of");
        mText.replace(begin + 1, name.size(), "unheard-of");
        EXPECT_THAT(Codes(), ElementsAre("E-ELEMENT-UNKNOWN")) << whole.substr(begin, end - begin);
    }
}

TEST_F(ASlip, that_misplaces_an_element_leaves_no_reference_unknown)
{
    const std::size_t begin = mText.find("    <palette");
    const std::size_t end = mText.find("    <switch");
    const std::string palette = mText.substr(begin, end - begin);
    mText.erase(begin, end - begin);
    Replace("  <options>", palette + "  <options>");
    ExpectOnly("E-PLACE", "<palette");
}

TEST_F(ASlip, in_an_element_keeps_no_fault_within_it_from_being_told)
{
    RenameElement("palette", "palete");
    Replace("value=\"#0000FF80\"", "value=\"#00\"");
    EXPECT_THAT(Codes(), ElementsAre("E-ELEMENT-UNKNOWN", "E-VALUE"));
}

TEST_F(AFaceDocument, reads_an_attribute_by_its_own_name_when_a_misspelled_one_stands_beside_it)
{
    Replace("<switch id=\"seconds\"", "<switch idd=\"dial\" id=\"seconds\"");
    ExpectOnly("E-ATTRIBUTE-UNKNOWN", "<switch", "did you mean \"id\"?");
}

TEST_F(AFaceDocument, says_which_language_a_misspelled_tag_stands_for)
{
    Replace("<strings language=\"de\">", "<strings language=\"de_DE\">");
    Replace("    <string key=\"tone.red\">Rot</string>\n", "");
    const auto findings = Check();
    ASSERT_THAT(Codes(), ElementsAre("E-VALUE", "W-UNTRANSLATED"));
    EXPECT_THAT(findings[0].message, testing::EndsWith("; did you mean \"de-DE\"?"));
    EXPECT_THAT(findings[1].message, testing::StartsWith("\"de-DE\" lacks tone.red;"));
}

TEST_F(AFaceDocument, names_no_language_without_a_name)
{
    Replace("<strings language=\"de\">", "<strings language=\"german\">");
    Replace("    <string key=\"tone.red\">Rot</string>\n", "");
    ASSERT_THAT(Codes(), ElementsAre("E-VALUE", "W-UNTRANSLATED"));
    EXPECT_THAT(Check()[1].message, testing::StartsWith("this language lacks tone.red;"));
}

TEST_F(AFaceDocument, is_not_told_to_remove_the_role_that_a_misspelled_one_is_near_to)
{
    for (std::size_t at = 0; (at = mText.find("=\"main\"", at)) != std::string::npos; ++at) {
        if (mText.compare(at - 4, 4, "role") != 0) mText.replace(at, 7, "=\"maim\"");
    }
    EXPECT_THAT(Codes(), Each("E-REF-UNKNOWN"));
}

TEST_F(AFaceDocument, is_not_told_to_remove_what_a_reference_near_to_nothing_may_mean)
{
    Replace("label-key=\"top\"", "label-key=\"upper-field\"");
    ExpectOnly("E-REF-UNKNOWN", "<slot");
}

TEST_F(AFaceDocument, is_told_of_an_unused_text_beside_a_misspelled_one)
{
    Replace("label-key=\"top\"", "label-key=\"tops\"");
    Replace("<string key=\"top\">Top field</string>",
            "<string key=\"top\">Top field</string><string key=\"extra\">E</string>");
    Replace("<string key=\"top\">Oberes Feld</string>",
            "<string key=\"top\">Oberes Feld</string><string key=\"extra\">E</string>");
    EXPECT_THAT(Codes(), ElementsAre("W-UNUSED", "E-REF-UNKNOWN"));
    EXPECT_THAT(Check()[0].message, testing::HasSubstr("\"extra\""));
}

TEST_F(AFaceDocument, is_not_told_to_remove_the_group_that_a_misspelled_one_is_near_to)
{
    Replace("when=\"seconds=on\"", "when=\"second=on\"");
    ExpectOnly("E-REF-UNKNOWN", "second=on", "did you mean \"seconds\"?");
}

TEST_F(AFaceDocument, tells_options_apart_by_a_condition_with_a_misspelled_group_or_option)
{
    Replace("<option id=\"dots\" label-key=\"dial.dots\"/>",
            "<option id=\"dots\" label-key=\"dial.dots\"/><option id=\"none\" label-key=\"dial.dots\"/>");
    const std::string whole = mText;
    Replace("when=\"dial=dots\"", "when=\"dail=dots\"");
    ExpectOnly("E-REF-UNKNOWN", "dail=dots");
    mText = whole;
    Replace("when=\"dial=dots\"", "when=\"dial=dotes\"");
    ExpectOnly("E-REF-UNKNOWN", "dial=dotes");
}

TEST_F(AFaceDocument, finds_nothing_unused_that_a_malformed_condition_may_name)
{
    Replace("when=\"seconds=on\"", "when=\"Seconds\"");
    ExpectOnly("E-VALUE", "when=\"Seconds\"");
}

TEST_F(AFaceDocument, reads_a_misspelled_choice_as_the_nearest)
{
    Replace("<option id=\"bars\" label-key=\"dial.bars\" default=\"true\"/>",
            "<option id=\"bars\" label-key=\"dial.bars\" default=\"ture\"/>");
    ExpectOnly("E-VALUE", "ture", "did you mean \"true\"?");
}

TEST_F(AFaceDocument, names_no_group_without_a_name)
{
    Replace("<style id=\"dial\" ", "<style id=\"Dial\" ");
    Replace("label-key=\"dial.bars\" default=\"true\"", "label-key=\"dial.bars\"");
    ASSERT_THAT(Codes(), ElementsAre("E-DEFAULT", "E-VALUE"));
    EXPECT_THAT(Check()[0].message, testing::StartsWith("this group has no default;"));
}
