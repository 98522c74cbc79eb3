// World clocks: what is stored for a group, the announcement of a change, the change.

#include "a-msg-control.h"

using MemoryPlatform::StoreValue;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using WatchfaceService::MsgControl;

namespace {

constexpr char kTarget[] = "wfs-watch-name-world-clock-update";
constexpr char kCurrent[] = "file/private/com.corvane.watchface/watchface_name";

}  // namespace

// What is stored

class ADualClockRequest : public AMsgControl {
protected:
    ADualClockRequest()
    {
        platform.Forget();
        platform.SetPref("a-g-timezonePath", "Asia/Seoul");
        platform.SetPref("a-g-timezone", "KST");
        platform.SetPref("a-g-city", "Seoul");
        platform.SetPref("a-g-country", "Korea");
        platform.SetPref("a-g-updatedMode", 2);
    }
    void Ask(const MemoryPlatform::Message& more = {})
    {
        MemoryPlatform::Message message = {
            {"type",       "watch-dual-clock-data"},
            {"pkgid",      "a"                    },
            {"group/name", "g"                    }
        };
        for (const auto& [key, value] : more) message[key] = value;
        Deliver(kEditor, message);
    }
    std::string Answer() const { return Sent().at(0); }

    const std::string toEditor = "com.corvane.watchface-editor watch-face-editor::localport ";
};

TEST_F(ADualClockRequest, is_answered_with_what_is_stored)
{
    Ask();
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("log E messageType = [watch-dual-clock-data], watch_name = [a]",
                    "pref get a-g-timezonePath", "log I a-g-timezonePath[Asia/Seoul]",
                    "pref get a-g-timezone", "log I a-g-timezone[KST]", "pref get a-g-city",
                    "log I a-g-city[Seoul]", "pref get a-g-country", "log I a-g-country[Korea]",
                    "pref get a-g-updatedMode", "log I a-g-updatedMode[2]",
                    "send " + toEditor +
                        "{\"city\": \"Seoul\", \"country\": \"Korea\", \"group/name\": \"g\", \"pkgid\": "
                        "\"a\", \"status\": \"success\", \"timezone\": \"KST\", \"timezonePath\": "
                        "\"Asia/Seoul\", \"type\": \"watch-dual-clock-data\", \"updatedMode\": \"2\"}"));
}

TEST_F(ADualClockRequest, gets_back_all_that_it_carried_even_the_xml_under_what_is_stored)
{
    Ask({
        {"data/xml_data", "<a/>"                          },
        {"city",          "Busan"                         },
        {"status",        "asked"                         },
        {"list",          MemoryPlatform::Strings{"x", ""}}
    });
    EXPECT_EQ(
        Answer(),
        toEditor +
            "{\"city\": \"Seoul\", \"country\": \"Korea\", \"data/xml_data\": \"<a/>\", \"group/name\": "
            "\"g\", \"list\": [\"x\", \"\"], \"pkgid\": \"a\", \"status\": \"success\", \"timezone\": "
            "\"KST\", \"timezonePath\": \"Asia/Seoul\", \"type\": \"watch-dual-clock-data\", "
            "\"updatedMode\": \"2\"}");
}

TEST_F(ADualClockRequest, without_a_group_fails)
{
    Deliver(kEditor, {
                         {"type",  "watch-dual-clock-data"},
                         {"pkgid", "a"                    }
    });
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-dual-clock-data], watch_name = [a]",
                            "log E group/name is empty!!",
                            "send " + toEditor +
                                "{\"pkgid\": \"a\", \"status\": \"fail\", \"type\": "
                                "\"watch-dual-clock-data\"}"));
}

