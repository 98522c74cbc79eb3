// Which languages and time zones there are.

#include <gmock/gmock.h>

#include "locales-icu.h"

using namespace Wfctl;
using testing::HasSubstr;

TEST(ALanguage, is_known_with_and_without_its_country)
{
    for (const char* known : {"de", "de_DE", "pt-BR", "zh_Hant_TW", "ko_KR", "en"}) {
        EXPECT_EQ(LanguageProblem(known), "") << known;
    }
}

TEST(ALanguage, is_unknown_when_its_language_or_its_country_is)
{
    for (const char* unknown :
         {"xx", "", "de_QQ", "de DE", "de_DE.UTF-8", "de@calendar=buddhist", "german!"}) {
        EXPECT_THAT(LanguageProblem(unknown), HasSubstr("there is no language [")) << unknown;
    }
}

TEST(ALanguage, that_is_unknown_has_a_near_one)
{
    EXPECT_THAT(LanguageProblem("ko_KX"), HasSubstr("did you mean ko_K"));
    EXPECT_THAT(LanguageProblem("de-QE"), HasSubstr("did you mean de_"));
}

TEST(ALanguage, has_a_name)
{
    EXPECT_EQ(LanguageName("de_DE"), "German (Germany)");
    EXPECT_EQ(LanguageName("xx"), "xx");
}

TEST(ATimeZone, is_known_by_id_and_by_path)
{
    for (const char* known : {"Asia/Seoul", "UTC", "/usr/share/zoneinfo/Europe/Berlin"}) {
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

TEST(ATimeZone, has_a_country)
{
    EXPECT_EQ(CountryOfTimezone("Asia/Tokyo"), "Japan");
    EXPECT_EQ(CountryOfTimezone("America/Argentina/Buenos_Aires"), "Argentina");
    EXPECT_EQ(CountryOfTimezone("UTC"), "");
}
