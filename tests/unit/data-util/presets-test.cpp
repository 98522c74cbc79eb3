// Presets: named sets of choices, and what is picked on top of them.

#include "a-face-document.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using APreset = AFullFaceDocument;

TEST_F(APreset, picks_what_it_names)
{
    Select("<selection preset=\"calm\"/>");
    EXPECT_THAT(Flat(), HasSubstr("shape=\"dot\""));
    EXPECT_THAT(Flat(), Not(HasSubstr("kind=\"second\"")));
}

TEST_F(APreset, places_what_it_names)
{
    Select("<selection preset=\"calm\"/>");
    EXPECT_THAT(FlatLine("name=\"info\""), HasSubstr("source=\"empty\""));
}

TEST_F(APreset, leaves_what_it_does_not_name_at_its_default)
{
    Select("<selection preset=\"calm\"/>");
    EXPECT_THAT(Flat(), HasSubstr("stroke=\"#FF000080\""));
    EXPECT_THAT(FlatLine("name=\"place\""), HasSubstr("city=\"Tokyo\""));
}

TEST_F(APreset, gives_way_to_a_pick)
{
    Select("<selection preset=\"calm\"><pick group=\"dial\" option=\"bars\"/></selection>");
    EXPECT_THAT(Flat(), Not(HasSubstr("shape=\"dot\"")));
}

TEST_F(APreset, gives_way_to_a_placement)
{
    Select("<selection preset=\"calm\"><place slot=\"info\" source=\"date\"/></selection>");
    EXPECT_THAT(FlatLine("name=\"info\""), HasSubstr("source=\"date\""));
}

TEST_F(APreset, places_a_world_clock_completed_from_the_offer)
{
    Select("<selection preset=\"far\"/>");
    EXPECT_THAT(FlatLine("name=\"place\""),
                HasSubstr("city=\"Lima\" country=\"Japan\" timezone=\"JST\" timezone-path=\"America/Lima\""));
}

TEST_F(APreset, lends_nothing_to_a_placement_of_the_same_slot)
{
    Select(
        "<selection preset=\"far\"><place slot=\"place\" source=\"worldclock\" "
        "country=\"Peru\"/></selection>");
    EXPECT_THAT(FlatLine("name=\"place\""), HasSubstr("city=\"Tokyo\" country=\"Peru\""));
}

TEST_F(APreset, that_does_not_exist_leaves_the_defaults_and_a_note)
{
    Select("<selection preset=\"wild\"/>");
    ExpectOnly("N-PICK-UNKNOWN", "preset=\"wild\"", "there is no preset \"wild\"");
    EXPECT_THAT(Flat(), Not(HasSubstr("shape=\"dot\"")));
}

TEST_F(APreset, may_have_the_id_of_a_group)
{
    Replace("<preset id=\"calm\"", "<preset id=\"dial\"");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(APreset, is_refused_with_the_id_of_another)
{
    Replace("<preset id=\"far\"", "<preset id=\"calm\"");
    EXPECT_THAT(Codes(), Contains("E-ID-DUPLICATE"));
}

TEST_F(APreset, is_refused_without_a_choice)
{
    Replace(
        "      <place slot=\"place\" source=\"worldclock\" city=\"Lima\" timezone-path=\"America/Lima\"/>\n",
        "");
    ExpectOnly("E-CHILD-COUNT", "<preset id=\"far\"", "at least 1");
}

TEST_F(APreset, is_refused_when_it_picks_in_an_unknown_group)
{
    Replace("<pick group=\"seconds\" option=\"off\"/>", "<pick group=\"second\" option=\"off\"/>");
    ExpectOnly("E-REF-UNKNOWN", "group=\"second\"", "did you mean \"seconds\"?");
}

TEST_F(APreset, in_an_unknown_group_is_told_what_else_is_wrong_there)
{
    Replace("<pick group=\"seconds\" option=\"off\"/>", "<pick group=\"secnds\" option=\"of\"/>");
    EXPECT_THAT(Listed(), HasSubstr("there is no group \"secnds\"; did you mean \"seconds\"?"));
    EXPECT_THAT(Listed(), HasSubstr("\"seconds\" has no option \"of\"; did you mean \"off\"?"));
    EXPECT_THAT(Codes(), ElementsAre("E-REF-UNKNOWN", "E-REF-UNKNOWN"));
}

TEST_F(APreset, in_a_group_that_is_near_to_none_is_told_that_alone)
{
    Replace("<pick group=\"seconds\" option=\"off\"/>", "<pick group=\"unheard\" option=\"of\"/>");
    ExpectOnly("E-REF-UNKNOWN", "group=\"unheard\"", "there is no group \"unheard\"");
}

TEST_F(APreset, is_refused_when_it_picks_an_unknown_option)
{
    Replace("<pick group=\"dial\" option=\"dots\"/>", "<pick group=\"dial\" option=\"dot\"/>");
    ExpectOnly("E-REF-UNKNOWN", "option=\"dot\"", "did you mean \"dots\"?");
}

TEST_F(APreset, is_refused_when_it_places_in_an_unknown_slot)
{
    Replace("<place slot=\"info\" source=\"empty\"/>", "<place slot=\"into\" source=\"empty\"/>");
    ExpectOnly("E-REF-UNKNOWN", "slot=\"into\"", "did you mean \"info\"?");
}

TEST_F(APreset, in_an_unknown_slot_is_told_what_else_is_wrong_there)
{
    Replace("<place slot=\"info\" source=\"empty\"/>", "<place slot=\"into\" source=\"alarm\"/>");
    EXPECT_THAT(Listed(), HasSubstr("there is no slot \"into\"; did you mean \"info\"?"));
    EXPECT_THAT(Listed(), HasSubstr("\"info\" does not offer \"alarm\""));
    EXPECT_THAT(Codes(), ElementsAre("E-REF-UNKNOWN", "E-REF-UNKNOWN"));
}

TEST_F(APreset, is_refused_when_it_places_what_is_not_offered)
{
    Replace("<place slot=\"info\" source=\"empty\"/>", "<place slot=\"info\" source=\"alarm\"/>");
    ExpectOnly("E-REF-UNKNOWN", "source=\"alarm\"", "does not offer");
}

TEST_F(APreset, is_refused_when_it_chooses_twice_for_one_group)
{
    Replace("<pick group=\"seconds\" option=\"off\"/>", "<pick group=\"dial\" option=\"bars\"/>");
    ExpectOnly("E-ID-DUPLICATE", "<pick group=\"dial\" option=\"bars\"/>");
}

TEST_F(APreset, is_refused_when_it_places_twice_in_one_slot)
{
    AddAfter("<place slot=\"info\" source=\"empty\"/>", "\n<place slot=\"info\" source=\"date\"/>");
    ExpectOnly("E-ID-DUPLICATE", "<place slot=\"info\" source=\"date\"/>");
}

TEST_F(APreset, is_one_of_sixteen_at_most)
{
    std::string presets;
    for (int i = 0; i < 15; ++i) {
        presets += "<preset id=\"p" + std::to_string(i) +
                   "\" label-key=\"calm\"><pick group=\"dial\" option=\"dots\"/></preset>\n";
    }
    AddBefore("  </options>", presets);
    ExpectOnly("E-CHILD-COUNT", "id=\"p14\"", "at most 16");
}

TEST_F(APreset, needs_a_label_of_the_default_language)
{
    Replace("<preset id=\"calm\" label-key=\"calm\">", "<preset id=\"calm\" label-key=\"quiet\">");
    ExpectOnly("E-REF-UNKNOWN", "label-key=\"quiet\"");
}
