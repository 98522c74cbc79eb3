// What may stand where.

#include "a-face-document.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(AFaceDocument, without_a_fault_has_no_finding)
{
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AFaceDocument, refuses_another_root)
{
    mText = "<watchface format=\"1\"/>";
    ExpectOnly("E-ROOT", "<watchface", "face-result");
}

TEST_F(AFaceDocument, refuses_a_later_format)
{
    Replace("format=\"1\"", "format=\"2\"");
    ExpectOnly("E-FORMAT-VERSION", "<face-result", "reads format 1");
}

TEST_F(AFaceDocument, refuses_an_unknown_element_and_names_the_nearest)
{
    Replace("<text skeleton=\"Jmm\" x=\"180\" y=\"140\" size=\"30\" color=\"#FFFFFF\"/>",
            "<txt skeleton=\"Jmm\" x=\"180\" y=\"140\" size=\"30\" color=\"#FFFFFF\"/>");
    ExpectOnly("E-ELEMENT-UNKNOWN", "<txt", "did you mean \"text\"?");
}

TEST_F(AFaceDocument, refuses_an_element_in_the_wrong_place_and_says_where_it_belongs)
{
    AddAfter("<selection>", "<circle cx=\"1\" cy=\"1\" r=\"1\" fill=\"main\"/>");
    ExpectOnly("E-PLACE", "<selection>", "scene, layer, hand");
}

TEST_F(AFaceDocument, refuses_an_unknown_attribute_and_names_the_nearest)
{
    Replace("<ticks when=\"dial=dots\"", "<ticks\n when=\"dial=dots\"\n colour=\"main\"");
    ExpectOnly("E-ATTRIBUTE-UNKNOWN", "colour=", "did you mean \"color\"?");
}

TEST_F(AFaceDocument, refuses_a_condition_where_none_is_possible)
{
    Replace("<stop offset=\"0\"", "<stop when=\"dial=bars\" offset=\"0\"");
    ExpectOnly("E-ATTRIBUTE-UNKNOWN", "<stop when");
}

TEST_F(AFaceDocument, refuses_a_missing_attribute)
{
    Replace("<hand kind=\"second\" ", "<hand ");
    ExpectOnly("E-ATTRIBUTE-MISSING", "<hand", "\"kind\"");
}

TEST_F(AFaceDocument, refuses_a_text_with_both_key_and_skeleton)
{
    Replace("<text skeleton", "<text text-key=\"title\" skeleton");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "<text text-key=\"title\" skeleton");
}

TEST_F(AFaceDocument, refuses_a_text_with_neither_key_nor_skeleton)
{
    Replace("<text skeleton=\"Jmm\"", "<text");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "<text x=");
}

TEST_F(AFaceDocument, refuses_a_gradient_beside_a_fill)
{
    Replace("<circle cx=\"180\" cy=\"180\" r=\"180\">",
            "<circle cx=\"180\" cy=\"180\" r=\"180\" fill=\"main\">");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "<circle");
}

TEST_F(AFaceDocument, refuses_two_gradients_in_one_shape)
{
    Replace("    </circle>",
            "<linear-gradient x1=\"0\" y1=\"0\" x2=\"0\" y2=\"9\"><stop offset=\"0\" color=\"main\"/>"
            "<stop offset=\"1\" color=\"main\"/></linear-gradient></circle>");
    ExpectOnly("E-CHILD-COUNT", "<linear-gradient");
}

TEST_F(AFaceDocument, refuses_a_second_scene)
{
    AddBefore("  <selection>", "  <scene/>\n");
    ExpectOnly("E-CHILD-COUNT", "<scene/>", "at most 1");
}

TEST_F(AFaceDocument, refuses_a_style_with_nothing_to_choose)
{
    Replace("<option id=\"dots\" label-key=\"dial.dots\"/>", "");
    Replace("<ticks when=\"dial=dots\"", "<ticks");
    Replace("<text text-key=\"title\"", "<text text-key=\"dial.dots\"");
    ExpectOnly("E-CHILD-COUNT", "<style", "at least 2");
}

TEST_F(AFaceDocument, refuses_a_hand_without_a_shape)
{
    Replace("<bar length=\"150\" width=\"2\" fill=\"main\"/>", "");
    ExpectOnly("E-CHILD-COUNT", "<hand");
}

