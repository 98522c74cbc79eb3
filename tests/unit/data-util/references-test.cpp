// Ids, what refers to them, and options that make no difference.

#include "a-face-document.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(AFaceDocument, refuses_a_group_with_the_id_of_another)
{
    Replace("<switch id=\"seconds\" label-key=\"seconds\" default=\"on\" when=\"dial=bars\"/>",
            "<switch id=\"seconds\" label-key=\"seconds\" default=\"on\"/>\n"
            "<switch\nid=\"seconds\" label-key=\"seconds\" default=\"off\"/>");
    ExpectOnly("E-ID-DUPLICATE", "default=\"off\"");
}

TEST_F(AFaceDocument, refuses_a_slot_with_the_id_of_a_group)
{
    Replace("<slot name=\"top\"", "<slot name=\"tone\"");
    ExpectOnly("E-ID-DUPLICATE", "<slot");
}

TEST_F(AFaceDocument, refuses_an_option_with_the_id_of_another)
{
    Replace("<option id=\"dots\"", "<option id=\"bars\"");
    EXPECT_THAT(Codes(), Contains("E-ID-DUPLICATE"));
}

TEST_F(AFaceDocument, refuses_a_text_key_twice_in_one_language)
{
    AddAfter("<string key=\"top\">Oberes Feld</string>", "\n<string key=\"top\">Oben</string>");
    ExpectOnly("E-ID-DUPLICATE", ">Oben<");
}

TEST_F(AFaceDocument, refuses_a_language_twice_whatever_its_case)
{
    AddBefore("<options>",
              "<strings\nlanguage=\"de-AT\"><string key=\"title\">A</string></strings>"
              "<strings\nlanguage=\"de-at\"><string key=\"title\">B</string></strings>");
    EXPECT_THAT(Codes(), testing::ElementsAre("W-UNTRANSLATED", "E-ID-DUPLICATE", "W-UNTRANSLATED"));
}

TEST_F(AFaceDocument, refuses_a_role_that_two_palettes_set)
{
    AddBefore("    <switch",
              "<palette id=\"other\" label-key=\"tone\">"
              "<option id=\"one\" label-key=\"tone\" default=\"true\">"
              "<color role=\"main\" value=\"#111111\"/></option></palette>\n");
    ExpectOnly("E-ID-DUPLICATE", "<palette id=\"other\"");
}

TEST_F(AFaceDocument, refuses_a_role_twice_in_one_option)
{
    AddAfter("<color role=\"main\" value=\"#0000FF\"/>", "\n<color role=\"main\" value=\"#0000FE\"/>");
    ExpectOnly("E-ID-DUPLICATE", "#0000FE");
}

TEST_F(AFaceDocument, refuses_an_offer_twice)
{
    AddAfter("<offer source=\"pedometer\"/>", "\n<offer  source=\"pedometer\"/>");
    ExpectOnly("E-ID-DUPLICATE", "<offer  ");
}

TEST_F(AFaceDocument, refuses_a_group_without_a_default)
{
    Replace("<option id=\"bars\" label-key=\"dial.bars\" default=\"true\"/>",
            "<option id=\"bars\" label-key=\"dial.bars\"/>");
    ExpectOnly("E-DEFAULT", "<style", "has no default");
}

TEST_F(AFaceDocument, refuses_a_group_with_two_defaults)
{
    Replace("<option id=\"dots\"", "<option default=\"true\" id=\"dots\"");
    ExpectOnly("E-DEFAULT", "id=\"dots\"", "keep one");
}

TEST_F(AFaceDocument, refuses_a_palette_option_that_lacks_a_role)
{
    AddAfter("<color role=\"main\" value=\"#FF0000\"/>", "<color role=\"edge\" value=\"#880000\"/>");
    Replace("width=\"4\" color=\"main\"", "width=\"4\" color=\"edge\"");
    ExpectOnly("E-COVERAGE", "<option id=\"blue\"", "\"edge\"");
}

TEST_F(AFaceDocument, refuses_a_color_role_that_no_palette_sets)
{
    Replace("<bar length=\"150\" width=\"2\" fill=\"main\"/>",
            "<bar length=\"150\" width=\"2\" fill=\"mian\"/>");
    ExpectOnly("E-REF-UNKNOWN", "<bar",
               "\"mian\" is neither #RRGGBB nor a role that a palette sets; did you mean \"main\"?");
}

