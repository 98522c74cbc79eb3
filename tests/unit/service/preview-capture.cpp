// Previews asked of the capture application while it is there: requests, their end, the fallback timer.

#include "a-watchface-manager.h"
#include "files.h"

using MemoryPlatform::Message;
using MemoryPlatform::SentMessage;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

TEST_F(AWatchfaceManager, asks_for_no_preview_without_a_name)
{
    manager.RequestPreviewCapture("");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName is empty!!"));
}

TEST_F(AWatchfaceManager, sends_a_capture_request_and_starts_the_fallback_timer)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.RequestPreviewCapture("a");
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("port check com.corvane.watchface-capture watchface-capture::localport",
                    "log E port is already exist",
                    "send com.corvane.watchface-capture watchface-capture::localport {\"pkgName\": \"a\"}",
                    "timer stop", "timer start 0.5", "log I mCaptureProcessingWatchfaces[1]"));
}

TEST_F(AWatchfaceManager, sends_capture_requests_trusted_and_without_a_port_of_its_own)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.RequestPreviewCapture("a");
    ASSERT_EQ(platform.Sent().size(), 1u);
    EXPECT_TRUE(platform.Sent()[0].trusted);
    EXPECT_EQ(platform.Sent()[0].senderPort, "");
    EXPECT_EQ(platform.Sent()[0].message, Message({
                                              {"pkgName", "a"}
    }));
}

TEST_F(AWatchfaceManager, gives_half_a_second_for_every_outstanding_request)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.RequestPreviewCapture("a");
    manager.RequestPreviewCapture("b");
    manager.RequestPreviewCapture("c");
    EXPECT_THAT(platform.Calls({"timer start"}),
                ElementsAre("timer start 0.5", "timer start 1", "timer start 1.5"));
    EXPECT_THAT(platform.Infos(),
                ElementsAre("mCaptureProcessingWatchfaces[1]", "mCaptureProcessingWatchfaces[2]",
                            "mCaptureProcessingWatchfaces[3]"));
}

TEST_F(AWatchfaceManager, counts_a_name_once_for_every_request)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.RequestPreviewCapture("a");
    manager.RequestPreviewCapture("a");
    EXPECT_THAT(platform.Infos(),
                ElementsAre("mCaptureProcessingWatchfaces[1]", "mCaptureProcessingWatchfaces[2]"));
}

TEST_F(AWatchfaceManager, takes_only_the_answer_1_for_a_port_that_is_up)
{
    platform.SetPortUp(kCapture, kCapturePort);
    platform.Fail("CheckTrustedRemotePort", {.code = -1});
    manager.RequestPreviewCapture("a");
    EXPECT_THAT(platform.Sent(), IsEmpty());
    EXPECT_THAT(platform.LogTexts("watchface-service", MemoryPlatform::kMainThread),
                ElementsAre("E port isn't exist", "E mLaunchCaptureAppThread created!!"));
}

TEST_F(AWatchfaceManager, counts_a_request_that_cannot_be_sent_as_outstanding)
{
    platform.SetPortUp(kCapture, kCapturePort);
    platform.Fail("SendTrustedMessage");
    manager.RequestPreviewCapture("a");
    EXPECT_THAT(platform.Infos(), ElementsAre("mCaptureProcessingWatchfaces[1]"));
    EXPECT_EQ(platform.NextTimer(), 0.5);
}

TEST_F(AWatchfaceManager, counts_a_request_for_which_no_bundle_can_be_made_as_outstanding)
{
    platform.SetPortUp(kCapture, kCapturePort);
    platform.Fail("bundle_create");
    manager.RequestPreviewCapture("a");
    EXPECT_THAT(platform.Sent(), IsEmpty());
    EXPECT_THAT(platform.Infos(), ElementsAre("mCaptureProcessingWatchfaces[1]"));
}

TEST_F(AWatchfaceManager, runs_no_timer_before_the_first_request)
{
    EXPECT_EQ(platform.NextTimer(), std::nullopt);
    EXPECT_THAT(platform.Calls(), IsEmpty());
}

// The end of outstanding requests

class AWatchfaceManagerWithOutstandingRequests : public AWatchfaceManager {
protected:
    AWatchfaceManagerWithOutstandingRequests()
    {
        platform.SetPortUp(kCapture, kCapturePort);
        manager.SetPreviewDoneCallback([this] {
            ++calls;
            usleep(1);  // a mark among the recorded calls
        });
        manager.RequestPreviewCapture("a");
        manager.RequestPreviewCapture("b");
        platform.Forget();
    }

    int calls = 0;
};

TEST_F(AWatchfaceManagerWithOutstandingRequests, goes_on_waiting_while_one_of_them_is_unfinished)
{
    manager.UpdatePreviewDone("a");
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(platform.Timeline(), IsEmpty());
    EXPECT_EQ(platform.NextTimer(), 1.0);
}