TEST_F(ADualClockRequest, without_a_name_fails)
{
    Ask({
        {"pkgid", ""}
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType = [watch-dual-clock-data], watch_name = []",
                                                 "E watchName[] or groupName[g] is empty!!",
                                                 "E _watchface_msg_control_set_dual_clock_data is failed"));
    EXPECT_THAT(platform.Calls({"pref"}), IsEmpty());
    EXPECT_EQ(Answer(), toEditor +
                            "{\"group/name\": \"g\", \"pkgid\": \"\", \"status\": \"fail\", \"type\": "
                            "\"watch-dual-clock-data\"}");
}

TEST_F(ADualClockRequest, for_a_group_with_nothing_stored_fails_after_every_field_was_looked_for)
{
    Ask({
        {"group/name", "other"}
    });
    EXPECT_THAT(
        platform.Calls({"pref"}),
        ElementsAre("pref get a-other-timezonePath", "pref get a-other-timezone", "pref get a-other-city",
                    "pref get a-other-country", "pref get a-other-updatedMode"));
    EXPECT_EQ(Answer(), toEditor +
                            "{\"group/name\": \"other\", \"pkgid\": \"a\", \"status\": \"fail\", \"type\": "
                            "\"watch-dual-clock-data\"}");
}

TEST_F(ADualClockRequest, logs_the_code_of_each_field_that_cannot_be_read)
{
    platform.Fail("CommonUtilPref::Get", {.times = 5, .code = -33});
    Ask();
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("E messageType = [watch-dual-clock-data], watch_name = [a]",
                            "I CommonUtilPref::GetString[a-g-timezonePath] returns -33(ffffffdf)",
                            "I CommonUtilPref::GetString[a-g-timezone] returns -33(ffffffdf)",
                            "I CommonUtilPref::GetString[a-g-city] returns -33(ffffffdf)",
                            "I CommonUtilPref::GetString[a-g-country] returns -33(ffffffdf)",
                            "I CommonUtilPref::GetInt[a-g-updatedMode] returns -33(ffffffdf)",
                            "E _watchface_msg_control_set_dual_clock_data is failed"));
}

TEST_F(ADualClockRequest, without_the_mode_alone_carries_the_texts_and_fails)
{
    platform.UnsetPref("a-g-updatedMode");
    Ask();
    EXPECT_EQ(Answer(),
              toEditor +
                  "{\"city\": \"Seoul\", \"country\": \"Korea\", \"group/name\": \"g\", \"pkgid\": \"a\", "
                  "\"status\": \"fail\", \"timezone\": \"KST\", \"timezonePath\": \"Asia/Seoul\", \"type\": "
                  "\"watch-dual-clock-data\"}");
}

TEST_F(ADualClockRequest, without_one_text_carries_the_other_fields_and_fails)
{
    platform.UnsetPref("a-g-timezone");
    Ask();
    EXPECT_EQ(Answer(),
              toEditor +
                  "{\"city\": \"Seoul\", \"country\": \"Korea\", \"group/name\": \"g\", \"pkgid\": \"a\", "
                  "\"status\": \"fail\", \"timezonePath\": \"Asia/Seoul\", \"type\": "
                  "\"watch-dual-clock-data\", \"updatedMode\": \"2\"}");
}

TEST_F(ADualClockRequest, takes_an_empty_text_for_one_that_is_stored)
{
    platform.SetPref("a-g-city", "");
    Ask();
    EXPECT_THAT(platform.Infos(), Contains("a-g-city[]"));
    EXPECT_EQ(platform.Sent().at(0).Text("status"), "success");
    EXPECT_TRUE(platform.Sent().at(0).message.contains("city"));
}

TEST_F(ADualClockRequest, writes_the_mode_as_a_decimal_number)
{
    platform.SetPref("a-g-updatedMode", -2147483647 - 1);
    Ask();
    EXPECT_EQ(platform.Sent().at(0).Text("updatedMode"), "-2147483648");
}

