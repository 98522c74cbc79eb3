// What is reported about the current watch face and its complications.

#include "on-a-platform.h"
#include "service-log-manager.h"

using MemoryPlatform::Strings;
using MemoryPlatform::SurveyRecord;
using MemoryPlatform::UsageItems;
using testing::ElementsAre;
using testing::IsEmpty;
using WatchfaceService::LogManager;

namespace {

constexpr char kIdleClock[] = "db/wms/clocks_set_idle";
constexpr char kNameKey[] = "file/private/com.corvane.watchface/watchface_name";
constexpr char kViewer[] = "com.corvane.watchface";
constexpr char kC1[] = "com.corvane.watchface-mirel-c1";

constexpr char kFromRW[] = "I get log item from read/write area!!";
constexpr char kFromRO[] = "I get log item from read only area!!";

SurveyRecord Status(const std::string& feature, const std::string& value)
{
    return {false, "com.corvane.watchface-service", feature, value, ""};
}
SurveyRecord Legacy(const std::string& label)
{
    return {true, "com.corvane.watchface-service", "1007", label, ""};
}

class AUsageReport : public OnAPlatform {
protected:
    AUsageReport() { MakeCurrent(kC1); }

    void MakeCurrent(const std::string& name)
    {
        platform.SetKey(kIdleClock, kViewer);
        platform.SetKey(kNameKey, name);
    }
    void MakeAnotherClockCurrent() { platform.SetKey(kIdleClock, "com.example.clock"); }

    void ShipResultXml(const std::string& name = kC1)
    {
        platform.WriteFile(platform.RO("watchlist/" + name + "/" + name + "_result.xml"), "<ro/>");
    }
    void StoreResultXml(const std::string& name = kC1)
    {
        platform.WriteFile(platform.RW("watchlist/" + name + "/" + name + "_result.xml"), "<rw/>");
    }
    void ShipDefinition(const std::string& text)
    {
        platform.WriteFile(platform.RO("watchlist/" + std::string(kC1) + "/watchface.xml"), text);
    }
    void StoreDefinition(const std::string& text)
    {
        platform.WriteFile(platform.RW("watchlist/" + std::string(kC1) + "/watchface.xml"), text);
    }

    // What the data library tells of any result XML.
    void SetCombination(const std::string& text)
    {
        platform.Data().serialize = [text](const std::string&) { return std::optional(text); };
    }
    void SetItems(const UsageItems& items)
    {
        platform.Data().items = [items](const std::string&) { return std::optional(items); };
    }

    // The log without what GetCurrentWatchface() says.
    Strings Log() const
    {
        Strings lines = platform.LogTexts();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("E current "); });
        return lines;
    }

    LogManager reports{std::make_shared<WatchfaceService::WatchfaceManager>()};
};

class ACombinationReport : public AUsageReport {
protected:
    ACombinationReport() { SetCombination("dial=roman left=battery"); }
};

class ALogItemReport : public AUsageReport {
protected:
    // The report of one item.
    std::vector<SurveyRecord> Report(const UsageItems& items)
    {
        SetItems(items);
        platform.Forget();
        reports.LogItemDataFromFile("a_result.xml");
        return platform.Survey();
    }
};

class ALegacyReport : public AUsageReport {
protected:
    // The report of a read/write definition with this inside its root.
    std::vector<SurveyRecord> Report(const std::string& content)
    {
        StoreDefinition("<watchface>" + content + "</watchface>");
        platform.Forget();
        reports.SendComplicationDataOld();
        return platform.Survey();
    }
    static std::string Drawn(const std::string& source)
    {
        return "<complication source=\"" + source + "\" role=\"text\"/>";
    }
};

}  // namespace

// Which way, and what follows in each

TEST_F(AUsageReport, is_a_combination_where_the_data_library_knows_combinations)
{
    ShipResultXml();
    SetCombination("dial=roman");
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("MC01", "dial=roman"), Status("ST00", kC1)));
    EXPECT_EQ(platform.Uses("data_util_log_item_supported"), 0);
}

TEST_F(AUsageReport, is_a_log_item_where_the_data_library_knows_these_alone)
{
    platform.Data().serializeSupported = 0;
    ShipResultXml();
    ShipDefinition("<watchface><complication source='water' role='text'/></watchface>");
    SetCombination("dial=roman");
    SetItems({.complicationEntries = {"battery"}});
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("ST02", "battery"), Status("ST00", kC1)));
}

