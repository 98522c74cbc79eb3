// Previews asked of the capture application while it is not there: the launch worker and the waiting names.

#include <thread>

#include "a-watchface-manager.h"
#include "inner-calls.h"

using MemoryPlatform::kMainThread;
using MemoryPlatform::kWorkerThreads;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr int kLaunchFailed = static_cast<int>(0xFEF00023);

constexpr char kSendA[] =
    "send com.corvane.watchface-capture watchface-capture::localport {\"pkgName\": \"a\"}";
constexpr char kSendB[] =
    "send com.corvane.watchface-capture watchface-capture::localport {\"pkgName\": \"b\"}";
constexpr char kSendC[] =
    "send com.corvane.watchface-capture watchface-capture::localport {\"pkgName\": \"c\"}";

}  // namespace

class AWatchfaceManagerWithoutCaptureApplication : public AWatchfaceManager {
protected:
    // The worker's own log lines.
    MemoryPlatform::Strings WorkerLogs() const
    {
        return platform.LogTexts("watchface-service", kWorkerThreads);
    }
    MemoryPlatform::Strings MainLogs() const { return platform.LogTexts("watchface-service", kMainThread); }
};

TEST_F(AWatchfaceManagerWithoutCaptureApplication, starts_a_worker_and_leaves_the_timer_alone)
{
    manager.RequestPreviewCapture("a");
    EXPECT_THAT(platform.Timeline(kMainThread),
                ElementsAre("port check com.corvane.watchface-capture watchface-capture::localport",
                            "log E port isn't exist", "log E mLaunchCaptureAppThread created!!"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, launches_it_on_the_worker)
{
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(
        platform.Timeline(kWorkerThreads),
        ElementsAre("log I ", "app_control_create", "app_control_set_app_id com.corvane.watchface-capture",
                    "launch com.corvane.watchface-capture {}",
                    "log E app_control_send_launch_request is success(0)", "app_control_destroy"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, takes_every_positive_result_for_success)
{
    platform.ScriptLaunches({3});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(WorkerLogs(), ElementsAre("I ", "E app_control_send_launch_request is success(3)"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, sends_the_waiting_name_when_it_answers)
{
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    platform.Forget();
    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), ElementsAre(kSendA, "usleep 200000", "timer stop", "timer start 0.5"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, sends_the_waiting_names_whatever_it_answers)
{
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    ASSERT_TRUE(platform.ReplyToLaunch(APP_CONTROL_RESULT_FAILED));
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"send"}), ElementsAre(kSendA));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, lets_names_wait_for_a_worker_that_is_working)
{
    platform.Hold("app_control_create");
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitUntilHeld("app_control_create"));
    platform.Forget();

    manager.RequestPreviewCapture("b");
    EXPECT_THAT(MainLogs(), ElementsAre("E port isn't exist", "I mLaunchCaptureAppThread is working!!"));

    platform.Release("app_control_create");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(platform.Launches(), SizeIs(1));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, sends_all_waiting_names_front_to_back_200_ms_apart)
{
    platform.Hold("app_control_create");
    manager.RequestPreviewCapture("b");
    ASSERT_TRUE(platform.WaitUntilHeld("app_control_create"));
    manager.RequestPreviewCapture("a");
    manager.RequestPreviewCapture("b");
    platform.Release("app_control_create");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    platform.Forget();

    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), ElementsAre(kSendB, "usleep 200000", kSendA, "usleep 200000", kSendB,
                                                 "usleep 200000", "timer stop", "timer start 1.5"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, counts_what_was_outstanding_before_in_the_timers_interval)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.RequestPreviewCapture("a");
    platform.SetPortUp(kCapture, kCapturePort, false);
    manager.RequestPreviewCapture("b");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    platform.ReplyToLaunch();
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"timer start"}), ElementsAre("timer start 0.5", "timer start 1"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication,
       sends_the_waiting_names_after_a_request_that_finds_it_there)
{
    manager.RequestPreviewCapture("a");
    manager.RequestPreviewCapture("b");
    platform.SetPortUp(kCapture, kCapturePort);
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    platform.Forget();

    manager.RequestPreviewCapture("c");
    EXPECT_THAT(
        platform.Timeline(kMainThread),
        ElementsAre("port check com.corvane.watchface-capture watchface-capture::localport",
                    "log E port is already exist", kSendC, kSendA, "usleep 200000", kSendB, "usleep 200000",
                    "timer stop", "timer start 1.5", "log I mCaptureProcessingWatchfaces[3]"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication,
       restarts_the_timer_at_an_answer_when_no_name_waits_any_more)
{
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    platform.SetPortUp(kCapture, kCapturePort);
    manager.RequestPreviewCapture("b");
    platform.Forget();

    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), ElementsAre("timer stop", "timer start 1"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, counts_waiting_names_that_cannot_be_sent_as_outstanding)
{
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    platform.Forget();

    platform.Fail("bundle_create");
    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), ElementsAre("usleep 200000", "timer stop", "timer start 0.5"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, keeps_waiting_names_when_the_fallback_timer_runs_out)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.RequestPreviewCapture("a");
    platform.SetPortUp(kCapture, kCapturePort, false);
    manager.RequestPreviewCapture("b");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    platform.Advance(0.5);
    ASSERT_THAT(platform.Errors(), Contains("update preview fallback timer expired!!"));
    platform.Forget();

    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"send"}), ElementsAre(kSendB));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, keeps_names_outside_the_outstanding_ones_while_they_wait)
{
    int calls = 0;
    manager.SetPreviewDoneCallback([&] { ++calls; });
    manager.RequestPreviewCapture("a");
    manager.UpdatePreviewDone("a");
    EXPECT_EQ(calls, 0);
}

