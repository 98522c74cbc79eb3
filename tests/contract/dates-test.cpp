#include <limits>

#include "common-util-i18n.h"
#include "contract-test.h"

namespace Contract {
namespace {

using testing::Each;
using testing::IsEmpty;
using testing::Not;

constexpr int64_t kAutumn = 1'791'965'370'123;  // 2026-10-14 08:09:30.123 UTC
constexpr int64_t kWinter = 1'770'000'000'000;  // 2026-02-02 02:40:00 UTC
constexpr auto kEarliest = std::numeric_limits<int64_t>::min();
constexpr auto kLatest = std::numeric_limits<int64_t>::max();

class ADate : public ContractTest {
protected:
    struct Request {
        std::string skeleton, timezone = "UTC", language = "en_US";
        bool best = false;
    };
    static std::string Text(const Request& request, int64_t instant = kAutumn)
    {
        CommonUtilI18NDateFormatter formatter(request.skeleton, request.timezone, request.language,
                                              request.best);
        return formatter.Format(instant, kCommonUtilI18NTimestampMilliseconds);
    }
    static std::string Best(const std::string& skeleton, const std::string& language)
    {
        return Text({.skeleton = skeleton, .language = language, .best = true});
    }
    static std::string In(const std::string& timezone, int64_t instant = kAutumn)
    {
        return Text({.skeleton = "dd HH:mm", .timezone = timezone}, instant);
    }
    static std::string Year(const std::string& language)
    {
        return Text({.skeleton = "y", .language = language});
    }
};

TEST_F(ADate, is_written_by_the_skeleton_as_the_pattern)
{
    EXPECT_EQ(Text({.skeleton = "yyyy-MM-dd'T'HH:mm:ss.SSS"}), "2026-10-14T08:09:30.123");
    EXPECT_EQ(Text({.skeleton = "MMM d — EEEE", .language = "fr_FR"}), "oct. 14 — mercredi");
}

TEST_F(ADate, is_written_by_the_languages_best_pattern_when_that_is_asked_for)
{
    EXPECT_EQ(Best("yMMMd", "en_US"), "Oct 14, 2026");
    EXPECT_EQ(Best("yMMMd", "de_DE"), "14. Okt. 2026");
    EXPECT_EQ(Best("yMMMd", "ko_KR"), "2026년 10월 14일");
    EXPECT_EQ(Best("jmm", "de_DE"), "08:09");
}

TEST_F(ADate, keeps_pattern_and_best_pattern_of_one_skeleton_apart)
{
    const Request plain{.skeleton = "d", .language = "ko_KR"};
    Request best = plain;
    best.best = true;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Text(plain), "14");
        EXPECT_EQ(Text(best), "14일");
    }
}

TEST_F(ADate, counts_milliseconds_since_1970_in_UTC)
{
    const Request request{.skeleton = "yyyy-MM-dd HH:mm:ss.SSS"};
    EXPECT_EQ(Text(request, 0), "1970-01-01 00:00:00.000");
    EXPECT_EQ(Text(request, -1), "1969-12-31 23:59:59.999");
    EXPECT_EQ(Text(request, 1'234'567'890'123), "2009-02-13 23:31:30.123");
}

TEST_F(ADate, of_an_unknown_kind_of_timestamp_is_empty)
{
    CommonUtilI18NDateFormatter formatter("y", "UTC", "en_US", false);
    EXPECT_EQ(formatter.Format(kAutumn, static_cast<CommonUtilI18NDateFormatterTimestampType>(1)), "");
    EXPECT_EQ(formatter.Format(kAutumn, kCommonUtilI18NTimestampMilliseconds), "2026");
}

// Time zones

TEST_F(ADate, is_that_of_the_time_zone)
{
    EXPECT_EQ(In("Asia/Seoul"), "14 17:09");
    EXPECT_EQ(In("Asia/Kolkata"), "14 13:39");
    EXPECT_EQ(In("Pacific/Kiritimati"), "14 22:09");
    EXPECT_EQ(In("Pacific/Honolulu"), "13 22:09");
    EXPECT_EQ(In("GMT+5:45"), "14 13:54");
}

TEST_F(ADate, keeps_summer_time)
{
    EXPECT_EQ(In("Europe/Berlin", kAutumn), "14 10:09");
    EXPECT_EQ(In("Europe/Berlin", kWinter), "02 03:40");
}

TEST_F(ADate, leaves_out_the_hour_that_summer_time_skips)
{
    EXPECT_EQ(In("Europe/Berlin", 1'774'745'999'999), "29 01:59");
    EXPECT_EQ(In("Europe/Berlin", 1'774'746'000'000), "29 03:00");
    EXPECT_EQ(In("America/New_York", 1'772'953'199'999), "08 01:59");
    EXPECT_EQ(In("America/New_York", 1'772'953'200'000), "08 03:00");
}

