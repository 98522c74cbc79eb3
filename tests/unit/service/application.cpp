// The application object: what it is made of, in which order it comes and goes.

#include <memory>
#include <thread>

#include "an-application.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

TEST_F(AnApplication, is_made_in_this_order)
{
    Start();
    EXPECT_THAT(platform.Timeline(),
                ElementsAreArray(
                    {"setting watch 24-hour", "setting watch language", "setting watch country",
                     "port open watchface-service::localport trusted", "path trusted com.corvane.watchface",
                     "setting get 24-hour", "setting get language", "setting get country",
                     "key watch db/retailmode/enabled", "port open evaluation-helper-port open", "log I ",
                     "key get db/setup_wizard/first_boot", "key get db/retailmode/enabled",
                     "pref get wfs/pref/initial_preview_update_done", "ls RW:watchlist/",
                     "log E initial preview matched!! set initial preview update done flag",
                     "pref set wfs/pref/initial_preview_update_done=true"}));
}

TEST_F(AnApplication, goes_in_the_reverse_order)
{
    platform.SetKey("db/setup_wizard/first_boot", true);
    platform.SetKey("db/retailmode/enabled", 1);
    StartQuietly();
    const auto held = Ask({
        {"retail-mode", "init_watch"}
    });
    platform.Forget();
    app.reset();
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("app_control_destroy", "log I ", "port close evaluation-helper-port",
                    "key unwatch db/retailmode/enabled", "key unwatch db/setup_wizard/returned_from_wpc",
                    "key unwatch db/wms/gm_setupwizard_eula_finished",
                    "key unwatch db/setup_wizard/standalone", "port close watchface-service::localport",
                    "setting unwatch country", "setting unwatch language", "setting unwatch 24-hour"));
}

TEST_F(AnApplication, destroys_no_request_that_it_does_not_hold)
{
    StartQuietly();
    app.reset();
    EXPECT_THAT(platform.Calls({"app_control"}), IsEmpty());
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I "));
}

TEST_F(AnApplication, releases_its_managers_between_its_port_and_the_settings)
{
    platform.ScriptLaunches(std::vector<int>(6, APP_CONTROL_ERROR_LAUNCH_FAILED));
    StartQuietly();
    platform.Hold("usleep");
    platform.Deliver("watchface-service::localport", "com.corvane.w-home",
                     {
                         {"type",          "watch-setting-updated"},
                         {"pkgid",         "a"                    },
                         {"data/xml_data", "<a/>"                 }
    });
    ASSERT_TRUE(platform.WaitUntilHeld("usleep"));
    platform.Forget();
    // The last owner of the watch-face manager waits for the launch worker.
    std::thread release([this] {
        platform.WaitForCall("port close watchface-service::localport");
        platform.Release("usleep");
    });
    app.reset();
    release.join();
    EXPECT_TRUE(platform.WaitForWorkersEnd(1, 0));
    const auto timeline = platform.Timeline();
    const auto at = [&](const char* line) { return std::find(timeline.begin(), timeline.end(), line); };
    EXPECT_LT(at("port close watchface-service::localport"), at("log E MAXIUM_DELAY_TIME is over"));
    EXPECT_LT(at("log E MAXIUM_DELAY_TIME is over"), at("setting unwatch country"));
    EXPECT_NE(at("setting unwatch country"), timeline.end());
}

TEST_F(AnApplication, takes_what_it_had_still_to_do_with_it)
{
    ShipFaces();
    platform.SetKey("db/setup_wizard/first_boot", true);
    platform.Set24HourMode(false);
    Start();
    platform.SetLanguage("ko_KR");
    platform.SetKey("db/setup_wizard/standalone", 1);
    platform.RunTurn();
    EXPECT_THAT(platform.Calls({"job start", "idler start"}),
                ElementsAre("idler start", "job start", "job start"));
    platform.Forget();
    app.reset();
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"ls", "send", "inner"}), IsEmpty());
}

TEST_F(AnApplication, logs_when_the_held_request_cannot_be_destroyed)
{
    platform.SetKey("db/retailmode/enabled", 1);
    StartQuietly();
    const auto held = Ask({
        {"retail-mode", "init_watch"}
    });
    platform.Forget();
    platform.Fail("app_control_destroy");
    app.reset();
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I app_control_destroy returns -5(fffffffb)", "I "));
}

TEST_F(AnApplication, listens_on_its_two_ports)
{
    Start();
    EXPECT_THAT(platform.OpenPorts(), ElementsAre("watchface-service::localport", "evaluation-helper-port"));
    app.reset();
    EXPECT_THAT(platform.OpenPorts(), IsEmpty());
}

TEST_F(AnApplication, names_the_evaluation_store_in_its_first_log_line)
{
    Start();
    ASSERT_FALSE(platform.Logs().empty());
    EXPECT_EQ(platform.Logs()[0].text, "service-evaluation-helper.cpp: EvaluationHelper(" +
                                           std::to_string(platform.Logs()[0].line) + ") > ");
}

TEST_F(AnApplication, does_what_its_peers_ask_for)
{
    StartQuietly();
    platform.SetKey("db/wms/clocks_set_idle", "");
    platform.Deliver("watchface-service::localport", "com.corvane.w-home",
                     {
                         {"type",  "watch-idle-changed"},
                         {"pkgid", "a"                 }
    });
    EXPECT_EQ(platform.Key("db/wms/clocks_set_idle"), MemoryPlatform::StoreValue("com.corvane.watchface"));
}

TEST_F(AnApplication, has_one_watch_face_manager_for_its_own_requests_and_for_messages)
{
    ShipFaces();
    platform.SetKey("db/retailmode/enabled", 1);
    StartQuietly();
    const auto request = Ask({
        {"retail-mode", "init_watch"}
    });
    ASSERT_THAT(Captured(), ElementsAre(kFirst, kSecond));
    Finish(kFirst);
    Finish(kSecond);
    EXPECT_TRUE(request->IsAnswered());
}

TEST_F(AnApplication, only_remembers_a_change_of_the_retail_mode)
{
    StartQuietly();
    platform.SetKey("db/retailmode/enabled", 1);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}
