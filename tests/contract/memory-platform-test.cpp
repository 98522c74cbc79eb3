// What tests rely on in the platform for tests beyond the contracts: the record, scripted failures, threads.

#include "memory-platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "app-manager.h"
#include "common-util-app.h"
#include "common-util-i18n.h"
#include "common-util-ipc-control.h"
#include "common-util-keys.h"
#include "common-util-log-manager.h"
#include "common-util-pref.h"
#include "common-util-tasks.h"
#include "files.h"

namespace MemoryPlatform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Named so that the test suite does not read as the class that it is about.
class TheMemoryPlatform : public testing::Test {
protected:
    static int LaunchCapture(Platform* = nullptr)
    {
        app_control_h request = nullptr;
        app_control_create(&request);
        app_control_set_app_id(request, "com.corvane.watchface-capture");
        const int result = app_control_send_launch_request(
            request,
            [](app_control_h, app_control_h, app_control_result_e, void* count) {
                ++*static_cast<int*>(count);
            },
            &replies);
        app_control_destroy(request);
        return result;
    }
    void SetUp() override { replies = 0; }

    static inline int replies = 0;
    Platform platform;
};

TEST_F(TheMemoryPlatform, records_calls_and_logs_in_one_order)
{
    CommonUtilVConf::SetBool("b", true);
    __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "watchface-service", "%s: %s(%d) > %s", "a.cpp", "operator()", 12,
                 "done > x");
    CommonUtilPref::SetInt("n", 3);
    EXPECT_THAT(platform.Timeline(), ElementsAre("key set b=true", "log E done > x", "pref set n=3"));
    EXPECT_THAT(platform.Calls(), ElementsAre("key set b=true", "pref set n=3"));
    EXPECT_THAT(platform.Calls({"pref", "send"}), ElementsAre("pref set n=3"));
    const LogLine line = platform.Logs().at(0);
    EXPECT_EQ(line.file, "a.cpp");
    EXPECT_EQ(line.function, "operator()");
    EXPECT_EQ(line.line, 12);
    EXPECT_THAT(platform.Errors(), ElementsAre("done > x"));
    platform.Forget();
    EXPECT_THAT(platform.Timeline(), IsEmpty());
    EXPECT_THAT(platform.Logs(), IsEmpty());
}

TEST_F(TheMemoryPlatform, keeps_a_bare_prefix_and_a_text_without_one)
{
    __dlog_print(LOG_ID_MAIN, DLOG_INFO, "watchface-service", "a.cpp: F(1) > ");
    __dlog_print(LOG_ID_MAIN, DLOG_INFO, "watchface-service", "no prefix\nat all");
    EXPECT_THAT(platform.Infos(), ElementsAre("", "no prefix\nat all"));
}

TEST_F(TheMemoryPlatform, fails_the_uses_that_were_asked_for)
{
    platform.Fail("bundle_create", {.use = 2, .times = 2});
    Strings made;
    for (int i = 0; i < 4; ++i) {
        bundle* b = bundle_create();
        made.push_back(b ? "made" : "null");
        if (b) bundle_free(b);
    }
    EXPECT_THAT(made, ElementsAre("made", "null", "null", "made"));
    EXPECT_EQ(platform.Uses("bundle_create"), 4);
    platform.Fail("app_control_create", {.code = -12});
    app_control_h handle = nullptr;
    EXPECT_EQ(app_control_create(&handle), -12);
    EXPECT_EQ(handle, nullptr);
    platform.Fail("CommonUtilVConf::Set", {.times = Failure::kAlways});
    EXPECT_FALSE(CommonUtilVConf::SetInt("k", 1));
    EXPECT_FALSE(CommonUtilVConf::SetInt("k", 1));
    EXPECT_EQ(platform.Key("k"), std::nullopt);
    EXPECT_THROW(platform.Fail("no_such_function"), std::invalid_argument);
}