TEST_F(ADualClockRequest, of_a_peer_that_has_no_port_is_not_answered)
{
    Deliver(kWorldClockMap, {
                                {"type",       "watch-dual-clock-data"},
                                {"pkgid",      "a"                    },
                                {"group/name", "g"                    }
    });
    EXPECT_THAT(platform.Calls({"pref get"}), testing::SizeIs(5));
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(ADualClockRequest, only_logs_when_there_is_no_memory_for_its_reply)
{
    platform.Fail("bundle_dup");
    Ask();
    EXPECT_THAT(platform.Errors(),
                ElementsAre("messageType = [watch-dual-clock-data], watch_name = [a]", "reply is nullptr!!",
                            "_watchface_msg_control_set_dual_clock_data is failed", "message is nullptr!!"));
    EXPECT_THAT(platform.Calls({"pref", "send"}), IsEmpty());
}

TEST_F(ADualClockRequest, needs_a_group_of_the_operation_itself_too)
{
    bundle* reply = MemoryPlatform::NewBundle({});
    EXPECT_FALSE(MsgControl::SetWorldClockData(reply, "a", ""));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E watchName[a] or groupName[] is empty!!"));
    EXPECT_THAT(MemoryPlatform::ContentOf(reply), IsEmpty());
    bundle_free(reply);
}

// The announcement

class AWorldClockAnnouncement : public AMsgControl {
protected:
    AWorldClockAnnouncement() { platform.Forget(); }
    void Announce()
    {
        Deliver(kWorldClockMap, {
                                    {"type",  "watch-prepare-update-world-clock"},
                                    {"pkgid", "other"                           }
        });
    }
};

TEST_F(AWorldClockAnnouncement, keeps_the_name_of_the_current_watch_face_and_is_not_answered)
{
    platform.SetKey(kCurrent, "a");
    platform.Forget();
    Announce();
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-prepare-update-world-clock], watch_name = [other]",
                            std::string("key get ") + kCurrent, std::string("pref set ") + kTarget + "=a",
                            "log I prepare worldclock update for [a]"));
}

TEST_F(AWorldClockAnnouncement, takes_the_place_of_the_one_before)
{
    platform.SetPref(kTarget, "old");
    platform.SetKey(kCurrent, "a");
    Announce();
    EXPECT_EQ(platform.Pref(kTarget), StoreValue("a"));
}

TEST_F(AWorldClockAnnouncement, keeps_an_empty_name_when_the_current_one_cannot_be_read)
{
    platform.SetPref(kTarget, "old");
    platform.SetKey(kCurrent, "a");
    platform.Fail("CommonUtilVConf::Get");
    Announce();
    EXPECT_EQ(platform.Pref(kTarget), StoreValue(""));
    EXPECT_THAT(platform.Infos(), ElementsAre("prepare worldclock update for []"));
}

TEST_F(AWorldClockAnnouncement, only_logs_that_the_name_cannot_be_kept)
{
    platform.SetKey(kCurrent, "a");
    platform.Fail("CommonUtilPref::Set", {.code = -33});
    Announce();
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("E messageType = [watch-prepare-update-world-clock], watch_name = [other]",
                            "E CommonUtilPref::SetString(WFS_SERVICE_WATCH_NAME_WORLD_CLOCK_UPDATE) returns "
                            "-33(ffffffdf)!!",
                            "I prepare worldclock update for [a]"));
    EXPECT_THAT(Sent(), IsEmpty());
}

// The change

class AWorldClockUpdate : public AMsgControl {
protected:
    AWorldClockUpdate()
    {
        platform.SetPortUp(kCapture, kCapturePort);
        platform.SetPref(kTarget, "a");
        platform.WriteFile(platform.RW("watchlist/a/a_result.xml"), "<a/>");
        platform.Data().updateWorldClock = [this](const std::string&,
                                                  const MemoryPlatform::WorldClock& record) {
            seen = record;
            return std::optional<std::string>("<flat/>");
        };
        platform.Forget();
    }
    void Update(const MemoryPlatform::Message& more = {})
    {
        MemoryPlatform::Message message = {
            {"type", "watch-setting-update-world-clock"}
        };
        for (const auto& [key, value] : more) message[key] = value;
        Deliver(kHome, message);
    }
    std::string WatchfaceXml() const
    {
        return platform.ReadFile(platform.RW("watchlist/a/watchface.xml")).value_or("");
    }

