// Launch requests: their data, those that are received and those that are sent.

#include <cstdlib>
#include <thread>

#include "contract-test.h"

namespace Contract {
namespace {

std::string Extra(app_control_h handle, const char* key)
{
    char* value = nullptr;
    if (app_control_get_extra_data(handle, key, &value) != APP_CONTROL_ERROR_NONE) return "(none)";
    std::string text = value;
    free(value);
    return text;
}

class ALaunchRequest : public ContractTest {
protected:
    void SetUp() override { ASSERT_EQ(app_control_create(&handle), APP_CONTROL_ERROR_NONE); }
    void TearDown() override { EXPECT_EQ(app_control_destroy(handle), APP_CONTROL_ERROR_NONE); }
    app_control_h handle = nullptr;
};

TEST_F(ALaunchRequest, keeps_extra_data)
{
    EXPECT_EQ(app_control_add_extra_data(handle, "Result", "OK"), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(Extra(handle, "Result"), "OK");
    EXPECT_EQ(app_control_add_extra_data(handle, "Result", "again"), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(Extra(handle, "Result"), "again");
}

TEST_F(ALaunchRequest, has_no_value_under_a_missing_key)
{
    char* value = const_cast<char*>("before");
    EXPECT_EQ(app_control_get_extra_data(handle, "operation", &value), APP_CONTROL_ERROR_KEY_NOT_FOUND);
    EXPECT_EQ(value, nullptr);
}

TEST_F(ALaunchRequest, is_cloned_with_its_data)
{
    app_control_add_extra_data(handle, "operation", "configuration");
    app_control_h clone = nullptr;
    ASSERT_EQ(app_control_clone(&clone, handle), APP_CONTROL_ERROR_NONE);
    app_control_add_extra_data(handle, "operation", "other");
    EXPECT_EQ(Extra(clone, "operation"), "configuration");
    EXPECT_EQ(app_control_destroy(clone), APP_CONTROL_ERROR_NONE);
}

TEST_F(ALaunchRequest, refuses_null)
{
    EXPECT_NE(app_control_create(nullptr), APP_CONTROL_ERROR_NONE);
    EXPECT_NE(app_control_clone(nullptr, handle), APP_CONTROL_ERROR_NONE);
    EXPECT_NE(app_control_destroy(nullptr), APP_CONTROL_ERROR_NONE);
    EXPECT_NE(app_control_set_app_id(handle, nullptr), APP_CONTROL_ERROR_NONE);
    EXPECT_NE(app_control_add_extra_data(handle, nullptr, "value"), APP_CONTROL_ERROR_NONE);
    EXPECT_NE(app_control_add_extra_data(handle, "key", nullptr), APP_CONTROL_ERROR_NONE);
}

TEST_F(ALaunchRequest, that_was_not_received_cannot_be_answered)
{
    EXPECT_NE(app_control_reply_to_launch_request(nullptr, handle, APP_CONTROL_RESULT_SUCCEEDED),
              APP_CONTROL_ERROR_NONE);
}

TEST_F(ALaunchRequest, without_an_application_is_not_sent)
{
    const auto ignore = [](app_control_h, app_control_h, app_control_result_e, void*) {};
    EXPECT_LT(app_control_send_launch_request(handle, ignore, nullptr), 0);
}

class AReceivedRequest : public ContractTest {
protected:
    void Answer(app_control_h request, app_control_result_e result, const char* text)
    {
        app_control_h reply = nullptr;
        ASSERT_EQ(app_control_create(&reply), APP_CONTROL_ERROR_NONE);
        app_control_add_extra_data(reply, "Result", text);
        code = app_control_reply_to_launch_request(reply, request, result);
        app_control_destroy(reply);
    }

    std::unique_ptr<Peer> home = harness->AsPeer(kHome);
    int code = -1;
    app_control_h held = nullptr;
};

TEST_F(AReceivedRequest, carries_the_callers_data)
{
    std::string operation, missing;
    harness->OnLaunchRequest([&](app_control_h request) {
        operation = Extra(request, "operation");
        missing = Extra(request, "retail-mode");
    });
    home->Launch({
        {"operation", "configuration"}
    });
    ASSERT_TRUE(harness->RunUntil([&] { return !operation.empty(); }));
    EXPECT_EQ(operation, "configuration");
    EXPECT_EQ(missing, "(none)");
}

TEST_F(AReceivedRequest, is_answered_with_a_result_and_data)
{
    harness->OnLaunchRequest(
        [&](app_control_h request) { Answer(request, APP_CONTROL_RESULT_SUCCEEDED, "OK"); });
    const auto answer = home->Launch({
        {"retail-mode", "init_watch"}
    });
    ASSERT_TRUE(harness->RunUntil([&] { return answer().has_value(); }));
    EXPECT_EQ(code, APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(answer()->result, APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(answer()->extra, (Message{
                                   {"Result", "OK"}
    }));
}

TEST_F(AReceivedRequest, that_nobody_answers_fails_without_data)
{
    harness->OnLaunchRequest([](app_control_h) {});
    const auto answer = home->Launch({
        {"operation", "configuration"}
    });
    ASSERT_TRUE(harness->RunUntil([&] { return answer().has_value(); }));
    EXPECT_EQ(answer()->result, APP_CONTROL_RESULT_FAILED);
    EXPECT_EQ(answer()->extra, Message{});
}

TEST_F(AReceivedRequest, stays_open_while_a_clone_exists)
{
    harness->OnLaunchRequest([&](app_control_h request) { app_control_clone(&held, request); });
    const auto answer = home->Launch({
        {"retail-mode", "init_watch"}
    });
    ASSERT_TRUE(harness->RunUntil([&] { return held != nullptr; }));
    harness->WaitTurn();
    EXPECT_FALSE(answer().has_value());

    EXPECT_EQ(Extra(held, "retail-mode"), "init_watch");
    Answer(held, APP_CONTROL_RESULT_SUCCEEDED, "OK");
    EXPECT_EQ(code, APP_CONTROL_ERROR_NONE);
    app_control_destroy(held);
    ASSERT_TRUE(harness->RunUntil([&] { return answer().has_value(); }));
    EXPECT_EQ(answer()->result, APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(answer()->extra, (Message{
                                   {"Result", "OK"}
    }));
}

TEST_F(AReceivedRequest, fails_when_its_clone_is_destroyed_unanswered)
{
    harness->OnLaunchRequest([&](app_control_h request) { app_control_clone(&held, request); });
    const auto answer = home->Launch({
        {"retail-mode", "init_watch"}
    });
    ASSERT_TRUE(harness->RunUntil([&] { return held != nullptr; }));
    app_control_destroy(held);
    ASSERT_TRUE(harness->RunUntil([&] { return answer().has_value(); }));
    EXPECT_EQ(answer()->result, APP_CONTROL_RESULT_FAILED);
    EXPECT_EQ(answer()->extra, Message{});
}

TEST_F(AReceivedRequest, is_answered_once_only)
{
    int second = 0;
    harness->OnLaunchRequest([&](app_control_h request) {
        Answer(request, APP_CONTROL_RESULT_FAILED, "first");
        second = app_control_reply_to_launch_request(nullptr, request, APP_CONTROL_RESULT_SUCCEEDED);
    });
    const auto answer = home->Launch({});
    ASSERT_TRUE(harness->RunUntil([&] { return answer().has_value(); }));
    EXPECT_NE(second, APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(answer()->result, APP_CONTROL_RESULT_FAILED);
    EXPECT_EQ(answer()->extra, (Message{
                                   {"Result", "first"}
    }));
}

TEST_F(AReceivedRequest, may_be_answered_without_data)
{
    harness->OnLaunchRequest([&](app_control_h request) {
        code = app_control_reply_to_launch_request(nullptr, request, APP_CONTROL_RESULT_SUCCEEDED);
    });
    const auto answer = home->Launch({});
    ASSERT_TRUE(harness->RunUntil([&] { return answer().has_value(); }));
    EXPECT_EQ(code, APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(answer()->result, APP_CONTROL_RESULT_SUCCEEDED);
}

TEST_F(AReceivedRequest, is_told_apart_from_the_next_one)
{
    std::vector<app_control_h> clones;
    harness->OnLaunchRequest([&](app_control_h request) {
        app_control_h clone = nullptr;
        app_control_clone(&clone, request);
        clones.push_back(clone);
    });
    const auto first = home->Launch({
        {"n", "1"}
    });
    ASSERT_TRUE(harness->RunUntil([&] { return clones.size() == 1; }));
    const auto second = home->Launch({
        {"n", "2"}
    });
    ASSERT_TRUE(harness->RunUntil([&] { return clones.size() == 2; }));
    Answer(clones[1], APP_CONTROL_RESULT_SUCCEEDED, "two");
    ASSERT_TRUE(harness->RunUntil([&] { return second().has_value(); }));
    EXPECT_EQ(second()->extra, (Message{
                                   {"Result", "two"}
    }));
    EXPECT_FALSE(first().has_value());
    for (const app_control_h clone : clones) app_control_destroy(clone);
    ASSERT_TRUE(harness->RunUntil([&] { return first().has_value(); }));
    EXPECT_EQ(first()->result, APP_CONTROL_RESULT_FAILED);
}

// What a launch callback saw.
struct Reply {
    int calls = 0;
    app_control_result_e result = APP_CONTROL_RESULT_FAILED;
    std::string text;
    std::thread::id thread;

    static void Take(app_control_h, app_control_h reply, app_control_result_e result, void* self)
    {
        auto* seen = static_cast<Reply*>(self);
        ++seen->calls;
        seen->result = result;
        seen->text = Extra(reply, "Result");
        seen->thread = std::this_thread::get_id();
    }
};

class ASentRequest : public ContractTest {
protected:
    int Send(const std::string& appId)
    {
        app_control_h request = nullptr;
        app_control_create(&request);
        app_control_set_app_id(request, appId.c_str());
        const int result = app_control_send_launch_request(request, Reply::Take, &reply);
        app_control_destroy(request);
        return result;
    }
    Reply reply;
};

TEST_F(ASentRequest, gets_its_answer_on_the_main_loop)
{
    const auto home = harness->AsPeer(kHome);
    home->AnswerLaunches({APP_CONTROL_RESULT_SUCCEEDED, {{"Result", "OK"}}});
    EXPECT_EQ(Send(kHome), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(reply.calls, 0);
    ASSERT_TRUE(harness->RunUntil([&] { return reply.calls > 0; }));
    harness->WaitTurn();
    EXPECT_EQ(reply.calls, 1);
    EXPECT_EQ(reply.result, APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(reply.text, "OK");
}

TEST_F(ASentRequest, gets_a_failed_answer_too)
{
    const auto home = harness->AsPeer(kHome);
    home->AnswerLaunches({APP_CONTROL_RESULT_FAILED, {}});
    EXPECT_EQ(Send(kHome), APP_CONTROL_ERROR_NONE);
    ASSERT_TRUE(harness->RunUntil([&] { return reply.calls > 0; }));
    EXPECT_EQ(reply.result, APP_CONTROL_RESULT_FAILED);
    EXPECT_EQ(reply.text, "(none)");
}

TEST_F(ASentRequest, from_another_thread_needs_no_turn_of_the_main_loop)
{
    const auto home = harness->AsPeer(kHome);
    home->AnswerLaunches({APP_CONTROL_RESULT_SUCCEEDED, {}});
    int result = -1;
    std::thread([&] { result = Send(kHome); }).join();
    EXPECT_EQ(result, APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(reply.calls, 0);
    ASSERT_TRUE(harness->RunUntil([&] { return reply.calls == 1; }));
    EXPECT_EQ(reply.thread, std::this_thread::get_id());
}

TEST_F(ASentRequest, to_a_program_that_cannot_be_started_says_so_and_is_never_answered)
{
    EXPECT_EQ(Send(harness->UnstartableApplication()), APP_CONTROL_ERROR_LAUNCH_FAILED);
    harness->WaitTurn();
    EXPECT_EQ(reply.calls, 0);
}

}  // namespace
}  // namespace Contract