TEST_F(AFaceDocument, refuses_the_name_of_a_color_with_its_value)
{
    Replace("<bar length=\"150\" width=\"2\" fill=\"main\"/>",
            "<bar length=\"150\" width=\"2\" fill=\"orange\"/>");
    ExpectOnly("E-REF-UNKNOWN", "<bar",
               "neither #RRGGBB nor a role that a palette sets; did you mean \"#FFA500\"?");
}

TEST_F(AFaceDocument, refuses_the_name_of_a_color_in_a_palette_with_its_value)
{
    Replace("value=\"#0000FF\"", "value=\"navy\"");
    ExpectOnly("E-VALUE", "navy", "did you mean \"#000080\"?");
}

TEST_F(AFaceDocument, refuses_a_label_that_the_default_language_lacks)
{
    Replace("label-key=\"top\"", "label-key=\"tops\"");
    ExpectOnly("E-REF-UNKNOWN", "<slot", "did you mean \"top\"?");
}

TEST_F(AFaceDocument, refuses_a_translation_of_a_text_that_the_default_language_lacks)
{
    AddAfter("<string key=\"top\">Oberes Feld</string>", "\n<string key=\"bottom\">Unteres Feld</string>");
    ExpectOnly("E-REF-UNKNOWN", "Unteres Feld");
}

TEST_F(AFaceDocument, refuses_a_default_language_without_texts)
{
    Replace("default-language=\"en\"", "default-language=\"fr\"");
    ExpectOnly("E-REF-UNKNOWN", "default-language", "\"fr\"");
}

TEST_F(AFaceDocument, refuses_a_condition_on_an_unknown_group)
{
    Replace("<layer when=\"dial=bars\">", "<layer when=\"dail=bars\">");
    ExpectOnly("E-REF-UNKNOWN", "<layer", "did you mean \"dial\"?");
}

TEST_F(AFaceDocument, is_told_what_else_is_wrong_in_a_condition_on_an_unknown_group)
{
    Replace("<ticks when=\"dial=dots\"", "<ticks when=\"dail=dotes\"");
    EXPECT_THAT(Listed(), HasSubstr("there is no group or slot \"dail\"; did you mean \"dial\"?"));
    EXPECT_THAT(Listed(), HasSubstr("\"dial\" has no \"dotes\"; did you mean \"dots\"?"));
    EXPECT_THAT(Codes(), ElementsAre("E-REF-UNKNOWN", "E-REF-UNKNOWN"));
}

TEST_F(AFaceDocument, is_told_what_else_is_wrong_in_a_condition_on_an_unknown_slot)
{
    Replace("<text text-key=\"title\"", "<text when=\"tpo=batery\" text-key=\"title\"");
    EXPECT_THAT(Listed(), HasSubstr("there is no group or slot \"tpo\"; did you mean \"top\"?"));
    EXPECT_THAT(Listed(), HasSubstr("\"top\" does not offer \"batery\""));
    EXPECT_THAT(Codes(), ElementsAre("E-REF-UNKNOWN", "E-REF-UNKNOWN"));
}

TEST_F(AFaceDocument, refuses_a_condition_on_an_unknown_option)
{
    Replace("<ticks when=\"dial=dots\"", "<ticks when=\"dial=dotes\"");
    ExpectOnly("E-REF-UNKNOWN", "dial=dotes", "did you mean \"dots\"?");
}

TEST_F(AFaceDocument, may_depend_on_what_a_slot_shows)
{
    Replace("<text text-key=\"title\"", "<text when=\"top=empty\" text-key=\"title\"");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AFaceDocument, refuses_a_condition_on_a_source_that_the_slot_does_not_offer)
{
    Replace("<text text-key=\"title\"", "<text when=\"top=weather\" text-key=\"title\"");
    ExpectOnly("E-REF-UNKNOWN", "top=weather",
               "\"top\" does not offer \"weather\"; it offers: battery pedometer empty");
}

TEST_F(AFaceDocument, refuses_a_condition_on_a_source_that_does_not_exist_and_names_the_nearest)
{
    Replace("<text text-key=\"title\"", "<text when=\"top=batery\" text-key=\"title\"");
    ExpectOnly("E-REF-UNKNOWN", "top=batery", "did you mean \"battery\"?");
}

TEST_F(AFaceDocument, does_not_take_a_source_that_exists_for_a_slip_of_another)
{
    Replace("<offer source=\"pedometer\"/>", "<offer source=\"water\"/>");
    Replace("<text text-key=\"title\"", "<text when=\"top=weather\" text-key=\"title\"");
    ExpectOnly("E-REF-UNKNOWN", "top=weather", "it offers: battery water empty");
}