TEST_F(AUsageReport, is_the_legacy_one_where_the_data_library_knows_neither)
{
    platform.Data().serializeSupported = 0;
    platform.Data().logItemSupported = 0;
    ShipResultXml();
    ShipDefinition("<watchface><complication source='water' role='text'/></watchface>");
    SetItems({.complicationEntries = {"battery"}});
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Legacy("Water"), Status("ST00", kC1)));
}

TEST_F(AUsageReport, takes_any_answer_but_0_for_yes)
{
    platform.Data().serializeSupported = -1;
    ShipResultXml();
    SetCombination("dial=roman");
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("MC01", "dial=roman"), Status("ST00", kC1)));
}

TEST_F(AUsageReport, asks_and_reads_in_this_order)
{
    StoreResultXml();
    SetCombination("x");
    reports.SendSurveyLogs();
    const std::string path =
        "RW:watchlist/com.corvane.watchface-mirel-c1/" + std::string(kC1) + "_result.xml";
    const std::string clock = "log E current idle clock[com.corvane.watchface]";
    const std::string name = "log E current watch name[com.corvane.watchface-mirel-c1]";
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("data_util_log_result_xml_serialize_supported",  //
                    "key get " + std::string(kIdleClock), clock, "key get " + std::string(kNameKey), name,
                    "exists " + path, "log I get log item from read/write area!!", "exists " + path,
                    "data_util_log_result_xml_serialize " + path,
                    "survey status com.corvane.watchface-service MC01 x ",
                    "key get " + std::string(kIdleClock), clock, "key get " + std::string(kNameKey), name,
                    "survey status com.corvane.watchface-service ST00 com.corvane.watchface-mirel-c1 "));
}

TEST_F(AUsageReport, names_the_clock_application_where_no_watch_face_is_current)
{
    MakeAnotherClockCurrent();
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("ST00", "com.example.clock")));
}

TEST_F(AUsageReport, names_the_viewer_where_its_watch_face_has_no_name)
{
    MakeCurrent("");
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("ST00", kViewer)));
}

TEST_F(AUsageReport, names_nobody_where_no_clock_is_set)
{
    platform.UnsetKey(kIdleClock);
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("ST00", "")));
}

TEST_F(AUsageReport, names_the_watch_face_that_is_current_after_the_complications_were_sent)
{
    ShipResultXml();
    SetCombination("x");
    platform.OnSurvey([&](const SurveyRecord& record) {
        if (record.name == "MC01") platform.SetKey(kNameKey, "b");
    });
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("MC01", "x"), Status("ST00", "b")));
}

TEST_F(AUsageReport, names_the_watch_face_whatever_the_complications_did)
{
    for (const auto& [serialize, item] : {
             std::pair(1, 1), {0, 1},
               {0, 0}
    }) {
        platform.Data().serializeSupported = serialize;
        platform.Data().logItemSupported = item;
        platform.Forget();
        reports.SendSurveyLogs();
        EXPECT_THAT(platform.Survey(), ElementsAre(Status("ST00", kC1))) << serialize << item;
    }
}

// Which result XML

TEST_F(ACombinationReport, reads_the_read_write_result_xml_where_there_is_one)
{
    ShipResultXml();
    StoreResultXml();
    reports.SendCombinationData();
    EXPECT_THAT(Log(), ElementsAre(kFromRW));
    EXPECT_THAT(platform.Calls({"data_util_log_result_xml_serialize "}),
                ElementsAre("data_util_log_result_xml_serialize RW:watchlist/com.corvane.watchface-mirel-c1/"
                            "com.corvane.watchface-mirel-c1_result.xml"));
}

TEST_F(ACombinationReport, reads_the_read_only_result_xml_else)
{
    ShipResultXml();
    reports.SendCombinationData();
    EXPECT_THAT(Log(), ElementsAre(kFromRO));
    EXPECT_THAT(platform.Calls({"data_util_log_result_xml_serialize "}),
                ElementsAre("data_util_log_result_xml_serialize RO:watchlist/com.corvane.watchface-mirel-c1/"
                            "com.corvane.watchface-mirel-c1_result.xml"));
}

TEST_F(ACombinationReport, sends_nothing_of_a_watch_face_without_a_result_xml_and_says_so)
{
    reports.SendCombinationData();
    EXPECT_THAT(platform.Survey(), IsEmpty());
    EXPECT_THAT(Log(), ElementsAre(kFromRO,
                                   "E watchface[com.corvane.watchface-mirel-c1] is not a combination "
                                   "watchface type!!"));
}