TEST_F(TheMemoryPlatform, fails_file_operations_without_touching_files)
{
    platform.WriteFile(platform.RW("watchlist/a/a.png"), "old");
    platform.WriteFile(platform.RO("watchlist/a/a.png"), "new");
    for (const char* name :
         {"CommonUtilFile::Copy", "FileOutputStream", "ecore_file_recursive_rm", "ReadWholeFile",
          "ecore_file_ls", "ecore_file_exists", "app_manager_get_shared_data_path"}) {
        platform.Fail(name);
    }
    EXPECT_FALSE(CommonUtilFile::Copy(platform.RO("watchlist/a/a.png"), platform.RW("watchlist/a/a.png")));
    {
        FileOutputStream stream(platform.RW("watchlist/a/a.png"));
        stream.Write("new");
        stream.Close();
        EXPECT_FALSE(stream.Good());
    }
    EXPECT_EQ(ReadWholeFile(platform.RW("watchlist/a/a.png")), "");
    EXPECT_FALSE(ecore_file_recursive_rm(platform.RW("watchlist/a").c_str()));
    EXPECT_EQ(ecore_file_ls(platform.RW("watchlist").c_str()), nullptr);
    EXPECT_FALSE(ecore_file_exists(platform.RW("watchlist").c_str()));
    char* path = nullptr;
    EXPECT_LT(app_manager_get_shared_data_path("com.corvane.watchface", &path), 0);
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a.png")), "old");
    EXPECT_THAT(platform.Tree(platform.RW()), ElementsAre("watchlist/", "watchlist/a/", "watchlist/a/a.png"));
    EXPECT_THAT(
        platform.Calls(),
        ElementsAre("copy RO:watchlist/a/a.png -> RW:watchlist/a/a.png", "open RW:watchlist/a/a.png",
                    "close RW:watchlist/a/a.png", "read RW:watchlist/a/a.png", "recursive_rm RW:watchlist/a",
                    "ls RW:watchlist", "exists RW:watchlist", "path data com.corvane.watchface"));
}

TEST_F(TheMemoryPlatform, tells_threads_apart_and_waits_for_their_end)
{
    std::thread worker([] {
        usleep(200'000);
        __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "watchface-service", "a.cpp: F(1) > from the worker");
    });
    EXPECT_TRUE(platform.WaitForWorkersEnd());
    worker.join();
    CommonUtilVConf::SetInt("k", 1);
    EXPECT_THAT(platform.Calls({}, kWorkerThreads), ElementsAre("usleep 200000"));
    EXPECT_THAT(platform.Calls({}, kMainThread), ElementsAre("key set k=1"));
    EXPECT_THAT(platform.LogTexts("watchface-service", kWorkerThreads), ElementsAre("E from the worker"));
    EXPECT_EQ(platform.Now(), 0);
}

TEST_F(TheMemoryPlatform, holds_a_worker_until_it_is_released)
{
    platform.Hold("app_control_send_launch_request");
    std::thread worker([] { LaunchCapture(); });
    ASSERT_TRUE(platform.WaitUntilHeld("app_control_send_launch_request"));
    EXPECT_THAT(platform.Launches(), IsEmpty());
    EXPECT_THAT(platform.Calls({}, kWorkerThreads),
                ElementsAre("app_control_create", "app_control_set_app_id com.corvane.watchface-capture",
                            "launch com.corvane.watchface-capture {}"));
    platform.Release("app_control_send_launch_request");
    EXPECT_TRUE(platform.WaitForCall("app_control_destroy"));
    EXPECT_TRUE(platform.WaitForWorkersEnd());
    worker.join();
    EXPECT_EQ(platform.Launches().size(), 1u);
}

TEST_F(TheMemoryPlatform, gives_up_waiting_for_what_does_not_happen)
{
    EXPECT_FALSE(platform.WaitForCall("never", 1, 0.001));
    EXPECT_FALSE(platform.WaitForWorkersEnd(1, 0.001));
}