TEST_F(AFaceDocument, refuses_conditions_in_a_circle)
{
    AddAfter("<style id=\"dial\" ", "when=\"seconds=on\" ");
    EXPECT_THAT(Codes(), testing::ElementsAre("E-CIRCLE"));
}

TEST_F(AFaceDocument, refuses_a_slot_in_a_layer_that_depends_on_that_slot)
{
    Replace("    <slot name=\"top\"", "<layer when=\"top=empty\"><slot name=\"top\"");
    AddAfter("    </slot>", "</layer>");
    ExpectOnly("E-CIRCLE", "<slot");
}

TEST_F(AFaceDocument, refuses_a_fallback_that_is_not_offered)
{
    Replace("<fallback source=\"battery\"/>", "<fallback source=\"water\"/>");
    ExpectOnly("E-REF-UNKNOWN", "<fallback source=\"water\"/>",
               "the slot does not offer \"water\"; it offers: battery pedometer");
}

TEST_F(AFaceDocument, refuses_a_chain_of_fallbacks_that_does_not_end_in_empty)
{
    Replace("      <fallback source=\"empty\"/>\n", "");
    ExpectOnly("E-FALLBACK", "<fallback source=\"battery\"/>");
}

TEST_F(AFaceDocument, refuses_a_chain_of_fallbacks_that_goes_on_after_empty)
{
    Replace("<fallback source=\"battery\"/>\n      <fallback source=\"empty\"/>",
            "<fallback source=\"empty\"/>\n<fallback source=\"battery\"/>");
    EXPECT_THAT(Codes(), testing::ElementsAre("E-FALLBACK", "E-FALLBACK"));
}

TEST_F(AFaceDocument, refuses_a_source_that_cannot_be_drawn_in_the_role)
{
    Replace("<offer source=\"pedometer\"/>", "<offer source=\"alarm\"/>");
    ExpectOnly("E-ROLE-SOURCE", "<offer source=\"alarm\"/>", "\"gauge\"");
}

TEST_F(AFaceDocument, is_warned_of_a_slot_that_reaches_beyond_the_canvas)
{
    Replace("x=\"150\" y=\"40\"", "x=\"320\" y=\"40\"");
    ExpectOnly("W-OFF-CANVAS", "<slot");
}

TEST_F(AFaceDocument, is_warned_of_a_slot_that_begins_before_the_canvas)
{
    Replace("x=\"150\" y=\"40\"", "x=\"150\" y=\"-0.5\"");
    ExpectOnly("W-OFF-CANVAS", "<slot");
}

TEST_F(AFaceDocument, is_warned_of_missing_translations)
{
    Replace("    <string key=\"tone.red\">Rot</string>\n", "");
    ExpectOnly("W-UNTRANSLATED", "<strings language=\"de\">", "tone.red");
}

TEST_F(AFaceDocument, is_warned_of_a_text_that_nothing_uses)
{
    Replace("<text text-key=\"title\" x=\"180\" y=\"100\" size=\"20\" color=\"#FFFFFF\"/>", "");
    Replace("title-key=\"title\"", "title-key=\"dial\"");
    ExpectOnly("W-UNUSED", ">Dawn<");
}

TEST_F(AFaceDocument, is_warned_of_a_group_on_which_nothing_depends)
{
    Replace(" when=\"seconds=on\"", "");
    ExpectOnly("W-UNUSED", "<switch");
}

TEST_F(AFaceDocument, is_warned_of_a_role_in_which_nothing_is_painted)
{
    AddAfter("<color role=\"main\" value=\"#FF0000\"/>", "<color role=\"edge\" value=\"#880000\"/>");
    AddAfter("<color role=\"main\" value=\"#0000FF\"/>", "<color role=\"edge\" value=\"#000088\"/>");
    ExpectOnly("W-UNUSED", "<palette", "\"edge\"");
}

TEST_F(AFaceDocument, is_warned_of_options_that_no_condition_tells_apart)
{
    AddAfter(
        "<option id=\"dots\" label-key=\"dial.dots\"/>",
        "\n<option id=\"nothing\" label-key=\"dial.dots\"/>\n<option id=\"void\" label-key=\"dial.dots\"/>");
    ExpectOnly("W-SAME", "id=\"void\"", "\"nothing\" and \"void\"");
}

TEST_F(AFaceDocument, is_warned_of_a_shape_that_paints_nothing)
{
    Replace("<bar length=\"150\" width=\"2\" fill=\"main\"/>", "<bar length=\"150\" width=\"2\"/>");
    ExpectOnly("W-INVISIBLE", "<bar");
}