TEST_F(ACombinationReport, says_of_no_watch_face_too_that_it_is_no_combination)
{
    MakeAnotherClockCurrent();
    reports.SendCombinationData();
    EXPECT_THAT(platform.Survey(), IsEmpty());
    EXPECT_THAT(Log(), ElementsAre("E watchName is empty!!", "E watchName is empty!!", kFromRO,
                                   "E watchface[] is not a combination watchface type!!"));
}

TEST_F(ACombinationReport, has_the_product_code_of_the_watch_face)
{
    MakeCurrent("com.corvane.watchface-mirel-e1");
    StoreResultXml("com.corvane.watchface-mirel-e1");
    reports.SendCombinationData();
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("ME01", "dial=roman left=battery")));
}

TEST_F(ACombinationReport, fails_for_a_watch_face_without_a_product_code)
{
    MakeCurrent("a");
    StoreResultXml("a");
    reports.SendCombinationData();
    EXPECT_THAT(platform.Survey(), IsEmpty());
    EXPECT_THAT(Log(), ElementsAre(kFromRW, "E logFeature is empty!! logging failed"));
}

TEST_F(ALogItemReport, reads_the_read_write_result_xml_where_there_is_one)
{
    ShipResultXml();
    StoreResultXml();
    SetItems({.complicationEntries = {"battery"}});
    reports.SendComplicationDataFromLogItem();
    EXPECT_THAT(Log(), ElementsAre(kFromRW));
    EXPECT_THAT(platform.Calls({"data_util_log_item_get"}),
                ElementsAre("data_util_log_item_get_from_result_xml_file "
                            "RW:watchlist/com.corvane.watchface-mirel-c1/"
                            "com.corvane.watchface-mirel-c1_result.xml"));
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("ST02", "battery")));
}

TEST_F(ALogItemReport, reads_the_read_only_result_xml_else)
{
    ShipResultXml();
    reports.SendComplicationDataFromLogItem();
    EXPECT_THAT(Log(), ElementsAre(kFromRO));
    EXPECT_THAT(platform.Calls({"data_util_log_item_get"}),
                ElementsAre("data_util_log_item_get_from_result_xml_file "
                            "RO:watchlist/com.corvane.watchface-mirel-c1/"
                            "com.corvane.watchface-mirel-c1_result.xml"));
}

TEST_F(ALogItemReport, sends_and_says_nothing_more_of_a_watch_face_without_a_result_xml)
{
    SetItems({.complicationEntries = {"battery"}});
    reports.SendComplicationDataFromLogItem();
    EXPECT_THAT(platform.Survey(), IsEmpty());
    EXPECT_THAT(Log(), ElementsAre(kFromRO));
    EXPECT_THAT(platform.Calls({"data_util_log_item"}), IsEmpty());
}

// A combination

TEST_F(ACombinationReport, is_the_text_of_the_file_under_the_feature)
{
    reports.LogCombinationDataFromFile("F", "a_result.xml");
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("data_util_log_result_xml_serialize a_result.xml",
                            "survey status com.corvane.watchface-service F dial=roman left=battery "));
}

TEST_F(ACombinationReport, does_not_read_the_file_without_a_feature)
{
    reports.LogCombinationDataFromFile("", "a_result.xml");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E logFeature is empty!! logging failed"));
}

TEST_F(ACombinationReport, fails_where_the_data_library_gives_no_text)
{
    platform.Fail("data_util_log_result_xml_serialize");
    reports.LogCombinationDataFromFile("F", "a_result.xml");
    EXPECT_THAT(platform.Timeline(), ElementsAre("data_util_log_result_xml_serialize a_result.xml",
                                                 "log E combination is empty!! logging failed"));
}

TEST_F(ACombinationReport, sends_an_empty_text_as_it_is)
{
    SetCombination("");
    reports.LogCombinationDataFromFile("F", "a_result.xml");
    EXPECT_THAT(platform.Survey(), ElementsAre(Status("F", "")));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

// A log item

TEST_F(ALogItemReport, fails_without_a_path)
{
    reports.LogItemDataFromFile("");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E resultXml is empty!!"));
}

TEST_F(ALogItemReport, ends_silently_where_the_data_library_gives_no_item)
{
    reports.LogItemDataFromFile("a_result.xml");
    EXPECT_THAT(platform.Timeline(), ElementsAre("data_util_log_item_get_from_result_xml_file a_result.xml"));
}

TEST_F(ALogItemReport, tells_both_pairs_then_each_complication_twice_and_releases_the_item)
{
    SetItems({
        "F1", "V1", "F2", "V2", "CF", {"battery", "water"}
    });
    reports.LogItemDataFromFile("a_result.xml");
    const std::string status = "survey status com.corvane.watchface-service ";
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("data_util_log_item_get_from_result_xml_file a_result.xml", status + "F1 V1 ",
                            status + "F2 V2 ", status + "CF battery ", status + "ST02 battery ",
                            status + "CF water ", status + "ST02 water ", "data_util_log_item_free"));
}

