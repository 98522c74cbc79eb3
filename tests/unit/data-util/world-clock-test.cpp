// World clocks: in slots, in layers and texts that show a slot's, and set by a record.

#include "world-clock.h"
#include "a-face-document.h"
#include "attribute-values.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class AWorldClock : public AFullFaceDocument {
protected:
    AWorldClock() { Select("<selection/>"); }

    // The flat document after the update; empty when it is refused, and `mProblem` says why.
    std::string Updated(const char* slot, const DataUtil::WorldClockUpdate& update)
    {
        DataUtil::ParseResult parsed = DataUtil::ParseFace(mText);
        mProblem.clear();
        if (!DataUtil::UpdateWorldClock(*parsed.document, slot, update, mProblem)) return "";
        return DataUtil::Flatten(*parsed.document);
    }

    std::string mProblem;
};

TEST_F(AWorldClock, shows_what_its_offer_says)
{
    EXPECT_EQ(
        FlatLine("name=\"place\""),
        "<complication name=\"place\" group=\"zones\" source=\"worldclock\" city=\"Tokyo\" "
        "country=\"Japan\" timezone=\"JST\" timezone-path=\"Asia/Tokyo\" role=\"dial\" x=\"260\" y=\"40\" "
        "width=\"80\" height=\"80\" color=\"#FFFFFF\" track=\"#FF000080\" skeleton=\"Hmm\"/>");
}

TEST_F(AWorldClock, shows_what_is_placed_and_the_rest_of_its_offer)
{
    Select(
        "<selection><place slot=\"place\" source=\"worldclock\" city=\"Lima\" "
        "country=\"Peru\"/></selection>");
    EXPECT_THAT(FlatLine("name=\"place\""),
                HasSubstr("city=\"Lima\" country=\"Peru\" timezone=\"JST\" timezone-path=\"Asia/Tokyo\""));
}

TEST_F(AWorldClock, has_only_the_values_that_there_are)
{
    Select("<selection><place slot=\"info\" source=\"worldclock\"/></selection>");
    EXPECT_THAT(FlatLine("name=\"info\""),
                HasSubstr("source=\"worldclock\" city=\"Oslo\" "
                          "timezone-path=\"/usr/share/zoneinfo/Europe/Oslo\" role=\"icon-text\""));
}

TEST_F(AWorldClock, needs_its_city_and_its_zone_in_an_offer)
{
    Replace("<offer source=\"worldclock\" city=\"Oslo\" timezone-path=\"/usr/share/zoneinfo/Europe/Oslo\"/>",
            "<offer source=\"worldclock\" country=\"Norway\"/>");
    EXPECT_THAT(Codes(), ElementsAre("E-ATTRIBUTE-MISSING", "E-ATTRIBUTE-MISSING"));
}

TEST_F(AWorldClock, is_the_only_source_whose_offer_has_its_values)
{
    for (const char* attribute :
         {"city=\"Rome\"", "country=\"Italy\"", "timezone=\"CET\"", "timezone-path=\"Europe/Rome\""}) {
        const std::string before = mText;
        Replace("<offer source=\"battery\"/>", "<offer source=\"battery\" " + std::string(attribute) + "/>");
        ExpectOnly("E-ATTRIBUTE-CHOICE", attribute, "world clock");
        mText = before;
    }
}

TEST_F(AWorldClock, is_the_only_source_whose_placement_has_its_values)
{
    Select("<selection><place slot=\"info\" source=\"date\" city=\"Rome\"/></selection>");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "city=\"Rome\"");
}

TEST_F(AWorldClock, is_the_only_source_whose_placement_in_a_preset_has_its_values)
{
    Replace("<place slot=\"info\" source=\"empty\"/>",
            "<place slot=\"info\" source=\"empty\" city=\"Rome\"/>");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "city=\"Rome\"");
}

