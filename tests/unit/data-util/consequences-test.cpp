// A slip is told once: what only follows from it, and ends when it is mended, is no finding.

#include <algorithm>
#include <regex>
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
    for (const DataUtil::ElementRule& rule : DataUtil::FaceSchema().Rules()) names.emplace(rule.name);
    names.erase(std::string(DataUtil::FaceSchema().Root().name));
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
    AddBefore("  <options>", palette);
    ExpectOnly("E-PLACE", "<palette");
}

TEST_F(ASlip, in_an_element_keeps_no_fault_within_it_from_being_told)
{
    RenameElement("palette", "palete");
    Replace("value=\"#0000FF80\"", "value=\"#00\"");
    EXPECT_THAT(Codes(), ElementsAre("E-ELEMENT-UNKNOWN", "E-VALUE"));
}

TEST_F(ASlip, in_any_name_that_is_a_value_is_the_only_finding)
{
    const std::string whole = mText;
    const std::regex name("=\"([a-z][a-z0-9.-]*)\"");
    const std::size_t begin = whole.find("<face-result");
    const std::string read = whole.substr(begin, whole.find("<selection") - begin);
    for (std::sregex_iterator at(read.begin(), read.end(), name), end; at != end; ++at) {
        const std::size_t last = begin + static_cast<std::size_t>(at->position(1) + at->length(1)) - 1;
        mText = whole;
        mText.insert(last, 1, mText[last]);
        EXPECT_LE(Check().size(), 1U) << Listed();
        if (at->length(1) < 4) continue;
        mText = whole;
        mText.erase(last, 1);
        EXPECT_LE(Check().size(), 1U) << Listed();
    }
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
    AddAfter("<string key=\"top\">Top field</string>", "<string key=\"extra\">E</string>");
    AddAfter("<string key=\"top\">Oberes Feld</string>", "<string key=\"extra\">E</string>");
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
    AddAfter("<option id=\"dots\" label-key=\"dial.dots\"/>",
             "<option id=\"none\" label-key=\"dial.dots\"/>");
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

TEST_F(AFaceDocument, is_told_of_a_misspelled_key_of_the_default_language_where_it_stands)
{
    Replace("<string key=\"tone.red\">Red</string>", "<string\nkey=\"tone.rde\">Red</string>");
    ExpectOnly("E-REF-UNKNOWN", "key=\"tone.rde\"",
               "nothing uses the text \"tone.rde\", but one that is not there; did you mean \"tone.red\"?");
}

TEST_F(AFaceDocument, is_told_of_a_misspelled_key_of_another_language_where_it_stands)
{
    Replace("<string key=\"tone.red\">Rot</string>", "<string key=\"tone.rde\">Rot</string>");
    ExpectOnly("E-REF-UNKNOWN", ">Rot<", "did you mean \"tone.red\"?");
}

TEST_F(AFaceDocument, is_told_of_a_use_that_is_misspelled_where_the_text_is_translated)
{
    Replace("<option id=\"dots\" label-key=\"dial.dots\"/>", "<option id=\"dots\" label-key=\"tops\"/>");
    Replace("label-key=\"top\"", "label-key=\"tops\"");
    EXPECT_THAT(Codes(), ElementsAre("W-UNUSED", "E-REF-UNKNOWN", "E-REF-UNKNOWN"));
}

TEST_F(AFaceDocument, is_told_of_a_text_that_nothing_uses_though_what_is_used_is_nearer_to_another)
{
    AddAfter("<string key=\"top\">Top field</string>", "<string key=\"topics\">Topics</string>");
    Replace("text-key=\"title\"", "text-key=\"topi\"");
    Replace("label-key=\"top\"", "label-key=\"topi\"");
    EXPECT_THAT(Codes(), ElementsAre("W-UNUSED", "W-UNTRANSLATED", "E-REF-UNKNOWN", "E-REF-UNKNOWN"));
}

TEST_F(AFaceDocument, is_told_of_a_role_that_one_option_misspells_where_it_stands)
{
    const std::string whole = mText;
    for (const std::string color : {"#FF0000", "#0000FF"}) {
        mText = whole;
        Replace("role=\"main\" value=\"" + color, "role=\"mian\" value=\"" + color);
        ExpectOnly("E-COVERAGE", "mian", "not every option sets the role \"mian\"; did you mean \"main\"?");
        EXPECT_THAT(Check()[0].path, testing::EndsWith("/color[mian]/@role"));
    }
}

TEST_F(AFaceDocument, has_its_first_option_taken_for_right_where_nothing_else_tells)
{
    AddAfter("<color role=\"main\" value=\"#FF0000\"/>", "<color role=\"edge\" value=\"#880000\"/>");
    AddAfter("<color role=\"main\" value=\"#0000FF\"/>", "<color role=\"egde\" value=\"#000088\"/>");
    ExpectOnly("E-COVERAGE", "egde", "did you mean \"edge\"?");
}

TEST_F(AFaceDocument, is_told_of_a_misspelled_role_of_its_only_option_where_it_stands)
{
    Replace(
        "      <option id=\"blue\" label-key=\"tone.blue\">\n"
        "        <color role=\"main\" value=\"#0000FF\"/>\n      </option>\n",
        "");
    Replace("label-key=\"dial.dots\"/>", "label-key=\"tone.blue\"/>");
    for (const char* text : {"Dots", "Punkte"})
        Replace("    <string key=\"dial.dots\">" + std::string(text) + "</string>\n", "");
    ASSERT_THAT(Codes(), IsEmpty());
    Replace("role=\"main\"", "role=\"mian\"");
    ExpectOnly("E-REF-UNKNOWN", "mian", "nothing uses the role \"mian\"");
}

TEST_F(AFaceDocument, is_told_of_uses_that_are_misspelled_where_they_are_no_more_than_the_definitions)
{
    AddAfter("<color role=\"main\" value=\"#FF0000\"/>", "<color role=\"edge\" value=\"#880000\"/>");
    AddAfter("<color role=\"main\" value=\"#0000FF\"/>", "<color role=\"edge\" value=\"#000088\"/>");
    Replace("width=\"4\" color=\"main\"", "width=\"4\" color=\"egde\"");
    Replace("width=\"6\" color=\"main\"", "width=\"6\" color=\"egde\"");
    EXPECT_THAT(Codes(), ElementsAre("E-REF-UNKNOWN", "E-REF-UNKNOWN"));
    EXPECT_EQ(Check()[0].line, LineOf("width=\"4\" color=\"egde\""));
}

TEST_F(AFaceDocument, is_told_of_the_misspelled_id_of_a_group_where_it_stands)
{
    Replace("<style id=\"dial\"", "<style id=\"dail\"");
    ExpectOnly("E-REF-UNKNOWN", "<style", "nothing uses the group or slot \"dail\"");
}

TEST_F(AFaceDocument, is_not_refused_for_an_unused_group_near_to_one_that_was_chosen_before)
{
    Replace("<layer when=\"dial=bars\">", "<layer>");
    Replace("<ticks when=\"dial=dots\"", "<ticks");
    Replace(" when=\"dial=bars\"/>", "/>");
    AddAfter("<selection>", "<pick group=\"dail\" option=\"bars\"/><pick group=\"dail\" option=\"dots\"/>");
    EXPECT_THAT(Codes(), testing::UnorderedElementsAre("W-UNUSED", "N-PICK-UNKNOWN", "N-PICK-UNKNOWN"));
}

TEST_F(AFaceDocument, lacks_no_default_where_one_is_refused)
{
    Replace("default=\"true\"/>", "default=\"yes\"/>");
    ExpectOnly("E-VALUE", "default=\"yes\"");
}

TEST_F(AFaceDocument, has_no_slot_beyond_a_canvas_without_a_side)
{
    Replace("width=\"360\" height=\"360\"", "width=\"360\"");
    ExpectOnly("E-ATTRIBUTE-MISSING", "<face-result", "\"height\"");
    AddBefore("width=\"360\" shape", "height=\"36O\" ");
    ExpectOnly("E-VALUE", "<face-result");
    Replace("x=\"150\" y=\"40\"", "x=\"150\" y=\"-1\"");
    EXPECT_THAT(Codes(), ElementsAre("E-VALUE", "W-OFF-CANVAS"));
}
