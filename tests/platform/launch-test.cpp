// Launch requests between applications, and programs that the bus starts for them.

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>

#include "app-control.h"
#include "platform-fixture.h"

namespace PlatformTest {
namespace {

using testing::IsEmpty;

constexpr char kCapture[] = "com.corvane.watchface-capture";

struct Reply {
    int result = -99;
    Platform::LaunchData extra;
};

std::string Text(const Platform::LaunchData& extra, const std::string& key)
{
    const auto it = extra.find(key);
    const auto* text = it == extra.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : "(none)";
}

class ALaunchRequest : public AnApplication {
protected:
    ALaunchRequest() { Announce(); }

    // A peer asks us; what we do is `handler`.
    void Receive(std::function<void(app_control_h)> handler)
    {
        receiver.emplace(process->GetBus(), std::move(handler));
    }

    void Ask(const Platform::LaunchData& extra = {})
    {
        int code = 0;
        const auto call = Platform::NewLaunchCall(peer.Get(), kApp, "", extra, &code);
        Platform::CallDetached(peer.Get(), call.get(), UINT64_MAX, [this](sd_bus_message* answer) {
            std::string error;
            Reply got;
            if (sd_bus_message_read(answer, "i", &got.result) < 0) return;
            Platform::ReadLaunchData(answer, &got.extra, &error);
            reply = got;
        });
    }

    std::optional<Platform::LaunchReceiver> receiver;
    std::optional<Reply> reply;
    Peer peer{bus.Address()};
};

TEST_F(ALaunchRequest, brings_its_extra_data)
{
    std::string seen;
    Receive([&](app_control_h request) {
        char* value = nullptr;
        app_control_get_extra_data(request, "operation", &value);
        seen = value ? value : "(none)";
        free(value);
    });
    Ask({
        {"operation", std::string("configuration")}
    });
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(seen, "configuration");
}

TEST_F(ALaunchRequest, that_nobody_answers_has_failed_without_data)
{
    Receive([](app_control_h) {});
    Ask();
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_FAILED);
    EXPECT_THAT(reply->extra, IsEmpty());
}

TEST_F(ALaunchRequest, carries_the_answer_with_its_data)
{
    Receive([](app_control_h request) {
        app_control_h answer = nullptr;
        app_control_create(&answer);
        app_control_add_extra_data(answer, "Result", "OK");
        EXPECT_EQ(app_control_reply_to_launch_request(answer, request, APP_CONTROL_RESULT_SUCCEEDED), 0);
        EXPECT_NE(app_control_reply_to_launch_request(answer, request, APP_CONTROL_RESULT_SUCCEEDED), 0);
        app_control_destroy(answer);
    });
    Ask();
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(Text(reply->extra, "Result"), "OK");
}

TEST_F(ALaunchRequest, is_held_open_by_a_clone_however_long_it_takes)
{
    app_control_h held = nullptr;
    Receive([&](app_control_h request) { app_control_clone(&held, request); });
    Ask();
    ASSERT_TRUE(RunUntil([&] { return held != nullptr; }));
    Settle(peer);
    EXPECT_FALSE(reply.has_value());
    EXPECT_EQ(app_control_reply_to_launch_request(nullptr, held, APP_CONTROL_RESULT_SUCCEEDED), 0);
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_SUCCEEDED);
    app_control_destroy(held);
}

TEST_F(ALaunchRequest, has_failed_when_its_last_clone_is_destroyed)
{
    app_control_h held = nullptr;
    Receive([&](app_control_h request) { app_control_clone(&held, request); });
    Ask();
    ASSERT_TRUE(RunUntil([&] { return held != nullptr; }));
    app_control_destroy(held);
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_FAILED);
}

TEST_F(ALaunchRequest, whose_answer_cannot_be_sent_has_failed)
{
    int code = 0;
    Receive([&](app_control_h request) {
        app_control_h answer = nullptr;
        app_control_create(&answer);
        app_control_add_extra_data(answer, "Result", "\xff");  // no UTF-8: launch data has no form for it
        code = app_control_reply_to_launch_request(answer, request, APP_CONTROL_RESULT_SUCCEEDED);
        app_control_destroy(answer);
    });
    Ask();
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_NE(code, 0);
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_FAILED);
}

TEST_F(ALaunchRequest, that_is_refused_costs_ten_lines_a_second)
{
    Receive([](app_control_h) {});
    testing::internal::CaptureStderr();
    int refused = 0;
    for (int i = 0; i < 50; ++i) {
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_method_call(peer.Get(), &raw, kApp, Platform::kApplicationPath,
                                       Platform::kApplicationInterface, "Launch");
        sd_bus_message_append(raw, "sa{sv}", "", 1, "number", "i", 1);
        const Platform::MessagePtr call(raw);
        Platform::CallDetached(peer.Get(), raw, 0, [&](sd_bus_message* answer) {
            refused += sd_bus_message_get_error(answer) != nullptr;
        });
    }
    EXPECT_TRUE(RunUntil([&] { return refused == 50; }));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 10) << log;
}

class ALauncher : public AnApplication {
protected:
    ALauncher() { Announce(); }