TEST_F(AWorldClock, is_the_only_source_for_the_roles_city_and_dial)
{
    for (const char* role : {"city", "dial"}) {
        const std::string before = mText;
        Replace("role=\"gauge\"", "role=\"" + std::string(role) + "\"");
        ExpectOnly("E-ROLE-SOURCE", "<offer source=\"battery\"/>", role);
        mText = before;
    }
}

TEST_F(AWorldClock, has_no_share)
{
    Replace("role=\"dial\"", "role=\"arc\"");
    ExpectOnly("E-ROLE-SOURCE", "<offer source=\"worldclock\" city=\"Tokyo\"");
}

TEST_F(AWorldClock, leaves_out_its_own_default_skeleton_only)
{
    Replace("skeleton=\"Hmm\"", "skeleton=\"Jmm\"");
    EXPECT_THAT(FlatLine("name=\"place\""), Not(HasSubstr("skeleton")));
    Replace("skeleton=\"Jmm\">\n", "skeleton=\"d\">\n");
    EXPECT_THAT(FlatLine("name=\"place\""), HasSubstr("skeleton=\"d\""));
}

TEST_F(AWorldClock, gives_its_zone_to_a_layer)
{
    EXPECT_THAT(Flat(), HasSubstr("  <layer timezone=\"JST\" timezone-path=\"Asia/Tokyo\">\n"
                                  "    <hand kind=\"hour24\" cx=\"300\" cy=\"80\">\n"));
}

TEST_F(AWorldClock, gives_its_zone_to_a_layer_with_an_opacity)
{
    Replace("<layer clock=\"place\">", "<layer clock=\"place\" opacity=\"0.5\">");
    EXPECT_THAT(Flat(),
                HasSubstr("  <layer opacity=\"0.5\" timezone=\"JST\" timezone-path=\"Asia/Tokyo\">\n"));
}

TEST_F(AWorldClock, leaves_no_other_zone_to_its_layer)
{
    Replace("<layer clock=\"place\">", "<layer clock=\"place\" timezone=\"UTC\" timezone-path=\"Etc/UTC\">");
    EXPECT_THAT(Codes(), ElementsAre("E-ATTRIBUTE-CHOICE", "E-ATTRIBUTE-CHOICE"));
}

TEST_F(AWorldClock, is_not_needed_by_a_layer_that_always_shows_one_zone)
{
    Replace("<layer clock=\"place\">", "<layer timezone-path=\"Etc/UTC\">");
    EXPECT_THAT(Flat(), HasSubstr("  <layer timezone-path=\"Etc/UTC\">\n"));
    Replace("<layer timezone-path=\"Etc/UTC\">", "<layer timezone=\"UTC\">");
    EXPECT_THAT(Flat(), HasSubstr("  <layer timezone=\"UTC\">\n"));
    Replace("<layer timezone=\"UTC\">", "<layer timezone-path=\"../UTC\">");
    EXPECT_THAT(Codes(), ElementsAre("E-VALUE"));
}

TEST_F(AWorldClock, gives_its_city_to_a_text)
{
    EXPECT_EQ(FlatLine("y=\"140\""),
              "<text text=\"Tokyo\" x=\"300\" y=\"140\" size=\"12\" case=\"upper\" color=\"#FFFFFF\"/>");
}

TEST_F(AWorldClock, takes_the_layer_and_the_text_with_it_when_its_slot_shows_something_else)
{
    Select("<selection><place slot=\"place\" source=\"empty\"/></selection>");
    EXPECT_THAT(Flat(), Not(HasSubstr("<layer timezone")));
    EXPECT_THAT(Flat(), Not(HasSubstr("hour24")));
    EXPECT_THAT(Flat(), Not(HasSubstr("y=\"140\"")));
}

