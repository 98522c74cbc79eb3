// The application object: what it is made of, in which order it comes and goes.

#include <memory>

#include "on-a-platform.h"
#include "watchface-service.h"

using testing::ElementsAre;
using testing::IsEmpty;
using WatchfaceService::WatchfaceServiceApp;

namespace {

class AnApplication : public OnAPlatform {
protected:
    std::unique_ptr<CommonUtilAppInterface> app = std::make_unique<WatchfaceServiceApp>();
};

}  // namespace

TEST_F(AnApplication, is_made_in_this_order)
{
    EXPECT_THAT(platform.Timeline(),
                testing::ElementsAreArray(
                    {"setting watch 24-hour", "setting watch language", "setting watch country",
                     "port open watchface-service::localport trusted", "path trusted com.corvane.watchface",
                     "setting get 24-hour", "setting get language", "setting get country",
                     "key watch db/retailmode/enabled", "port open evaluation-helper-port open", "log I ",
                     "key get db/retailmode/enabled"}));
}

TEST_F(AnApplication, goes_in_the_reverse_order)
{
    platform.Forget();
    app.reset();
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("log I ", "port close evaluation-helper-port", "key unwatch db/retailmode/enabled",
                    "port close watchface-service::localport", "setting unwatch country",
                    "setting unwatch language", "setting unwatch 24-hour"));
}

TEST_F(AnApplication, listens_on_its_two_ports)
{
    EXPECT_THAT(platform.OpenPorts(), ElementsAre("watchface-service::localport", "evaluation-helper-port"));
    app.reset();
    EXPECT_THAT(platform.OpenPorts(), IsEmpty());
}

TEST_F(AnApplication, names_the_evaluation_store_in_its_first_log_line)
{
    ASSERT_EQ(platform.Logs().size(), 1u);
    EXPECT_EQ(platform.Logs()[0].text, "service-evaluation-helper.cpp: EvaluationHelper(" +
                                           std::to_string(platform.Logs()[0].line) + ") > ");
}

TEST_F(AnApplication, does_what_its_peers_ask_for)
{
    platform.SetKey("db/wms/clocks_set_idle", "");
    platform.Deliver("watchface-service::localport", "com.corvane.w-home",
                     {
                         {"type",  "watch-idle-changed"},
                         {"pkgid", "a"                 }
    });
    EXPECT_EQ(platform.Key("db/wms/clocks_set_idle"), MemoryPlatform::StoreValue("com.corvane.watchface"));
}

TEST_F(AnApplication, waits_for_the_launch_worker_when_it_goes)
{
    platform.Hold("app_control_destroy");
    platform.Deliver("watchface-service::localport", "com.corvane.w-home",
                     {
                         {"type",          "watch-setting-updated"},
                         {"pkgid",         "a"                    },
                         {"data/xml_data", "<a/>"                 }
    });
    ASSERT_TRUE(platform.WaitUntilHeld("app_control_destroy"));
    platform.Release("app_control_destroy");
    app.reset();
    EXPECT_TRUE(platform.WaitForWorkersEnd(1, 0));
}

TEST_F(AnApplication, only_remembers_a_change_of_the_retail_mode)
{
    platform.Forget();
    platform.SetKey("db/retailmode/enabled", 1);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

TEST_F(AnApplication, regenerates_no_preview_of_its_own_accord)
{
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"ls", "job start", "idler start", "timer start"}), IsEmpty());
}
