// Dates that the phone asks for.

#include "a-msg-control.h"

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ADateRequest : public AMsgControl {
protected:
    ADateRequest()
    {
        platform.Forget();
        platform.ScriptDates([](int64_t) { return "the date"; });
    }

    // A whole request, with `changes` in place of its values.
    static MemoryPlatform::Message Request(const MemoryPlatform::Message& changes = {})
    {
        MemoryPlatform::Message message = {
            {"type",             "watch-icu-convert"},
            {"data/timestamp",   "1791965370123"    },
            {"data/skeleton",    "yMMMd"            },
            {"data/bestpattern", "true"             }
        };
        for (const auto& [key, value] : changes) message[key] = value;
        return message;
    }
    static MemoryPlatform::Message Without(const std::string& key)
    {
        MemoryPlatform::Message message = Request();
        message.erase(key);
        return message;
    }

    // What the formatter was asked, "format INSTANT", after a request with that timestamp.
    MemoryPlatform::Strings AskedFor(const std::string& timestamp)
    {
        platform.Forget();
        Deliver(kWms, Request({
                          {"data/timestamp", timestamp}
        }));
        return platform.Calls({"format "});
    }
    std::string FormatterFor(const std::string& bestPattern)
    {
        platform.Forget();
        Deliver(kWms, Request({
                          {"data/bestpattern", bestPattern}
        }));
        return platform.Calls({"formatter ["}).at(0);
    }
};

TEST_F(ADateRequest, is_answered_to_the_phone_after_its_inputs_were_gathered_in_order)
{
    Deliver(kWms, Request());
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-icu-convert], watch_name = []",
                            "log I timestampString[1791965370123] timestamp[1791965370123]",
                            "setting get timezone-path", "setting get language",
                            "formatter [yMMMd] [Europe/London] [en_GB] true", "format 1791965370123",
                            "formatter released", "log E formattedString = [the date]",
                            "send com.corvane.w-manager-service w-manager-service::localport "
                            "{\"formattedstring\": \"the date\", \"type\": \"watch-icu-convert\"}"));
}

TEST_F(ADateRequest, is_answered_to_the_phone_whoever_asks)
{
    for (const char* sender : {kEditor, kHome, kWorldClockMap}) {
        platform.Forget();
        Deliver(sender, Request());
        EXPECT_THAT(platform.Calls({"send"}),
                    ElementsAre("send com.corvane.w-manager-service w-manager-service::localport "
                                "{\"formattedstring\": \"the date\", \"type\": \"watch-icu-convert\"}"));
    }
}

TEST_F(ADateRequest, of_somebody_else_is_not_answered)
{
    Deliver("com.example.app", Request());
    EXPECT_THAT(platform.Calls(), IsEmpty());
}

TEST_F(ADateRequest, is_written_as_on_the_watch)
{
    platform.ScriptDates(nullptr);
    platform.SetLanguage("ko_KR");
    platform.SetTimezone("/usr/share/zoneinfo/Pacific/Kiritimati");
    Deliver(kWms, Request());
    EXPECT_EQ(platform.Sent().at(0).Text("formattedstring"), "2026년 10월 14일");
}

TEST_F(ADateRequest, follows_language_and_time_zone_from_one_request_to_the_next)
{
    platform.ScriptDates(nullptr);
    Deliver(kWms, Request());
    platform.SetLanguage("de_DE");
    Deliver(kWms, Request());
    platform.SetTimezone("Pacific/Honolulu");
    Deliver(kWms, Request());
    MemoryPlatform::Strings texts;
    for (const auto& sent : platform.Sent()) texts.push_back(sent.Text("formattedstring"));
    EXPECT_THAT(texts, ElementsAre("14 Oct 2026", "14. Okt. 2026", "13. Okt. 2026"));
}

TEST_F(ADateRequest, makes_a_formatter_of_its_own)
{
    Deliver(kWms, Request());
    Deliver(kWms, Request());
    EXPECT_THAT(platform.Calls({"formatter"}), ElementsAre(StartsWith("formatter ["), "formatter released",
                                                           StartsWith("formatter ["), "formatter released"));
}

// The timestamp

TEST_F(ADateRequest, takes_thirteen_digits_whole)
{
    EXPECT_THAT(AskedFor("9999999999999"), ElementsAre("format 9999999999999"));
}