TEST_F(AWatchfaceManagerWithOutstandingRequests,
       calls_back_and_then_stops_the_timer_when_the_last_one_is_finished)
{
    manager.UpdatePreviewDone("b");
    manager.UpdatePreviewDone("a");
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E update preview done!!", "usleep 1", "timer stop"));
    EXPECT_EQ(platform.NextTimer(), std::nullopt);
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, forgets_a_name_that_was_sent_twice_at_once)
{
    manager.RequestPreviewCapture("a");
    manager.UpdatePreviewDone("a");
    manager.UpdatePreviewDone("b");
    EXPECT_EQ(calls, 1);
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, ignores_an_unknown_name)
{
    manager.UpdatePreviewDone("c");
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(platform.Timeline(), IsEmpty());
    manager.RequestPreviewCapture("d");
    EXPECT_THAT(platform.Infos(), ElementsAre("mCaptureProcessingWatchfaces[3]"));
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, keeps_the_callback_for_the_next_end)
{
    manager.UpdatePreviewDone("a");
    manager.UpdatePreviewDone("b");
    manager.RequestPreviewCapture("c");
    manager.UpdatePreviewDone("c");
    EXPECT_EQ(calls, 2);
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, ends_without_a_callback_as_well)
{
    manager.SetPreviewDoneCallback(nullptr);
    manager.UpdatePreviewDone("a");
    manager.UpdatePreviewDone("b");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E update preview done!!", "timer stop"));
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, lets_the_callback_empty_its_own_slot)
{
    const std::string captured(100, 'x');
    std::string seen;
    manager.SetPreviewDoneCallback([this, captured, &seen] {
        manager.SetPreviewDoneCallback(nullptr);
        seen = captured;
    });
    manager.UpdatePreviewDone("a");
    manager.UpdatePreviewDone("b");
    EXPECT_EQ(seen, captured);
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, gives_them_up_when_the_fallback_timer_runs_out)
{
    platform.Advance(0.99);
    EXPECT_EQ(calls, 0);
    platform.Advance(0.01);
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E update preview fallback timer expired!!", "usleep 1"));
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, gives_them_up_before_it_calls_back)
{
    manager.SetPreviewDoneCallback([this] { manager.RequestPreviewCapture("c"); });
    platform.Advance(1);
    EXPECT_THAT(platform.Infos(), ElementsAre("mCaptureProcessingWatchfaces[1]"));
    EXPECT_EQ(platform.NextTimer(), 0.5);
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, runs_the_fallback_timer_once)
{
    platform.Advance(10);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(platform.NextTimer(), std::nullopt);
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, ignores_what_is_finished_after_the_fallback_timer)
{
    platform.Advance(1);
    platform.Forget();
    manager.UpdatePreviewDone("a");
    manager.UpdatePreviewDone("b");
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, counts_anew_after_the_fallback_timer)
{
    platform.Advance(1);
    manager.RequestPreviewCapture("c");
    EXPECT_THAT(platform.Infos(), ElementsAre("mCaptureProcessingWatchfaces[1]"));
}

TEST_F(AWatchfaceManagerWithOutstandingRequests, gives_them_up_without_a_callback_as_well)
{
    manager.SetPreviewDoneCallback(nullptr);
    platform.Advance(1);
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E update preview fallback timer expired!!"));
}

TEST_F(AWatchfaceManager, ignores_a_finished_preview_while_none_is_outstanding)
{
    int calls = 0;
    manager.SetPreviewDoneCallback([&] { ++calls; });
    manager.UpdatePreviewDone("a");
    EXPECT_EQ(calls, 0);
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

// A preview that a peer supplies

TEST_F(AWatchfaceManager, takes_no_preview_without_a_name)
{
    manager.UpdatePreview("", "/icon.png");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName is empty!!"));
}

TEST_F(AWatchfaceManager, asks_for_a_preview_where_none_is_supplied)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.UpdatePreview("a", "");
    EXPECT_THAT(platform.Calls({"copy"}), IsEmpty());
    EXPECT_THAT(platform.SentTo(kCapture), ElementsAre(Field(&SentMessage::message, Message({
                                                                                        {"pkgName", "a"}
    }))));
}

TEST_F(AWatchfaceManager, copies_a_supplied_preview_and_asks_for_none)
{
    platform.SetPortUp(kCapture, kCapturePort);
    platform.WriteFile(platform.RW("watchlist/a/a.png"), "old");
    platform.WriteFile(platform.Root() + "/icon.png", "new");
    manager.UpdatePreview("a", platform.Root() + "/icon.png");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a.png")), "new");
    EXPECT_THAT(platform.Timeline(), ElementsAre("copy ROOT:icon.png -> RW:watchlist/a/a.png"));
}

TEST_F(AWatchfaceManager, asks_for_a_preview_when_the_supplied_one_cannot_be_copied)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager.UpdatePreview("a", platform.Root() + "/missing.png");
    EXPECT_THAT(platform.Errors(), ElementsAre("CommonUtilFile::Copy failed!!", "port is already exist"));
    EXPECT_THAT(platform.SentTo(kCapture), ElementsAre(Field(&SentMessage::message, Message({
                                                                                        {"pkgName", "a"}
    }))));
}