    const std::string received = "log E messageType = [watch-setting-update-world-clock], watch_name = []";
    const std::string convert =
        "data_util_resultxml_file_converter_update_worldclock RW:watchlist/a/a_result.xml";
    const std::string succeeded =
        "send com.corvane.w-home w-home::localport {\"status\": \"success\", \"type\": "
        "\"watch-setting-update-world-clock\"}";
    const std::string failed =
        "com.corvane.w-home w-home::localport {\"status\": \"fail\", \"type\": "
        "\"watch-setting-update-world-clock\"}";
    std::optional<MemoryPlatform::WorldClock> seen;
};

TEST_F(AWorldClockUpdate, is_written_answered_shown_and_drawn_in_this_order)
{
    platform.SetKey("db/wms/clocks_set_idle", "com.corvane.watchface");
    platform.SetKey(kCurrent, "a");
    platform.Forget();
    Update({
        {"data/worldclock/complication_name", "left"      },
        {"data/worldclock/timezone",          "KST"       },
        {"data/worldclock/timezone_path",     "Asia/Seoul"},
        {"data/worldclock/cityname",          "Seoul"     },
        {"data/worldclock/country",           "Korea"     }
    });
    const auto timeline = platform.Timeline();
    const auto sent = std::find_if(timeline.begin(), timeline.end(),
                                   [](const std::string& line) { return line.starts_with("send "); });
    EXPECT_THAT(
        MemoryPlatform::Strings(timeline.begin(), sent),
        ElementsAre(received, std::string("pref get ") + kTarget, "exists RW:watchlist/a/a_result.xml",
                    convert + " [left] [KST] [Asia/Seoul] [Seoul] [Korea]", "mkpath RW:watchlist/a/",
                    "open RW:watchlist/a/watchface.xml", "close RW:watchlist/a/watchface.xml",
                    "log I UpdateWorldclockData is success!"));
    EXPECT_THAT(
        platform.Calls({"send", "key set"}),
        ElementsAre("send com.corvane.w-home w-home::localport {\"data/worldclock/cityname\": \"Seoul\", "
                    "\"data/worldclock/complication_name\": \"left\", \"data/worldclock/country\": "
                    "\"Korea\", \"data/worldclock/timezone\": \"KST\", "
                    "\"data/worldclock/timezone_path\": \"Asia/Seoul\", \"status\": \"success\", "
                    "\"type\": \"watch-setting-update-world-clock\"}",
                    "key set db/wms/clocks_set_idle=com.corvane.watchface",
                    std::string("key set ") + kCurrent + "=a",
                    "send com.corvane.watchface-capture watchface-capture::localport "
                    "{\"pkgName\": \"a\"}"));
    EXPECT_EQ(WatchfaceXml(), "<flat/>");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<a/>");
}

TEST_F(AWorldClockUpdate, takes_missing_values_for_none_and_empty_ones_as_they_are)
{
    Update();
    EXPECT_EQ(seen, MemoryPlatform::WorldClock{});
    EXPECT_THAT(platform.Calls({"data_util"}),
                ElementsAre(convert + " [(null)] [(null)] [(null)] [(null)] [(null)]"));
    Update({
        {"data/worldclock/cityname", ""}
    });
    EXPECT_EQ(seen, MemoryPlatform::WorldClock{.cityName = ""});
}

TEST_F(AWorldClockUpdate, is_for_the_announced_watch_face_whatever_the_message_names_and_is_shown_now)
{
    platform.SetKey("db/wms/clocks_set_idle", "com.corvane.watchface");
    platform.SetKey(kCurrent, "b");
    platform.Forget();
    Update({
        {"pkgid", "b"}
    });
    EXPECT_EQ(WatchfaceXml(), "<flat/>");
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/b")));
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
    EXPECT_EQ(platform.SentTo(kCapture).at(0).Text("pkgName"), "a");
}

