// The user's picks and placements.

#include "a-face-document.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ASelection : public AFaceDocument {
protected:
    void Select(std::string_view picks) { Replace("<selection>", "<selection>\n" + std::string(picks)); }
};

TEST_F(ASelection, shows_the_defaults_where_nothing_is_picked)
{
    EXPECT_THAT(Flat(), HasSubstr("<ticks cx=\"180\" cy=\"180\" r=\"170\""));
    EXPECT_THAT(Flat(), HasSubstr("<stop offset=\"0\" color=\"#FF0000\"/>"));
    EXPECT_THAT(Flat(), HasSubstr("<hand kind=\"second\""));
    EXPECT_THAT(Flat(),
                HasSubstr("<complication name=\"top\" group=\"data\" source=\"battery\" role=\"gauge\""));
}

TEST_F(ASelection, may_be_missing)
{
    Replace("  <selection>\n  </selection>\n", "");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(ASelection, picks_a_style)
{
    Select("<pick group=\"dial\" option=\"dots\"/>");
    EXPECT_THAT(Flat(), HasSubstr("shape=\"dot\""));
    EXPECT_THAT(Flat(), Not(HasSubstr("r=\"170\"")));
}

TEST_F(ASelection, picks_the_colors_of_a_palette)
{
    Select("<pick group=\"tone\" option=\"blue\"/>");
    EXPECT_THAT(Flat(), HasSubstr("<stop offset=\"0\" color=\"#0000FF\"/>"));
    EXPECT_THAT(Flat(), Not(HasSubstr("#FF0000")));
}

TEST_F(ASelection, turns_a_switch_off)
{
    Select("<pick group=\"seconds\" option=\"off\"/>");
    EXPECT_THAT(Flat(), Not(HasSubstr("<hand")));
}

TEST_F(ASelection, places_a_source)
{
    Select("<place slot=\"top\" source=\"pedometer\"/>");
    EXPECT_THAT(Flat(), HasSubstr("source=\"pedometer\" role=\"gauge\""));
}

TEST_F(ASelection, leaves_an_empty_slot_without_a_role)
{
    Select("<place slot=\"top\" source=\"empty\"/>");
    EXPECT_THAT(Flat(),
                HasSubstr("<complication name=\"top\" group=\"data\" source=\"empty\" x=\"150\" y=\"40\" "
                          "width=\"60\" height=\"60\"/>"));
}

TEST_F(ASelection, keeps_the_pick_of_a_hidden_group)
{
    Select("<pick group=\"dial\" option=\"dots\"/><pick group=\"seconds\" option=\"on\"/>");
    const auto parsed = DataUtil::ParseFace(mText);
    ASSERT_TRUE(parsed.document);
    const DataUtil::Resolution resolution = DataUtil::Resolve(*parsed.document);
    EXPECT_EQ(resolution.options.at("seconds"), "on");
    EXPECT_FALSE(resolution.shown.at("seconds"));
}

TEST_F(ASelection, meets_no_condition_on_a_hidden_group_even_a_negated_one)
{
    Replace("<hand kind=\"second\" when=\"seconds=on\"", "<hand kind=\"second\" when=\"seconds!=off\"");
    EXPECT_THAT(Flat(), HasSubstr("<hand"));
    Select("<pick group=\"dial\" option=\"dots\"/>");
    EXPECT_THAT(Flat(), Not(HasSubstr("<hand")));
}

TEST_F(ASelection, settles_a_group_that_depends_on_a_group_declared_later)
{
    AddBefore("    <style id=\"dial\"",
              "    <switch id=\"early\" label-key=\"top\" default=\"on\" when=\"seconds=on\"/>\n");
    Replace("<hand kind=\"second\" when=\"seconds=on\"", "<hand kind=\"second\" when=\"early=on\"");
    EXPECT_THAT(Flat(), HasSubstr("<hand"));
    Select("<pick group=\"dial\" option=\"dots\"/>");
    EXPECT_THAT(Flat(), Not(HasSubstr("<hand")));
}

TEST_F(ASelection, of_an_unknown_option_shows_the_default_and_leaves_a_note)
{
    Select("<pick group=\"tone\" option=\"green\"/>");
    ExpectOnly("N-PICK-UNKNOWN", "option=\"green\"", "ignored");
    EXPECT_THAT(Flat(), HasSubstr("#FF0000"));
}

TEST_F(ASelection, of_an_unknown_group_is_ignored_with_a_note)
{
    Select("<pick group=\"strap\" option=\"green\"/>");
    ExpectOnly("N-PICK-UNKNOWN", "group=\"strap\"");
}

TEST_F(ASelection, of_a_source_that_is_not_offered_shows_the_fallback_with_a_note)
{
    Select("<place slot=\"top\" source=\"weather\"/>");
    ExpectOnly("N-PICK-UNKNOWN", "source=\"weather\"");
    EXPECT_THAT(Flat(), HasSubstr("source=\"battery\""));
}

TEST_F(ASelection, for_an_unknown_slot_is_ignored_with_a_note)
{
    Select("<place slot=\"bottom\" source=\"battery\"/>");
    ExpectOnly("N-PICK-UNKNOWN", "slot=\"bottom\"");
}

TEST_F(ASelection, that_picks_twice_counts_the_last_and_leaves_a_note)
{
    Select("<pick group=\"tone\" option=\"blue\"/>\n<pick group=\"tone\" option=\"red\"/>");
    ExpectOnly("N-PICK-REPEATED", "option=\"red\"");
    EXPECT_THAT(Flat(), HasSubstr("#FF0000"));
}

TEST_F(ASelection, that_places_twice_counts_the_last_and_leaves_a_note)
{
    Select("<place slot=\"top\" source=\"battery\"/>\n<place slot=\"top\" source=\"pedometer\"/>");
    ExpectOnly("N-PICK-REPEATED", "<place slot=\"top\" source=\"pedometer\"/>");
    EXPECT_THAT(Flat(), HasSubstr("source=\"pedometer\""));
}
