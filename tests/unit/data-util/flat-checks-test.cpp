// Checking flat documents.

#include "flat-checks.h"

#include "a-face-document.h"

using testing::IsEmpty;

class AFlatDocumentCheck : public AFullFaceDocument {
protected:
    AFlatDocumentCheck() { mText = Flat(); }

    std::vector<DataUtil::Finding> Check() const override { return DataUtil::CheckFlat(mText); }
};

TEST_F(AFlatDocumentCheck, passes_what_flattening_made)
{
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AFlatDocumentCheck, refuses_a_result_xml)
{
    mText = "<face-result format=\"1\"/>";
    ExpectOnly("E-ROOT", "<face-result", "\"watchface\"");
}

TEST_F(AFlatDocumentCheck, refuses_what_is_not_well_formed)
{
    mText = "<watchface>";
    EXPECT_THAT(Codes(), testing::ElementsAre("E-SYNTAX"));
}

TEST_F(AFlatDocumentCheck, refuses_a_condition)
{
    Replace("<text text-key=\"title\"", "<text when=\"a=b\" text-key=\"title\"");
    ExpectOnly("E-ATTRIBUTE-UNKNOWN", "when=\"a=b\"");
}

TEST_F(AFlatDocumentCheck, refuses_a_palette_role)
{
    Replace("y=\"40\" size=\"20\" color=\"#FFFFFF\"", "y=\"40\" size=\"20\" color=\"main\"");
    ExpectOnly("E-VALUE", "color=\"main\"", "#RRGGBBAA or none");
}

TEST_F(AFlatDocumentCheck, refuses_options)
{
    AddBefore("</watchface>", "<options/>");
    ExpectOnly("E-ELEMENT-UNKNOWN", "<options/>");
}

TEST_F(AFlatDocumentCheck, refuses_texts_behind_the_drawing)
{
    AddBefore("</watchface>", "<strings language=\"de\"><string key=\"title\">A</string></strings>");
    EXPECT_THAT(Codes(), testing::UnorderedElementsAre("E-PLACE", "W-UNTRANSLATED"));
}

TEST_F(AFlatDocumentCheck, refuses_a_key_without_a_text)
{
    Replace("<text text-key=\"title\"", "<text text-key=\"tilte\"");
    ExpectOnly("E-REF-UNKNOWN", "tilte", "did you mean \"title\"?");
}

TEST_F(AFlatDocumentCheck, says_nothing_of_texts_of_labels)
{
    AddAfter("    <string key=\"far\">Far away</string>\n", "    <string key=\"unused\">Unused</string>\n");
    ExpectOnly("W-UNTRANSLATED", "<strings language=\"pt-BR\">", "unused");
}

TEST_F(AFlatDocumentCheck, refuses_a_layer_that_changes_nothing)
{
    Replace("<layer opacity=\"0.8\">", "<layer>");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "<layer>",
               "at least one of \"opacity\", \"timezone\", \"timezone-path\"");
}

TEST_F(AFlatDocumentCheck, refuses_a_text_with_two_contents)
{
    AddAfter("<text text=\"Lima\"", " skeleton=\"d\"");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "skeleton=\"d\"", "exactly one of");
}

TEST_F(AFlatDocumentCheck, refuses_the_city_of_a_slot)
{
    Replace("<text text=\"Lima\"", "<text city=\"place\"");
    EXPECT_THAT(Codes(), testing::UnorderedElementsAre("E-ATTRIBUTE-UNKNOWN", "E-ATTRIBUTE-CHOICE"));
}

TEST_F(AFlatDocumentCheck, refuses_two_complications_of_one_name)
{
    Replace("name=\"ring\"", "name=\"info\"");
    ExpectOnly("E-ID-DUPLICATE", "source=\"battery\"");
}

TEST_F(AFlatDocumentCheck, refuses_a_ninth_complication)
{
    std::string more;
    for (int i = 0; i < 6; ++i) {
        more += "<complication name=\"c" + std::to_string(i) +
                "\" group=\"g\" source=\"empty\" x=\"0\" y=\"0\" width=\"9\" height=\"9\"/>\n";
    }
    AddBefore("</watchface>", more);
    ExpectOnly("E-LIMIT-COUNT", "name=\"c5\"", "8 complications");
}

TEST_F(AFlatDocumentCheck, refuses_a_complication_with_a_role_but_no_color)
{
    Replace("height=\"60\" color=\"#0000FF\"", "height=\"60\"");
    ExpectOnly("E-ATTRIBUTE-MISSING", "name=\"info\"", "\"color\"");
}

TEST_F(AFlatDocumentCheck, allows_a_complication_without_a_role)
{
    Replace("role=\"icon-text\" ", "");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AFlatDocumentCheck, refuses_a_role_in_which_the_source_cannot_be_drawn)
{
    Replace("role=\"icon-text\"", "role=\"arc\"");
    ExpectOnly("E-ROLE-SOURCE", "role=\"arc\"", "\"weather\"");
}

TEST_F(AFlatDocumentCheck, refuses_an_empty_complication_with_a_role)
{
    Replace("source=\"weather\"", "source=\"empty\"");
    ExpectOnly("E-ROLE-SOURCE", "name=\"info\"");
}

TEST_F(AFlatDocumentCheck, refuses_a_world_clock_without_its_city)
{
    Replace("city=\"Lima\" country", "country");
    ExpectOnly("E-ATTRIBUTE-MISSING", "name=\"place\"", "\"city\"");
}

TEST_F(AFlatDocumentCheck, refuses_a_city_without_a_world_clock)
{
    AddAfter("source=\"weather\"", " city=\"Lima\"");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "name=\"info\"");
}

TEST_F(AFlatDocumentCheck, refuses_a_photo_with_a_prefix_outside_of_the_gallery)
{
    Replace("background=\"gallery\"", "background=\"theme\"");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "prefix=");
}

TEST_F(AFlatDocumentCheck, warns_of_a_complication_beyond_the_canvas)
{
    Replace("x=\"290\" y=\"220\"", "x=\"390\" y=\"220\"");
    ExpectOnly("W-OFF-CANVAS", "name=\"ring\"", "the complication");
}

TEST_F(AFlatDocumentCheck, names_the_path_of_a_finding)
{
    Replace("role=\"icon-text\"", "role=\"arc\"");
    EXPECT_EQ(Check().at(0).path, "/watchface/complication[info]/@role");
}
