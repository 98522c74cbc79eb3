// The program's main(), compiled for these tests as RunService().

#include "on-a-platform.h"

int RunService(int argc, char** argv);

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class TheEntryPoint : public OnAPlatform {
protected:
    TheEntryPoint() { platform.SetPref("wfs/pref/initial_preview_update_done", true); }

    static int Run()
    {
        char name[] = "watchface-service", option[] = "--option", value[] = "its value";
        char* arguments[] = {name, option, value, nullptr};
        return RunService(3, arguments);
    }
};

}  // namespace

TEST_F(TheEntryPoint, makes_the_application_in_the_loop_and_destroys_it_at_its_end)
{
    platform.ScriptMain({.body = [this] { EXPECT_THAT(platform.OpenPorts(), Not(IsEmpty())); }});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(platform.Calls().front(), testing::StartsWith("service_app_main"));
    EXPECT_THAT(
        platform.Calls({"port"}),
        ElementsAre("port open watchface-service::localport trusted", "port open evaluation-helper-port open",
                    "port close evaluation-helper-port", "port close watchface-service::localport"));
}

TEST_F(TheEntryPoint, hands_its_arguments_to_the_platform)
{
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(platform.Calls().front(), "service_app_main watchface-service --option its value");
}

TEST_F(TheEntryPoint, registers_for_events_with_the_platforms_functions)
{
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(platform.Calls({"event"}),
                ElementsAre("event add 0", "event add 1", "event remove 1", "event remove 0"));
}

TEST_F(TheEntryPoint, logs_nothing_when_the_loop_ends_well)
{
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(platform.Errors(), IsEmpty());
}

TEST_F(TheEntryPoint, logs_and_returns_what_the_loop_returns)
{
    platform.ScriptMain({.body = nullptr, .result = -4});
    EXPECT_EQ(Run(), -4);
    EXPECT_THAT(platform.Errors(), ElementsAre("ui_app_main returns -4(fffffffc)"));
    EXPECT_EQ(platform.Logs().back().file, "main.cpp");
}

TEST_F(TheEntryPoint, tells_what_the_loop_returns_after_the_application_has_gone)
{
    platform.ScriptMain({.body = nullptr, .result = -4});
    Run();
    const auto timeline = platform.Timeline();
    ASSERT_THAT(timeline, testing::Contains("port close watchface-service::localport"));
    EXPECT_EQ(timeline.back(), "log E ui_app_main returns -4(fffffffc)");
}

TEST_F(TheEntryPoint, makes_no_application_where_the_loop_refuses_to_run)
{
    platform.ScriptMain({.body = nullptr, .result = 7, .runs = false});
    EXPECT_EQ(Run(), 7);
    EXPECT_THAT(platform.Timeline(),
                ElementsAre(testing::StartsWith("service_app_main"), "log E ui_app_main returns 7(7)"));
}

TEST_F(TheEntryPoint, hands_launch_requests_to_the_application)
{
    platform.ScriptMain({.body = [this] {
        const auto request = platform.Request({
            {"wfs/req/type", "ttrace_enable"}
        });
        ASSERT_NE(request, nullptr);
        EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_FAILED);
    }});
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(platform.TraceEnabled());
}
