// Which languages and time zones there are.

#include <gmock/gmock.h>

#include "locales-icu.h"

using namespace Wfctl;
using testing::HasSubstr;

TEST(ALanguage, is_known_with_and_without_its_country)
{
    for (const char* known : {"de", "de_DE", "pt-BR", "zh_Hant_TW", "ko_KR", "en", "es-419"}) {
        EXPECT_EQ(LanguageProblem(known), "") << known;
    }
}

TEST(ALanguage, is_unknown_when_its_language_or_its_country_is)
{
    for (const char* unknown : {"xx", "", "de_QQ", "es_999", "zh_Hnat", "de DE", "de_DE.UTF-8",
                                "de@calendar=buddhist", "german!"}) {
        EXPECT_THAT(LanguageProblem(unknown), HasSubstr("there is no language [")) << unknown;
    }
}

TEST(ALanguage, that_is_unknown_has_a_near_one)
{
    EXPECT_THAT(LanguageProblem("ko_KX"), HasSubstr("did you mean ko_K"));
    EXPECT_THAT(LanguageProblem("de-QE"), HasSubstr("did you mean de_"));
    EXPECT_THAT(LanguageProblem("zh_Hnat"), HasSubstr("did you mean zh_Hant?"));
}

TEST(ALanguage, that_is_typed_as_a_country_is_that_of_its_people)
{
    EXPECT_THAT(LanguageProblem("jp"), HasSubstr("did you mean ja?"));
    EXPECT_THAT(LanguageProblem("gr_GR"), HasSubstr("did you mean el_GR?"));
}

TEST(ALanguage, behind_its_country_is_before_it)
{
    EXPECT_THAT(LanguageProblem("kr_KO"), HasSubstr("did you mean ko_KR?"));
    EXPECT_THAT(LanguageProblem("jp-JA"), HasSubstr("did you mean ja_JP?"));
}

TEST(ALanguage, of_a_country_by_another_code_has_that_country)
{
    EXPECT_THAT(LanguageProblem("en_UK"), HasSubstr("did you mean en_GB?"));
}

TEST(ALanguage, has_a_name)
{
    EXPECT_EQ(LanguageName("de_DE"), "German (Germany)");
    EXPECT_EQ(LanguageName("xx"), "xx");
}

TEST(ATimeZone, is_known_by_id_and_by_path)
{
    for (const char* known : {"Asia/Seoul", "UTC", "GMT+9", "/usr/share/zoneinfo/Europe/Berlin"}) {
        EXPECT_EQ(TimezoneProblem(known), "") << known;
    }
}

TEST(ATimeZone, that_is_unknown_has_a_near_one)
{
    EXPECT_THAT(TimezoneProblem("Europe/Berln"), HasSubstr("[Europe/Berln]; did you mean Europe/Berlin?"));
    EXPECT_THAT(TimezoneProblem("/usr/share/zoneinfo/Asia/Soul"), HasSubstr("did you mean Asia/Seoul?"));
    EXPECT_THAT(TimezoneProblem("tokyo"), HasSubstr("did you mean Asia/Tokyo?"));
    EXPECT_THAT(TimezoneProblem("America/Buenos"), HasSubstr("did you mean America/Buenos_Aires?"));
    EXPECT_THAT(TimezoneProblem(""), HasSubstr("there is no time zone []"));
}

TEST(ATimeZone, is_unknown_when_ICU_would_show_another)
{
    for (const char* unknown : {"Etc/Unknown", "GMT+25", "europe/berlin", "Europe/Zürich"}) {
        EXPECT_THAT(TimezoneProblem(unknown), HasSubstr("there is no time zone [")) << unknown;
    }
}

TEST(ACountry, that_is_misspelled_is_that_of_its_zone)
{
    EXPECT_EQ(MeantCountry("Germny", "Europe/Berlin"), "Germany");
    EXPECT_EQ(MeantCountry("Untied States", "/usr/share/zoneinfo/America/New_York"), "United States");
    EXPECT_EQ(MeantCountry("Phillipines", "Asia/Manila"), "Philippines");
}

TEST(ACountry, is_named_in_any_language_and_spelling)
{
    EXPECT_EQ(MeantCountry("Brasil", "America/Sao_Paulo"), std::nullopt);
    EXPECT_EQ(MeantCountry("Viet Nam", "Asia/Ho_Chi_Minh"), std::nullopt);
    EXPECT_EQ(MeantCountry("germany", "Europe/Berlin"), std::nullopt);
}

TEST(ACountry, of_another_zone_is_not_meant)
{
    EXPECT_EQ(MeantCountry("Tahiti", "Pacific/Tahiti"), std::nullopt);
    EXPECT_EQ(MeantCountry("Persia", "Asia/Tehran"), std::nullopt);
    EXPECT_EQ(MeantCountry("Germny", ""), std::nullopt);
}

TEST(ATimeZone, has_a_country)
{
    EXPECT_EQ(CountryOfTimezone("Asia/Tokyo"), "Japan");
    EXPECT_EQ(CountryOfTimezone("America/Argentina/Buenos_Aires"), "Argentina");
    EXPECT_EQ(CountryOfTimezone("UTC"), "");
}