// Failing launches

TEST_F(AWatchfaceManagerWithoutCaptureApplication, ends_the_worker_when_no_request_can_be_made)
{
    platform.Fail("app_control_create", {.code = -12});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(platform.Timeline(kWorkerThreads),
                ElementsAre("log I ", "app_control_create", "log E app_control_create is failed(-12)"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication,
       destroys_the_request_and_ends_the_worker_when_it_takes_no_id)
{
    platform.Fail("app_control_set_app_id", {.code = -22});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(
        platform.Timeline(kWorkerThreads),
        ElementsAre("log I ", "app_control_create", "app_control_set_app_id com.corvane.watchface-capture",
                    "log E app_control_set_app_id is failed(-22)", "app_control_destroy"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, does_not_retry_after_any_other_error)
{
    platform.ScriptLaunches({-13});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(
        platform.Timeline(kWorkerThreads),
        ElementsAre("log I ", "app_control_create", "app_control_set_app_id com.corvane.watchface-capture",
                    "launch com.corvane.watchface-capture {}",
                    "log E app_control_send_launch_request is fail(-13)", "app_control_destroy"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, retries_a_failed_launch_after_200_ms_until_it_succeeds)
{
    platform.ScriptLaunches({kLaunchFailed, kLaunchFailed, 0});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(
        platform.Timeline(kWorkerThreads),
        ElementsAre("log I ", "app_control_create", "app_control_set_app_id com.corvane.watchface-capture",
                    "launch com.corvane.watchface-capture {}",
                    "log E app_control_send_launch_request is fail(-17825757)", "usleep 200000",
                    "log E Waiting for app control socket initial time",
                    "launch com.corvane.watchface-capture {}", "usleep 200000",
                    "log E Waiting for app control socket initial time",
                    "launch com.corvane.watchface-capture {}", "app_control_destroy"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, stops_retrying_at_any_other_error_without_a_word)
{
    platform.ScriptLaunches({kLaunchFailed, -13});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(platform.Launches(), SizeIs(2));
    EXPECT_THAT(WorkerLogs(), ElementsAre("I ", "E app_control_send_launch_request is fail(-17825757)",
                                          "E Waiting for app control socket initial time"));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, gives_up_after_five_retries)
{
    platform.ScriptLaunches(std::vector<int>(7, kLaunchFailed));
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(platform.Launches(), SizeIs(6));
    EXPECT_THAT(platform.Calls({"usleep"}, kWorkerThreads), AllOf(SizeIs(5), Each("usleep 200000")));
    EXPECT_THAT(WorkerLogs(),
                ElementsAre("I ", "E app_control_send_launch_request is fail(-17825757)",
                            "E Waiting for app control socket initial time",
                            "E Waiting for app control socket initial time",
                            "E Waiting for app control socket initial time",
                            "E Waiting for app control socket initial time",
                            "E Waiting for app control socket initial time", "E MAXIUM_DELAY_TIME is over"));
    EXPECT_THAT(platform.Calls({"app_control_destroy"}), SizeIs(1));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, says_nothing_of_the_maximum_when_the_fifth_retry_succeeds)
{
    platform.ScriptLaunches({kLaunchFailed, kLaunchFailed, kLaunchFailed, kLaunchFailed, kLaunchFailed, 0});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(platform.Launches(), SizeIs(6));
    EXPECT_EQ(WorkerLogs().back(), "E Waiting for app control socket initial time");
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, sends_the_waiting_names_when_a_retried_launch_is_answered)
{
    platform.ScriptLaunches({kLaunchFailed, 0});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"send"}), ElementsAre(kSendA));
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, keeps_names_until_a_later_launch_succeeds)
{
    platform.ScriptLaunches({-13, 0});
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    manager.RequestPreviewCapture("b");
    ASSERT_TRUE(platform.WaitForWorkersEnd(2));
    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"send"}), ElementsAre(kSendA, kSendB));
}

// The worker's own life

class AnEndedLaunchWorker : public AWatchfaceManager,
                            public testing::WithParamInterface<std::pair<const char*, int>> {};

TEST_P(AnEndedLaunchWorker, lets_another_one_start)
{
    const auto [function, times] = GetParam();
    platform.Fail(function, {.times = times, .code = kLaunchFailed});
    manager.PreLaunchCaptureApp();
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    manager.PreLaunchCaptureApp();
    ASSERT_TRUE(platform.WaitForWorkersEnd(2));
    EXPECT_THAT(platform.LogTexts("watchface-service", kMainThread),
                ElementsAre("E mLaunchCaptureAppThread created!!", "E mLaunchCaptureAppThread created!!"));
}

INSTANTIATE_TEST_SUITE_P(after, AnEndedLaunchWorker,
                         testing::Values(std::pair("app_control_create", 1),
                                         std::pair("app_control_set_app_id", 1),
                                         std::pair("app_control_send_launch_request", 6),
                                         std::pair("app_control_destroy", 1)),
                         [](const auto& row) { return std::string("a_failed_") + row.param.first; });

class ALaunchWorker : public AWatchfaceManager, public testing::WithParamInterface<int> {};

TEST_P(ALaunchWorker, is_working_until_it_has_destroyed_its_request)
{
    platform.ScriptLaunches({GetParam()});
    platform.Hold("app_control_destroy");
    manager.PreLaunchCaptureApp();
    ASSERT_TRUE(platform.WaitUntilHeld("app_control_destroy"));
    bool refused = false;
    {
        // Released from elsewhere: a second worker would be waited for, and with it the one that is held.
        const std::jthread release([&] {
            refused = platform.WaitForLog("mLaunchCaptureAppThread is working!!", 1, 2);
            platform.Release("app_control_destroy");
        });
        manager.PreLaunchCaptureApp();
    }
    EXPECT_TRUE(refused);
    ASSERT_TRUE(platform.WaitForWorkersEnd());
}

INSTANTIATE_TEST_SUITE_P(whose_launch, ALaunchWorker, testing::Values(0, -13),
                         [](const auto& row) { return row.param == 0 ? "succeeded" : "failed"; });

TEST_F(AWatchfaceManagerWithoutCaptureApplication, waits_for_its_worker_when_it_goes)
{
    platform.Hold("app_control_destroy");
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitUntilHeld("app_control_destroy"));
    const InnerCalls inner;
    bool joined = false;
    {
        const std::jthread release([&] {
            joined = platform.WaitForCall("inner join", 1, 2);
            platform.Release("app_control_destroy");
        });
        owner.reset();
        EXPECT_TRUE(platform.WaitForWorkersEnd(1, 0));
    }
    EXPECT_TRUE(joined);
}

TEST_F(AWatchfaceManagerWithoutCaptureApplication, touches_neither_timer_nor_names_on_the_worker)
{
    manager.RequestPreviewCapture("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(platform.Calls({"timer", "send", "port"}, kWorkerThreads), IsEmpty());
}

TEST_F(AWatchfaceManager, starts_the_fallback_timer_for_the_next_turn_when_nothing_waits_or_is_outstanding)
{
    manager.PreLaunchCaptureApp();
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    ASSERT_TRUE(platform.ReplyToLaunch());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"timer"}), ElementsAre("timer stop", "timer start 0"));
    EXPECT_THAT(platform.Errors(), Contains("update preview fallback timer expired!!"));
}