TEST_F(ALogItemReport, leaves_out_a_pair_that_lacks_one_of_its_texts)
{
    const SurveyRecord none = Status("ST02", "None");
    EXPECT_THAT(Report({.firstFeature = "F1"}), ElementsAre(none));
    EXPECT_THAT(Report({.firstValue = "V1"}), ElementsAre(none));
    EXPECT_THAT(Report({.secondFeature = "F2"}), ElementsAre(none));
    EXPECT_THAT(Report({.secondValue = "V2"}), ElementsAre(none));
    EXPECT_THAT(Report({.firstFeature = "F1", .secondValue = "V2"}), ElementsAre(none));
}

TEST_F(ALogItemReport, tells_one_pair_without_the_other)
{
    const SurveyRecord none = Status("ST02", "None");
    EXPECT_THAT(Report({.firstFeature = "F1", .firstValue = "V1"}), ElementsAre(Status("F1", "V1"), none));
    EXPECT_THAT(Report({.secondFeature = "F2", .secondValue = "V2"}), ElementsAre(Status("F2", "V2"), none));
}

TEST_F(ALogItemReport, tells_a_pair_with_empty_texts)
{
    EXPECT_THAT(Report({.firstFeature = "", .firstValue = ""}),
                ElementsAre(Status("", ""), Status("ST02", "None")));
}

TEST_F(ALogItemReport, tells_none_of_no_complications_under_both_features)
{
    EXPECT_THAT(Report({.complicationFeature = "CF"}),
                ElementsAre(Status("CF", "None"), Status("ST02", "None")));
}

TEST_F(ALogItemReport, tells_none_of_no_complications_under_one_feature_where_the_face_has_none)
{
    EXPECT_THAT(Report({}), ElementsAre(Status("ST02", "None")));
}

TEST_F(ALogItemReport, tells_complications_under_one_feature_where_the_face_has_none)
{
    EXPECT_THAT(Report({
                    .complicationEntries = {"battery", "water"}
    }),
                ElementsAre(Status("ST02", "battery"), Status("ST02", "water")));
}

TEST_F(ALogItemReport, skips_a_complication_without_a_text)
{
    EXPECT_THAT(
        Report({
            .complicationFeature = "CF", .complicationEntries = {std::nullopt, "water", std::nullopt}
    }),
        ElementsAre(Status("CF", "water"), Status("ST02", "water")));
}

TEST_F(ALogItemReport, does_not_take_complications_without_texts_for_no_complications)
{
    EXPECT_THAT(Report({.complicationFeature = "CF", .complicationEntries = {std::nullopt}}), IsEmpty());
}

TEST_F(ALogItemReport, asks_for_the_number_of_complications_again_after_each_that_it_sent)
{
    platform.OnSurvey([&](const SurveyRecord& record) {
        if (record == Status("ST02", "b")) platform.Data().lentItem->complicationEntryCount = 2;
    });
    EXPECT_THAT(Report({
                    .complicationEntries = {"a", "b", "c"}
    }),
                ElementsAre(Status("ST02", "a"), Status("ST02", "b")));
}

// The legacy way

TEST_F(ALegacyReport, says_that_no_watch_face_is_current)
{
    MakeAnotherClockCurrent();
    reports.SendComplicationDataOld();
    EXPECT_THAT(platform.Survey(), ElementsAre(Legacy("N/A")));
    EXPECT_THAT(platform.Calls({"xml", "exists"}), IsEmpty());
}

TEST_F(ALegacyReport, says_that_no_watch_face_is_current_beside_the_clock_application)
{
    platform.Data().serializeSupported = 0;
    platform.Data().logItemSupported = 0;
    MakeAnotherClockCurrent();
    reports.SendSurveyLogs();
    EXPECT_THAT(platform.Survey(), ElementsAre(Legacy("N/A"), Status("ST00", "com.example.clock")));
}