TEST_F(TheMemoryPlatform, answers_launches_when_the_test_says_so)
{
    platform.ScriptLaunches({APP_CONTROL_ERROR_LAUNCH_FAILED, -22});
    EXPECT_EQ(LaunchCapture(), APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_EQ(LaunchCapture(), -22);
    EXPECT_EQ(LaunchCapture(), 0);
    EXPECT_TRUE(platform.ReplyToLaunch());
    EXPECT_FALSE(platform.ReplyToLaunch());
    EXPECT_EQ(replies, 0);
    platform.RunUntilIdle();
    EXPECT_EQ(replies, 1);
    platform.ReplyToLaunchesAtOnce(true);
    LaunchCapture();
    platform.RunUntilIdle();
    EXPECT_EQ(replies, 2);
}

TEST_F(TheMemoryPlatform, turns_the_clock_by_hand)
{
    Strings order;
    CommonUtilTimer late(1.0, [&] {
        order.push_back("late");
        return kCommonUtilTaskEnd;
    });
    CommonUtilTimer early(0.5, [&] {
        order.push_back("early");
        return order.size() < 3 ? kCommonUtilTaskAgain : kCommonUtilTaskEnd;
    });
    late.Start();
    early.Start();
    platform.RunUntilIdle();
    EXPECT_THAT(order, IsEmpty());
    EXPECT_EQ(platform.NextTimer(), 0.5);
    platform.Advance(0.5);
    EXPECT_THAT(order, ElementsAre("early"));
    platform.Advance(10);
    EXPECT_THAT(order, ElementsAre("early", "late", "early"));
    EXPECT_EQ(platform.NextTimer(), std::nullopt);
    EXPECT_EQ(platform.Now(), 10.5);
    usleep(500'000);
    EXPECT_EQ(platform.Now(), 11);
    EXPECT_THAT(platform.Calls(), ElementsAre("timer start 1", "timer start 0.5", "usleep 500000"));
}

TEST_F(TheMemoryPlatform, says_so_when_the_loop_never_becomes_idle)
{
    CommonUtilJob job([&] { job.Start(); });
    job.Start();
    EXPECT_THROW(platform.RunUntilIdle(), std::runtime_error);
}

TEST_F(TheMemoryPlatform, delivers_messages_at_once)
{
    Strings got;
    const CommonUtilIPCControl port(
        "p", true, [&](int, const std::string& from, const std::string& fromPort, bool, bundle* b) {
            got.push_back(from + "/" + fromPort + " " + (b ? ToText(ContentOf(b)) : "null"));
        });
    EXPECT_TRUE(platform.Deliver("p", "home",
                                 {
                                     {"type", "x"              },
                                     {"list", Strings{"a", "b"}}
    },
                                 "home-port"));
    EXPECT_TRUE(platform.DeliverNothing("p", "home"));
    EXPECT_FALSE(platform.Deliver("q", "home", {}));
    EXPECT_THAT(got, ElementsAre("home/home-port {\"list\": [\"a\", \"b\"], \"type\": \"x\"}", "home/ null"));
    EXPECT_THAT(platform.OpenPorts(), ElementsAre("p"));
}

TEST_F(TheMemoryPlatform, keeps_what_was_sent)
{
    platform.SetPortUp("home", "home-port");
    bundle* b = NewBundle({
        {"type", "x"}
    });
    CommonUtilIPCControl::SendTrustedMessage("home", "home-port", b);
    platform.Fail("SendTrustedMessage");
    EXPECT_LT(CommonUtilIPCControl::SendTrustedMessage("home", "home-port", b), 0);
    CommonUtilIPCControl::SendTrustedMessage("editor", "editor-port", b);
    bundle_free(b);
    ASSERT_EQ(platform.Sent().size(), 2u);
    EXPECT_TRUE(platform.Sent()[0].arrived);
    EXPECT_EQ(platform.Sent()[0].Text("type"), "x");
    EXPECT_EQ(platform.Sent()[0].Text("missing"), "");
    EXPECT_FALSE(platform.SentTo("editor").at(0).arrived);
    EXPECT_THAT(platform.Calls({"send"}),
                ElementsAre("send home home-port {\"type\": \"x\"}", "send home home-port {\"type\": \"x\"}",
                            "send editor editor-port {\"type\": \"x\"}"));
}

// An application that answers what it is asked and counts its events.
struct TestApplication : CommonUtilAppInterface {
    void OnAppControl(app_control_s* request) override
    {
        app_control_reply_to_launch_request(nullptr, request, APP_CONTROL_RESULT_SUCCEEDED);
    }
    void OnAppLowMemory() override { Note("low memory"); }
    void OnAppLowBattery() override { Note("low battery"); }
    ~TestApplication() override { Note("destroyed"); }
    static void Note(const char* text) { CommonUtilPref::SetString("note", text); }
};

TEST_F(TheMemoryPlatform, runs_an_application_between_create_and_terminate)
{
    CommonUtilAppEventHandler::SetEventFunctions(service_app_add_event_handler,
                                                 service_app_remove_event_handler);
    CommonUtilAppMain main([] { return new TestApplication; });
    service_app_lifecycle_callback_s callbacks{
        CommonUtilAppMain::AppCreated, CommonUtilAppMain::AppTerminated, CommonUtilAppMain::AppControl};
    std::unique_ptr<ReceivedRequest> request;
    platform.ScriptMain({.body =
                             [&] {
                                 platform.RaiseEvent(APP_EVENT_LOW_BATTERY);
                                 request = platform.Request({
                                     {"operation", "configuration"}
                                 });
                             },
                         .result = 3});
    EXPECT_EQ(service_app_main(0, nullptr, &callbacks, &main), 3);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(platform.Request({}), nullptr);
    EXPECT_THAT(platform.Calls(), ElementsAre("service_app_main", "event add 0", "event add 1",
                                              "pref set note=low battery", "launch reply 0 {}",
                                              "event remove 1", "event remove 0", "pref set note=destroyed"));
    CommonUtilAppEventHandler::SetEventFunctions(nullptr, nullptr);
}

TEST_F(TheMemoryPlatform, says_with_which_arguments_an_application_runs)
{
    platform.ScriptMain({.runs = false});
    char name[] = "name", argument[] = "argument";
    char* arguments[] = {name, argument, nullptr};
    service_app_main(2, arguments, nullptr, nullptr);
    EXPECT_THAT(platform.Calls(), ElementsAre("service_app_main name argument"));
}

TEST(AMemoryPlatform, ends_with_the_clones_that_nobody_destroyed)
{
    auto platform = std::make_unique<MemoryPlatform::Platform>();
    const auto request = std::make_unique<ReceivedRequest>(MemoryPlatform::Message());
    app_control_h clone = nullptr;
    ASSERT_EQ(app_control_clone(&clone, request->Handle()), APP_CONTROL_ERROR_NONE);
    request->Close();
    EXPECT_FALSE(request->IsAnswered());
    platform.reset();
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_FAILED);
    EXPECT_TRUE(request->IsAnswered());
}

TEST_F(TheMemoryPlatform, refuses_an_application_when_it_is_told_to)
{
    platform.ScriptMain({.result = -1, .runs = false});
    service_app_lifecycle_callback_s callbacks{[](void*) -> bool { throw 1; }, nullptr, nullptr};
    EXPECT_EQ(service_app_main(0, nullptr, &callbacks, nullptr), -1);
}

TEST_F(TheMemoryPlatform, stands_in_for_the_data_library)
{
    char* text = data_util_resultxml_memory_converter("<r/>");
    EXPECT_STREQ(text, "<watchface><r/></watchface>");
    free(text);
    platform.Data().convert = [](const std::string&) { return std::nullopt; };
    EXPECT_EQ(data_util_resultxml_memory_converter("<r/>"), nullptr);
    platform.Data().items = [](const std::string&) {
        return UsageItems{
            .firstFeature = "WF001", .complicationEntries = {"a", std::nullopt}
        };
    };
    data_util_log_item_s* item = data_util_log_item_get_from_result_xml_file(platform.RW("r.xml").c_str());
    ASSERT_NE(item, nullptr);
    EXPECT_STREQ(item->firstFeature, "WF001");
    EXPECT_EQ(item->firstValue, nullptr);
    ASSERT_EQ(item->complicationEntryCount, 2);
    EXPECT_STREQ(item->complicationEntries[0], "a");
    EXPECT_EQ(item->complicationEntries[1], nullptr);
    data_util_log_item_free(item);
    WorldClock seen;
    platform.Data().updateWorldClock = [&](const std::string&, const WorldClock& record) {
        seen = record;
        return std::optional<std::string>("flat");
    };
    text = data_util_resultxml_file_converter_update_worldclock("x", {"c", nullptr, "zone/path", "city", ""});
    EXPECT_STREQ(text, "flat");
    free(text);
    EXPECT_EQ(seen, (WorldClock{"c", std::nullopt, "zone/path", "city", ""}));
}

TEST_F(TheMemoryPlatform, records_dates_and_usage)
{
    EXPECT_EQ(CommonUtilI18NDateFormatter("yMd", "Asia/Seoul", "ko_KR", true)
                  .Format(1000, kCommonUtilI18NTimestampMilliseconds),
              "1970. 1. 1.");
    CommonUtilLogManager::SendFeatureSurveyInfo("app", "WF001", "value", "");
    EXPECT_THAT(platform.Survey(), ElementsAre(SurveyRecord{true, "app", "WF001", "value", ""}));
    EXPECT_THAT(platform.Calls(), ElementsAre("formatter [yMd] [Asia/Seoul] [ko_KR] true", "format 1000",
                                              "formatter released", "survey feature app WF001 value "));
}

TEST_F(TheMemoryPlatform, scripts_dates_and_makes_them_fail)
{
    CommonUtilI18NDateFormatter formatter("yMd", "Asia/Seoul", "ko_KR", true);
    platform.ScriptDates([](int64_t instant) { return "at " + std::to_string(instant); });
    platform.Fail("CommonUtilI18NDateFormatter::Format");
    EXPECT_EQ(formatter.Format(1000, kCommonUtilI18NTimestampMilliseconds), "");
    EXPECT_EQ(formatter.Format(1000, kCommonUtilI18NTimestampMilliseconds), "at 1000");
}

TEST(TwoMemoryPlatforms, use_the_same_folder_and_each_finds_it_empty)
{
    std::string root;
    {
        Platform first;
        root = first.Root();
        first.WriteFile(first.RW("a"), "x");
        first.SetKey("k", 1);
    }
    Platform second;
    EXPECT_EQ(second.Root(), root);
    EXPECT_THAT(second.Tree(second.Root()), IsEmpty());
    EXPECT_EQ(second.Key("k"), std::nullopt);
    EXPECT_THROW(Platform third, std::logic_error);
}

}  // namespace
}  // namespace MemoryPlatform