TEST_F(AWorldClock, takes_the_layer_and_the_text_with_it_when_its_slot_is_hidden)
{
    Replace("<slot name=\"place\"", "<slot when=\"dial=dots\" name=\"place\"");
    EXPECT_THAT(Flat(), Not(HasSubstr("hour24")));
    EXPECT_THAT(Flat(), Not(HasSubstr("y=\"140\"")));
}

TEST_F(AWorldClock, of_an_unknown_slot_is_refused_in_a_layer)
{
    Replace("<layer clock=\"place\">", "<layer clock=\"plase\">");
    ExpectOnly("E-REF-UNKNOWN", "clock=\"plase\"", "did you mean \"place\"?");
}

TEST_F(AWorldClock, of_a_slot_that_offers_none_is_refused_in_a_text)
{
    Replace("<text city=\"place\"", "<text city=\"ring\"");
    ExpectOnly("E-REF-UNKNOWN", "city=\"ring\"", "\"worldclock\"");
}

TEST_F(AWorldClock, of_a_group_is_refused)
{
    Replace("<layer clock=\"place\">", "<layer clock=\"dial\">");
    ExpectOnly("E-REF-UNKNOWN", "clock=\"dial\"");
}

TEST_F(AWorldClock, cannot_give_its_zone_to_a_layer_that_its_slot_stands_in)
{
    Replace("    <slot name=\"place\"", "    <layer clock=\"place\"><slot name=\"place\"");
    AddAfter("      <fallback source=\"worldclock\"/>\n      <fallback source=\"empty\"/>\n    </slot>",
             "</layer>");
    EXPECT_THAT(Codes(), ElementsAre("E-CIRCLE"));
}

TEST_F(AWorldClock, is_one_of_three_ways_of_a_text)
{
    AddAfter("<text city=\"place\"", " text-key=\"title\"");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "<text city", "\"text-key\", \"skeleton\", \"city\"");
}

TEST_F(AWorldClock, is_refused_with_a_bad_value_in_the_selection)
{
    Select("<selection><place slot=\"place\" source=\"worldclock\" timezone-path=\"../Tokyo\"/></selection>");
    ExpectOnly("E-VALUE", "timezone-path=\"../Tokyo\"", "time zone");
}

TEST(AZonePath, is_an_id_or_a_path_with_one_behind_zoneinfo)
{
    const DataUtil::AttributeRule rule{"timezone-path", DataUtil::ValueKind::kZonePath};
    std::string problem;
    for (const char* good : {"UTC", "Asia/Tokyo", "America/Argentina/Buenos_Aires", "Etc/GMT+5", "Etc/GMT-14",
                             "/usr/share/zoneinfo/Asia/Tokyo", "/zoneinfo/UTC"}) {
        EXPECT_EQ(DataUtil::CanonicalValue(rule, good, problem), good);
    }
    for (const char* bad :
         {"", "/", "Asia/", "/Asia/Tokyo", "Asia//Tokyo", "./UTC", "../UTC", "Asia/../UTC", "UTC.",
          "Asia Tokyo", "/usr/share/zoneinfo/", "/usr/share/zoneinfo", "/usr//zoneinfo/UTC",
          "/zoneinfo/../UTC", "zoneinfo//UTC", "\xC3\x84sia/Tokyo", "Asia\\Tokyo", "Asia/Tokyo\n"}) {
        EXPECT_FALSE(DataUtil::CanonicalValue(rule, bad, problem)) << bad;
    }
    EXPECT_TRUE(DataUtil::CanonicalValue(rule, std::string(255, 'a'), problem));
    EXPECT_FALSE(DataUtil::CanonicalValue(rule, std::string(256, 'a'), problem));
}