TEST_F(ALegacyReport, reads_the_read_write_definition_where_there_is_one)
{
    ShipDefinition("<watchface>" + Drawn("water") + "</watchface>");
    StoreDefinition("<watchface>" + Drawn("alarm") + "</watchface>");
    reports.SendComplicationDataOld();
    EXPECT_THAT(platform.Calls({"xml"}),
                ElementsAre("xml RW:watchlist/com.corvane.watchface-mirel-c1/watchface.xml"));
    EXPECT_THAT(platform.Survey(), ElementsAre(Legacy("Alarm")));
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ALegacyReport, reads_the_read_only_definition_else)
{
    ShipDefinition("<watchface>" + Drawn("water") + "</watchface>");
    reports.SendComplicationDataOld();
    EXPECT_THAT(platform.Calls({"xml"}),
                ElementsAre("xml RO:watchlist/com.corvane.watchface-mirel-c1/watchface.xml"));
    EXPECT_THAT(platform.Survey(), ElementsAre(Legacy("Water")));
}

TEST_F(ALegacyReport, fails_without_a_definition_with_a_broken_one_and_with_another_root)
{
    reports.SendComplicationDataOld();
    for (const char* text : {"<watchface>", "<face><watchface/></face>", ""}) {
        StoreDefinition(text);
        reports.SendComplicationDataOld();
    }
    EXPECT_THAT(platform.Survey(), IsEmpty());
    EXPECT_THAT(Log(), ElementsAre("E doc is invalid!!", "E doc is invalid!!", "E doc is invalid!!",
                                   "E doc is invalid!!"));
}

TEST_F(ALegacyReport, has_a_label_for_each_source)
{
    const std::pair<const char*, const char*> labels[] = {
        {"battery",      "Battery"      },
        {"calendar",     "Schedule"     },
        {"weather",      "Weather"      },
        {"worldclock",   "World Clock"  },
        {"alarm",        "Alarm"        },
        {"pedometer",    "Steps"        },
        {"stepsPerSec",  "Steps"        },
        {"speedInMps",   "Steps"        },
        {"heartrate",    "Heart rate"   },
        {"water",        "Water"        },
        {"caffeine",     "Caffeine"     },
        {"d-day",        "D-day"        },
        {"notification", "Notifications"},
        {"shortcut",     "Shortcut"     },
        {"moonphase",    "Moonphase"    },
    };
    for (const auto& [source, label] : labels) EXPECT_THAT(Report(Drawn(source)), ElementsAre(Legacy(label)));
}

TEST_F(ALegacyReport, tells_steps_once_for_each_complication_that_counts_them)
{
    EXPECT_THAT(Report(Drawn("speedInMps") + Drawn("pedometer") + Drawn("stepsPerSec")),
                ElementsAre(Legacy("Steps"), Legacy("Steps"), Legacy("Steps")));
}

TEST_F(ALegacyReport, logs_and_skips_a_source_without_a_label)
{
    EXPECT_THAT(Report(Drawn("water") + Drawn("date") + Drawn("") + Drawn("Battery") + Drawn("alarm")),
                ElementsAre(Legacy("Water"), Legacy("Alarm")));
    EXPECT_THAT(Log(), ElementsAre("E complication not handled(date)", "E complication not handled()",
                                   "E complication not handled(Battery)"));
}

TEST_F(ALegacyReport, does_not_take_sources_without_a_label_for_no_complications)
{
    EXPECT_THAT(Report(Drawn("date")), IsEmpty());
}

TEST_F(ALegacyReport, finds_complications_at_any_depth_in_document_order)
{
    EXPECT_THAT(Report("<layer>" + Drawn("water") + "<layer><layer>" + Drawn("alarm") + "</layer></layer>" +
                       Drawn("weather") + "</layer>" + Drawn("battery")),
                ElementsAre(Legacy("Water"), Legacy("Alarm"), Legacy("Weather"), Legacy("Battery")));
}

TEST_F(ALegacyReport, finds_complications_inside_a_complication)
{
    EXPECT_THAT(Report("<complication source='water' role='text'>" + Drawn("alarm") + "</complication>"),
                ElementsAre(Legacy("Water"), Legacy("Alarm")));
}

TEST_F(ALegacyReport, leaves_out_slots_that_show_nothing)
{
    EXPECT_THAT(Report("<complication source='empty'/><complication source='water'/>" + Drawn("alarm")),
                ElementsAre(Legacy("Alarm")));
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ALegacyReport, looks_at_no_other_elements)
{
    EXPECT_THAT(Report("<text source='water' role='text'/>" + Drawn("alarm")), ElementsAre(Legacy("Alarm")));
}

TEST_F(ALegacyReport, tells_none_where_nothing_is_drawn)
{
    EXPECT_THAT(Report(""), ElementsAre(Legacy("None")));
    EXPECT_THAT(Report("<complication source='empty'/>"), ElementsAre(Legacy("None")));
    EXPECT_THAT(Log(), IsEmpty());
}