    // Sends on a thread of its own, as the service does, while the loop runs.
    int SendFromThread(const std::string& app, const std::string& value = "")
    {
        std::optional<int> code;
        std::atomic<bool> done = false;
        std::thread worker([&] {
            app_control_h request = nullptr;
            app_control_create(&request);
            app_control_set_app_id(request, app.c_str());
            app_control_add_extra_data(request, "key", value.c_str());
            code = app_control_send_launch_request(request, OnReply, this);
            app_control_destroy(request);
            done = true;
        });
        RunUntil([&] { return done.load(); });
        worker.join();
        return *code;
    }

    static void OnReply(app_control_h, app_control_h answer, app_control_result_e result, void* self)
    {
        auto* launcher = static_cast<ALauncher*>(self);
        launcher->replyThread = std::this_thread::get_id();
        launcher->reply = Reply{result, answer->extra};
    }

    // An application that runs already.
    void RunCapture(int result)
    {
        capture.Own(kCapture);
        static const sd_bus_vtable kTable[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD(
                "Launch", "sa{sv}", "ia{sv}",
                [](sd_bus_message* m, void* self, sd_bus_error*) {
                    auto& launcher = *static_cast<ALauncher*>(self);
                    launcher.heldCall.reset(sd_bus_message_ref(m));
                    return launcher.captureWaits ? 1 : launcher.Answer();
                },
                SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END,
        };
        captureResult = result;
        sd_bus_add_object_vtable(capture.Get(), nullptr, Platform::kApplicationPath,
                                 Platform::kApplicationInterface, kTable, this);
    }
    int Answer()
    {
        return sd_bus_reply_method_return(heldCall.get(), "ia{sv}", captureResult, 1, "Result", "s", "OK");
    }

    Peer capture{bus.Address()};
    int captureResult = 0;
    bool captureWaits = false;      // answers only when the test says so
    Platform::MessagePtr heldCall;  // that the application got last
    std::optional<Reply> reply;
    std::thread::id replyThread;
};

TEST_F(ALauncher, gets_the_answer_on_the_main_loop_whatever_thread_sent_the_request)
{
    RunCapture(0);
    EXPECT_EQ(SendFromThread(kCapture), 0);
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(Text(reply->extra, "Result"), "OK");
    EXPECT_EQ(replyThread, std::this_thread::get_id());
}

TEST_F(ALauncher, is_told_that_the_application_said_no)
{
    RunCapture(-1);
    EXPECT_EQ(SendFromThread(kCapture), 0);
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_FAILED);
}

TEST_F(ALauncher, cannot_launch_a_program_that_the_bus_does_not_know)
{
    EXPECT_EQ(SendFromThread("com.example.nobody"), APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_FALSE(reply.has_value());
}

TEST_F(ALauncher, cannot_launch_a_program_that_ends_at_once)
{
    bus.AddActivation(kCapture, "/bin/false");
    EXPECT_EQ(SendFromThread(kCapture), APP_CONTROL_ERROR_LAUNCH_FAILED);
}

TEST_F(ALauncher, cannot_launch_a_program_that_is_not_there)
{
    bus.AddActivation(kCapture, "/nonexistent/program");
    EXPECT_EQ(SendFromThread(kCapture), APP_CONTROL_ERROR_LAUNCH_FAILED);
}

TEST_F(ALauncher, gives_up_after_three_seconds_with_another_error)
{
    // Its output is not the test's, which would seem to go on as long.
    bus.AddActivation(kCapture, "/bin/sh -c \"exec sleep 30 >/dev/null 2>&1\"");
    const auto begin = std::chrono::steady_clock::now();
    const int code = SendFromThread(kCapture);
    EXPECT_EQ(code, APP_CONTROL_ERROR_TIMED_OUT);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
}

TEST_F(ALauncher, gives_up_after_three_seconds_when_the_bus_does_not_answer)
{
    bus.Pause();
    const auto begin = std::chrono::steady_clock::now();
    const int code = SendFromThread(kCapture);
    const auto took = std::chrono::steady_clock::now() - begin;
    bus.Resume();
    EXPECT_EQ(code, APP_CONTROL_ERROR_TIMED_OUT);
    EXPECT_LT(took, std::chrono::seconds(5));
}

TEST_F(ALauncher, is_told_of_a_request_that_could_not_be_sent)
{
    RunCapture(0);
    EXPECT_EQ(SendFromThread(kCapture, "\xff"), 0);
    ASSERT_TRUE(RunUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_FAILED);
}

TEST_F(ALauncher, hears_nothing_after_it_cancelled)
{
    captureWaits = true;
    RunCapture(0);
    EXPECT_EQ(SendFromThread(kCapture), 0);
    ASSERT_TRUE(RunUntil([&] { return heldCall != nullptr; }));
    process->Launches().CancelAll();
    EXPECT_GE(Answer(), 0);
    Settle(capture);
    EXPECT_FALSE(reply.has_value());
}

TEST_F(ALauncher, needs_an_application_id)
{
    EXPECT_EQ(SendFromThread(""), APP_CONTROL_ERROR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace PlatformTest