TEST_F(ADate, tells_the_hour_that_is_there_twice_apart_by_its_zone)
{
    const Request request{.skeleton = "dd HH:mm xxx", .timezone = "Europe/Berlin"};
    EXPECT_EQ(Text(request, 1'792'888'200'000), "25 02:30 +02:00");
    EXPECT_EQ(Text(request, 1'792'891'800'000), "25 02:30 +01:00");
    EXPECT_EQ(Text(request, 1'792'891'799'999), "25 02:29 +01:00");
}

TEST_F(ADate, leaves_out_a_day_that_its_zone_has_not)
{
    EXPECT_EQ(In("Pacific/Apia", 1'325'239'199'999), "29 23:59");
    EXPECT_EQ(In("Pacific/Apia", 1'325'239'200'000), "31 00:00");
}

TEST_F(ADate, has_the_rules_of_its_year)
{
    const auto berlin = [](int64_t instant) {
        return Text({.skeleton = "yyyy-MM-dd HH:mm", .timezone = "Europe/Berlin"}, instant);
    };
    EXPECT_EQ(berlin(-2'208'988'800'000), "1900-01-01 01:00");
    EXPECT_EQ(berlin(2'147'483'647'999), "2038-01-19 04:14");
    EXPECT_EQ(berlin(2'147'483'648'000), "2038-01-19 04:14");
    EXPECT_EQ(berlin(4'086'748'799'999), "2099-07-03 09:59");
    EXPECT_EQ(berlin(4'102'441'199'999), "2099-12-31 23:59");
    EXPECT_EQ(berlin(253'402'300'799'999), "10000-01-01 00:59");
}

TEST_F(ADate, takes_the_zone_from_a_zoneinfo_path)
{
    EXPECT_EQ(In("/usr/share/zoneinfo/Asia/Seoul"), "14 17:09");
    EXPECT_EQ(In("/usr/share/zoneinfo/posix/Asia/Seoul"), "14 17:09");
    EXPECT_EQ(In("/usr/share/zoneinfo/right/Asia/Seoul"), "14 17:09");
    EXPECT_EQ(In("/opt/zoneinfo/2026/zoneinfo/America/Argentina/Ushuaia"), "14 05:09");
}