TEST_F(AFaceDocument, refuses_text_between_elements)
{
    AddAfter("<options>", "stray");
    ExpectOnly("E-TEXT", "<options>", "stray");
}

TEST_F(AFaceDocument, refuses_a_string_without_a_text)
{
    Replace("<string key=\"top\">Top field</string>", "<string key=\"top\"></string>");
    ExpectOnly("E-TEXT", "<string key=\"top\"></string>");
}

TEST_F(AFaceDocument, refuses_a_string_of_nothing_but_white_space)
{
    Replace("<string key=\"top\">Top field</string>", "<string key=\"top\"> &#9;&#10;<![CDATA[ ]]></string>");
    ExpectOnly("E-TEXT", "<string key=\"top\"> ");
}

TEST_F(AFaceDocument, reports_all_faults_at_once_in_the_order_of_the_text)
{
    Replace("version=\"3\"", "version=\"zero\"");
    Replace("<string key=\"tone.red\">Rot</string>", "<strin key=\"tone.red\">Rot</strin><oops/>");
    Replace("<color role=\"main\" value=\"#0000FF\"/>", "<color role=\"main\" value=\"blue\"/>");
    Replace("when=\"seconds=on\"", "when=\"second=on\"");
    EXPECT_THAT(Codes(),
                ElementsAre("E-VALUE", "E-ELEMENT-UNKNOWN", "E-ELEMENT-UNKNOWN", "E-VALUE", "E-REF-UNKNOWN"));
}

TEST_F(AFaceDocument, gives_the_column_in_characters_not_bytes)
{
    Replace("<string key=\"title\">Dawn</string>", "<string key=\"title\">晨曦</string><oops/>");
    const auto findings = Check();
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].column, 36);
}

TEST_F(AFaceDocument, gives_the_column_in_a_line_of_many_thousand_characters)
{
    std::string korean;
    for (int i = 0; i < 5000; ++i) korean += "각";
    Replace("<string key=\"title\">Dawn</string>", "<string key=\"title\">" + korean + "</string><oops/>");
    EXPECT_EQ(Check().at(0).column, 4 + 20 + 5000 + 9 + 1);
}

TEST_F(AFaceDocument, is_counted_without_its_byte_order_mark)
{
    mText = "\xEF\xBB\xBF" + mText;
    EXPECT_THAT(Codes(), IsEmpty());
    mText = "\xEF\xBB\xBF<oops/>";
    EXPECT_EQ(DataUtil::FormatFinding(Check().at(0)).substr(0, 12), "1:1: E-ROOT:");
}

TEST_F(AFaceDocument, names_the_path_of_a_finding)
{
    Replace("value=\"#0000FF\"", "value=\"blue\"");
    EXPECT_EQ(Check().at(0).path, "/face-result/options[1]/palette[tone]/option[blue]/color[main]/@value");
}

TEST_F(AFaceDocument, allows_comments_and_processing_instructions)
{
    AddBefore("<scene>", "<?xml-model href=\"face.rng\"?><!-- the drawing -->");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AFaceDocument, takes_at_most_eight_slots)
{
    std::string slots;
    for (int i = 0; i < 8; ++i) {
        slots += "<slot name=\"s" + std::to_string(i) +
                 "\" group=\"data\" label-key=\"top\" role=\"text\" x=\"0\" y=\"0\" width=\"9\" height=\"9\" "
                 "color=\"main\"><offer source=\"date\"/><fallback source=\"empty\"/></slot>\n";
    }
    AddBefore("    <slot name=\"top\"", slots);
    ExpectOnly("E-LIMIT-COUNT", "name=\"top\"", "8 slots");
}

TEST_F(AFaceDocument, takes_at_most_sixteen_groups)
{
    std::string switches;
    for (int i = 0; i < 14; ++i) {
        const std::string id = "s" + std::to_string(i);
        switches += "<switch id=\"" + id + "\" label-key=\"top\" default=\"on\"/>\n";
        Replace("  </scene>",
                "<circle when=\"" + id + "=on\" cx=\"9\" cy=\"9\" r=\"1\" fill=\"main\"/>\n  </scene>");
    }
    AddBefore("  </options>", switches);
    ExpectOnly("E-LIMIT-COUNT", "id=\"s13\"", "16 groups");
}