TEST(ACityName, has_1_to_64_characters_none_of_them_a_control_character)
{
    const DataUtil::AttributeRule rule{"city", DataUtil::ValueKind::kShortText};
    std::string problem;
    std::string longest;
    for (int i = 0; i < 64; ++i) longest += "\xEA\xB0\x81";
    for (const std::string& good : {std::string("S\xC3\xA3o Paulo"), std::string("<&\">"), longest}) {
        EXPECT_EQ(DataUtil::CanonicalValue(rule, good, problem), good);
    }
    for (const std::string& bad :
         {std::string(), longest + "x", std::string("a\nb"), std::string("a\x7F"), std::string("a\xC2\x85"),
          std::string("\xC0\xAF"), std::string("\xED\xA0\x80"), std::string("\xEF\xBF\xBF"),
          std::string("\xFF"), std::string("a\xE2\x82"), std::string("\xF4\x90\x80\x80"),
          std::string("\xE0\x81\xA1"), std::string("\xF0\x80\x81\xA1")}) {
        EXPECT_FALSE(DataUtil::CanonicalValue(rule, bad, problem)) << bad;
    }
}

TEST_F(AWorldClock, is_set_by_a_record)
{
    const std::string flat = Updated(
        "info", {.city = "Lima", .country = "Peru", .timezone = "PET", .timezonePath = "America/Lima"});
    EXPECT_THAT(flat,
                HasSubstr("name=\"info\" group=\"data\" source=\"worldclock\" city=\"Lima\" country=\"Peru\" "
                          "timezone=\"PET\" timezone-path=\"America/Lima\""));
}

TEST_F(AWorldClock, keeps_what_a_record_does_not_say)
{
    Select(
        "<selection><place slot=\"place\" source=\"worldclock\" city=\"Lima\" "
        "country=\"Peru\"/></selection>");
    EXPECT_THAT(
        Updated("place", {.timezonePath = "America/Lima"}),
        HasSubstr("city=\"Lima\" country=\"Peru\" timezone=\"JST\" timezone-path=\"America/Lima\" role"));
}

TEST_F(AWorldClock, starts_from_its_offer_when_its_slot_showed_something_else)
{
    EXPECT_THAT(Updated("info", {.city = "Bergen"}),
                HasSubstr("city=\"Bergen\" timezone-path=\"/usr/share/zoneinfo/Europe/Oslo\" role"));
}

TEST_F(AWorldClock, loses_what_a_record_empties)
{
    EXPECT_THAT(Updated("place", {.country = "", .timezone = ""}),
                HasSubstr("city=\"Tokyo\" timezone-path=\"Asia/Tokyo\" role"));
}

TEST_F(AWorldClock, keeps_its_city_and_its_zone_against_an_empty_record)
{
    EXPECT_EQ(Updated("place", {.city = ""}), "");
    EXPECT_THAT(mProblem, HasSubstr("city="));
    EXPECT_EQ(Updated("place", {.timezonePath = ""}), "");
    EXPECT_THAT(mProblem, HasSubstr("timezone-path="));
}

TEST_F(AWorldClock, is_not_set_by_a_record_with_a_bad_value)
{
    EXPECT_EQ(Updated("place", {.city = "\xFF"}), "");
    EXPECT_EQ(Updated("place", {.country = "a\tb"}), "");
    EXPECT_EQ(Updated("place", {.timezonePath = "/etc/passwd"}), "");
    EXPECT_THAT(mProblem, HasSubstr("\"/etc/passwd\""));
}

TEST_F(AWorldClock, is_set_only_in_a_slot_that_offers_it)
{
    EXPECT_EQ(Updated("ring", {}), "");
    EXPECT_THAT(mProblem, HasSubstr("does not offer"));
    EXPECT_EQ(Updated("rind", {}), "");
    EXPECT_THAT(mProblem, HasSubstr("did you mean \"ring\"?"));
    EXPECT_EQ(Updated(nullptr, {}), "");
    EXPECT_THAT(mProblem, HasSubstr("there is no slot"));
}

TEST_F(AWorldClock, changes_nothing_else_when_it_is_set)
{
    const std::string before = Flat();
    const std::string after = Updated("place", {});
    EXPECT_EQ(after, before);
}