TEST_F(ADateRequest, without_a_timestamp_is_about_the_instant_0)
{
    Deliver(kWms, Without("data/timestamp"));
    EXPECT_THAT(
        platform.LogTexts(),
        ElementsAre("E messageType = [watch-icu-convert], watch_name = []", "E data/timestamp is empty",
                    "I timestampString[] timestamp[0]", "E formattedString = [the date]"));
    EXPECT_THAT(platform.Calls({"format "}), ElementsAre("format 0"));
}

TEST_F(ADateRequest, without_digits_in_its_timestamp_is_about_the_instant_0_too_but_logs_no_error)
{
    EXPECT_THAT(AskedFor("now"), ElementsAre("format 0"));
    EXPECT_THAT(platform.LogTexts(), Contains("I timestampString[now] timestamp[0]"));
    EXPECT_THAT(platform.Errors(), Not(Contains("data/timestamp is empty")));
}

TEST_F(ADateRequest, takes_blanks_and_a_sign_before_the_digits_and_stops_behind_them)
{
    EXPECT_THAT(AskedFor(" \t-12ms"), ElementsAre("format -12"));
    EXPECT_THAT(AskedFor("+7.9"), ElementsAre("format 7"));
    EXPECT_THAT(AskedFor("0x10"), ElementsAre("format 0"));
    EXPECT_THAT(AskedFor("010"), ElementsAre("format 10"));
}

TEST_F(ADateRequest, saturates_beyond_64_bits)
{
    EXPECT_THAT(AskedFor("99999999999999999999"), ElementsAre("format 9223372036854775807"));
    EXPECT_THAT(AskedFor("-99999999999999999999"), ElementsAre("format -9223372036854775808"));
    EXPECT_THAT(platform.Infos(), Contains("timestampString[-99999999999999999999] "
                                           "timestamp[-9223372036854775808]"));
}

// The best pattern

TEST_F(ADateRequest, asks_for_the_best_pattern_only_by_the_very_word)
{
    EXPECT_THAT(FormatterFor("true"), testing::EndsWith("true"));
    for (const char* other : {"TRUE", "True", "1", "false", " true", "true "}) {
        EXPECT_THAT(FormatterFor(other), testing::EndsWith("false")) << other;
        EXPECT_THAT(platform.Errors(), Not(Contains("data/bestPatternString is empty")));
    }
}

TEST_F(ADateRequest, without_a_word_on_the_best_pattern_logs_it_and_takes_the_skeleton_as_the_pattern)
{
    Deliver(kWms, Without("data/bestpattern"));
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("E messageType = [watch-icu-convert], watch_name = []",
                            "I timestampString[1791965370123] timestamp[1791965370123]",
                            "E data/bestPatternString is empty", "E formattedString = [the date]"));
    EXPECT_THAT(platform.Calls({"formatter ["}), ElementsAre(testing::EndsWith("false")));
}

// No date

TEST_F(ADateRequest, without_a_skeleton_reads_no_setting_and_is_not_answered)
{
    Deliver(kWms, Without("data/skeleton"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-icu-convert], watch_name = []",
                            "log I timestampString[1791965370123] timestamp[1791965370123]",
                            "log E data/skeleton is empty", "log E formattedString = []",
                            "log E messageType[watch-icu-convert] or formattedString[] is empty!!"));
}

TEST_F(ADateRequest, without_anything_logs_each_thing_that_is_missing)
{
    Deliver(kWms, {
                      {"type", "watch-icu-convert"}
    });
    EXPECT_THAT(
        platform.LogTexts(),
        ElementsAre("E messageType = [watch-icu-convert], watch_name = []", "E data/timestamp is empty",
                    "I timestampString[] timestamp[0]", "E data/skeleton is empty",
                    "E data/bestPatternString is empty", "E formattedString = []",
                    "E messageType[watch-icu-convert] or formattedString[] is empty!!"));
    EXPECT_THAT(platform.Calls(), IsEmpty());
}

TEST_F(ADateRequest, that_cannot_be_written_is_not_answered)
{
    platform.Fail("CommonUtilI18NDateFormatter::Format");
    Deliver(kEditor, Request());
    EXPECT_THAT(platform.Errors(),
                ElementsAre("messageType = [watch-icu-convert], watch_name = []", "formattedString = []",
                            "messageType[watch-icu-convert] or formattedString[] is empty!!"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
    EXPECT_THAT(platform.Calls({"formatter released"}), testing::SizeIs(1));
}