TEST_F(ADate, of_an_unknown_zone_is_empty)
{
    for (const std::string& zone :
         {std::string(), std::string("Mars/Base"), std::string("/etc/localtime"),
          std::string("/usr/share/zoneinfo/"), std::string(100'000, 'x'), std::string("Asia/Seoul\xff"),
          std::string("Asia/Seoul\n"), std::string("europe"), std::string("Etc/Unknown")}) {
        EXPECT_EQ(In(zone), "") << zone.substr(0, 100);
    }
}

// Languages

TEST_F(ADate, knows_the_ways_in_which_a_language_is_named)
{
    for (const char* name : {"de_DE", "de-DE", "de_DE.UTF-8", "de_DE.ISO-8859-1@euro", "de", "DE_de"}) {
        EXPECT_EQ(Best("MMMM", name), "Oktober") << name;
    }
    EXPECT_EQ(Best("MMMM", "pt-BR"), "outubro");
    EXPECT_EQ(Best("EEEE", "zh-Hant-TW"), "星期三");
    EXPECT_EQ(Best("EEEE", "sr_Latn_RS"), "sreda");
}

TEST_F(ADate, has_the_calendar_and_the_digits_of_the_language)
{
    EXPECT_EQ(Year("en_US"), "2026");
    EXPECT_EQ(Year("th_TH"), "2569");
    EXPECT_EQ(Year("fa_IR"), "۱۴۰۵");
    EXPECT_EQ(Year("ar_EG"), "٢٠٢٦");
}

TEST_F(ADate, of_what_is_no_name_of_a_language_is_empty)
{
    for (const std::string& name :
         {std::string(), std::string("../../etc/passwd"), std::string("de DE"), std::string("de\n"),
          std::string("_DE"), std::string("@calendar=buddhist"), std::string(100'000, 'x'),
          std::string("d\xff")}) {
        EXPECT_EQ(Year(name), "") << name.substr(0, 100);
    }
}

TEST_F(ADate, of_a_language_with_more_letters_than_any_has_is_empty)
{
    for (const char* name : {"abcdefghijkl", "abcdefghijkl_DE", "POSIXinsertBetween", "de=abcdefghij"}) {
        EXPECT_EQ(Best("MMMM", name), "") << name;
        EXPECT_EQ(Year(name), "") << name;
    }
}

TEST_F(ADate, follows_a_change_of_language_and_time_zone_at_once)
{
    Request request{"MMMMd", "UTC", "en_US", true};
    EXPECT_EQ(Text(request), "October 14");
    request.language = "de_DE";
    EXPECT_EQ(Text(request), "14. Oktober");
    request.timezone = "Pacific/Honolulu";
    EXPECT_EQ(Text(request), "13. Oktober");
    request.timezone = "UTC";
    EXPECT_EQ(Text(request), "14. Oktober");
    request.language = "en_US";
    EXPECT_EQ(Text(request), "October 14");
}

TEST_F(ADate, reads_the_same_however_many_languages_and_skeletons_were_asked_for_before)
{
    const Strings languages = {"en_US", "de_DE", "fr_FR", "ko_KR", "ja_JP",
                               "zh_CN", "ar_EG", "th_TH", "he_IL"};
    const auto all = [&] {
        Strings texts;
        for (const std::string& language : languages) {
            for (int length = 1; length < 100; ++length) {
                texts.push_back(Best(std::string(static_cast<std::size_t>(length), 'S') + "MMMd", language));
            }
        }
        return texts;
    };
    const Strings first = all();
    EXPECT_EQ(all(), first);
    EXPECT_THAT(first, Each(Not(IsEmpty())));
}

TEST_F(ADate, is_written_after_one_that_could_not_be)
{
    EXPECT_EQ(In("Mars/Base"), "");
    EXPECT_EQ(In("UTC"), "14 08:09");
    EXPECT_EQ(Text({.skeleton = "\xff"}), "");
    EXPECT_EQ(Best("\xff", "en_US"), "");
    EXPECT_EQ(Text({.skeleton = "y"}), "2026");
    EXPECT_EQ(Best("y", "en_US"), "2026");
}

// What nobody should ask for

TEST_F(ADate, beyond_the_ends_of_the_calendar_is_its_end)
{
    const Request request{.skeleton = "G y MM dd"};
    EXPECT_EQ(Text(request, kLatest), "AD 5828963 12 20");
    EXPECT_THAT(Text(request, kEarliest), testing::StartsWith("BC 5838270"));
    EXPECT_EQ(Text(request, kEarliest), Text(request, kEarliest / 10));
}

TEST_F(ADate, has_an_end_in_every_calendar)
{
    for (const char* language : {"en_US", "th_TH", "fa_IR", "ar_SA", "he@calendar=hebrew",
                                 "ja@calendar=japanese", "ar@calendar=islamic", "hi@calendar=indian",
                                 "zh@calendar=chinese", "ko@calendar=dangi", "am@calendar=ethiopic"}) {
        for (const int64_t instant : {kEarliest, kEarliest / 100, kLatest / 100, kLatest}) {
            Text({"GyMMMMEEEEdjmmsszzzz", "Europe/Berlin", language, true}, instant);
            Text({"GyYuUrQqMLwWdDFgEecabBhHkKjmsSAzZOvVXx", "Europe/Berlin", language, false}, instant);
        }
        EXPECT_THAT(Text({"y", "UTC", language, true}), Not(IsEmpty())) << language;
    }
}

TEST_F(ADate, of_a_skeleton_without_meaning_is_empty)
{
    for (const std::string& skeleton :
         {std::string(), std::string("n"), std::string("d\xC3("), std::string("\xED\xA0\x80")}) {
        EXPECT_EQ(Text({.skeleton = skeleton}), "") << skeleton;
        EXPECT_EQ(Best(skeleton, "en_US"), "") << skeleton;
    }
}

TEST_F(ADate, has_no_letters_without_meaning_in_its_pattern_and_passes_over_them_in_its_skeleton)
{
    EXPECT_EQ(Text({.skeleton = "y n"}), "");
    EXPECT_EQ(Best("y n", "en_US"), "2026");
}

TEST_F(ADate, keeps_what_stands_between_letters)
{
    EXPECT_EQ(Text({.skeleton = "HH\n\x01mm 'o''clock'"}),
              "08\n\x01"
              "09 o'clock");
    EXPECT_EQ(Text({.skeleton = "d 'of MMM"}), "14 of MMM");
    EXPECT_EQ(Text({.skeleton = "'"}), "");
    EXPECT_EQ(Best("d'", "en_US"), "14");
}

TEST_F(ADate, has_a_skeleton_of_at_most_1024_bytes)
{
    const std::string most = "'" + std::string(1021, 'x') + "'y";
    EXPECT_EQ(Text({.skeleton = most}), std::string(1021, 'x') + "2026");
    EXPECT_EQ(Text({.skeleton = " " + most}), "");
    EXPECT_EQ(Best(std::string(1025, 'd'), "en_US"), "");
    EXPECT_EQ(Best(std::string(1'000'000, 'd'), "en_US"), "");
}

TEST_F(ADate, is_bounded_however_much_is_asked_of_it)
{
    constexpr std::size_t kMost = 100'000;
    for (const std::string letters : {"zv", "EL", "vVzO", "GB", "zzzzvvvv", "EEEEMMMM", "VVVVVVV", "y", "S",
                                      "\xF0\x9F\x98\x80", "j", "C", "Jh"}) {
        std::string skeleton;
        while (skeleton.size() + letters.size() <= 1024) skeleton += letters;
        for (const bool best : {false, true}) {
            EXPECT_LE(Text({skeleton, "America/Argentina/Ushuaia", "de_DE", best}).size(), kMost) << letters;
        }
    }
}

}  // namespace
}  // namespace Contract