TEST_F(AWorldClockUpdate, of_a_watch_face_as_shipped_copies_it_first)
{
    platform.SetPref(kTarget, "shipped");
    platform.WriteFile(platform.RO("watchlist/shipped/shipped_result.xml"), "<s/>");
    platform.WriteFile(platform.RO("watchlist/shipped/watchface.xml"), "<old/>");
    Update();
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/shipped/shipped_result.xml")), "<s/>");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/shipped/watchface.xml")), "<flat/>");
    EXPECT_THAT(platform.Calls({"copy RO:watchlist/shipped/shipped_result.xml", "data_util"}),
                ElementsAre(testing::StartsWith("copy"), testing::StartsWith("data_util")));
    EXPECT_THAT(platform.Calls(), Contains(succeeded));
}

TEST_F(AWorldClockUpdate, of_a_watch_face_that_is_nowhere_is_not_answered)
{
    platform.SetPref(kTarget, "gone");
    platform.Forget();
    Update();
    EXPECT_EQ(platform.LogTexts().back(),
              "E failed to copy watchface from ro to rw!! update wordlock data failed!!");
    EXPECT_THAT(platform.Calls({"send", "data_util", "key"}), IsEmpty());
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/gone")));
}

TEST_F(AWorldClockUpdate, that_nobody_announced_is_not_answered)
{
    platform.UnsetPref(kTarget);
    platform.Forget();
    Update();
    EXPECT_EQ(platform.LogTexts().back(),
              "E failed to copy watchface from ro to rw!! update wordlock data failed!!");
    EXPECT_THAT(platform.Calls({"send", "data_util", "key"}), IsEmpty());
}

TEST_F(AWorldClockUpdate, that_the_data_library_refuses_fails_and_changes_nothing)
{
    platform.Fail("data_util_resultxml_file_converter_update_worldclock");
    Update();
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre(received.substr(4), "E data_util_resultxml_memory_converter is failed",
                            "I UpdateWorldclockData is failed!"));
    EXPECT_THAT(Sent(), ElementsAre(failed));
    EXPECT_THAT(platform.Calls({"mkpath", "open", "key"}), IsEmpty());
    EXPECT_EQ(WatchfaceXml(), "");
}

TEST_F(AWorldClockUpdate, whose_folder_cannot_be_made_fails_and_changes_nothing)
{
    platform.Fail("ecore_file_mkpath");
    Update();
    EXPECT_THAT(platform.LogTexts(), ElementsAre(received.substr(4), "E ecore_file_mkpath failed!!",
                                                 "I UpdateWorldclockData is failed!"));
    EXPECT_THAT(Sent(), ElementsAre(failed));
    EXPECT_THAT(platform.Calls({"open", "key"}), IsEmpty());
}

TEST_F(AWorldClockUpdate, succeeds_also_when_the_file_cannot_be_written)
{
    platform.Fail("FileOutputStream");
    Update();
    EXPECT_THAT(platform.Calls({"send com.corvane.w-home"}), ElementsAre(succeeded));
    EXPECT_EQ(WatchfaceXml(), "");
}

TEST_F(AWorldClockUpdate, stays_possible_after_the_first)
{
    Update();
    Update();
    EXPECT_THAT(platform.Calls({"send com.corvane.w-home"}), ElementsAre(succeeded, succeeded));
    EXPECT_EQ(platform.Pref(kTarget), StoreValue("a"));
}

TEST_F(AWorldClockUpdate, needs_a_name_and_a_path)
{
    EXPECT_FALSE(MsgControl::UpdateWorldclockData("", "/x", {}));
    EXPECT_FALSE(MsgControl::UpdateWorldclockData("a", "", {}));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName or resultXmlFilepath is empty!!",
                                                 "log E watchName or resultXmlFilepath is empty!!"));
}
