// What launch requests ask the application for, and the reset in retail mode that is answered later.

#include "an-application.h"

using MemoryPlatform::Message;
using MemoryPlatform::StoreValue;
using MemoryPlatform::Strings;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kRetailMode[] = "db/retailmode/enabled";
constexpr char kAbsent[] = "log I app_control_get_extra_data returns -126(ffffff82)";
const Message kReset = {
    {"retail-mode", "init_watch"}
};

class ALaunchRequest : public AnApplication {
protected:
    ALaunchRequest()
    {
        ShipFaces();
        StartQuietly();
    }
};

class ARetailReset : public ALaunchRequest {
protected:
    ARetailReset() { SetRetailMode(1); }

    void SetRetailMode(const StoreValue& value)
    {
        platform.SetKey(kRetailMode, value);
        platform.RunUntilIdle();
    }

    void FinishBoth()
    {
        Finish(kFirst);
        Finish(kSecond);
    }
};

}  // namespace

// Types and operations

TEST_F(ALaunchRequest, without_anything_known_does_nothing)
{
    Ask({
        {"wfs/req/type/", "ttrace_enable"},
        {"Operation",     "configuration"},
        {"retail_mode",   "init_watch"   }
    });
    EXPECT_THAT(platform.Timeline(), ElementsAre(kAbsent, kAbsent, kAbsent));
}

TEST_F(ALaunchRequest, is_answered_as_failed_when_it_is_not_held)
{
    const auto request = Ask({
        {"operation", "configuration"}
    });
    EXPECT_TRUE(request->IsAnswered());
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_FAILED);
    EXPECT_THAT(request->ReplyExtra(), IsEmpty());
}

TEST_F(ALaunchRequest, switches_the_trace_on_and_off)
{
    Ask({
        {"wfs/req/type", "ttrace_enable"}
    });
    EXPECT_TRUE(platform.TraceEnabled());
    Ask({
        {"wfs/req/type", "ttrace_disable"}
    });
    EXPECT_FALSE(platform.TraceEnabled());
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("ttrace true", kAbsent, kAbsent, "ttrace false", kAbsent, kAbsent));
}

TEST_F(ALaunchRequest, ignores_other_types)
{
    for (const char* type : {"", "ttrace", "TTRACE_ENABLE", "ttrace_enable ", "wfs/type/log_query2"}) {
        Ask({
            {"wfs/req/type", type}
        });
    }
    EXPECT_THAT(platform.Calls(), IsEmpty());
    EXPECT_THAT(platform.Errors(), IsEmpty());
}

TEST_F(ALaunchRequest, has_the_usage_of_complications_reported)
{
    Ask({
        {"wfs/req/type", "wfs/type/log_query"}
    });
    EXPECT_THAT(platform.Calls({"inner"}), ElementsAre("inner SendSurveyLogs"));
    EXPECT_FALSE(platform.TraceEnabled());
}

TEST_F(ALaunchRequest, applies_the_products_configuration)
{
    Ask({
        {"operation", "configuration"}
    });
    EXPECT_THAT(platform.Timeline(), ElementsAre(kAbsent, "log I operation[configuration]",
                                                 "log E received watchface configuration operation!!",
                                                 "inner ApplyWatchfaceConfiguration", kAbsent));
    ASSERT_EQ(innerCalls.Managers().size(), 1U);
    EXPECT_NE(innerCalls.Managers()[0], nullptr);
}

TEST_F(ALaunchRequest, names_other_operations_and_ignores_them)
{
    Ask({
        {"operation", "reconfiguration"}
    });
    EXPECT_THAT(platform.Timeline(), ElementsAre(kAbsent, "log I operation[reconfiguration]", kAbsent));
}

TEST_F(ALaunchRequest, may_ask_for_several_things_which_are_done_in_this_order)
{
    Ask({
        {"retail-mode",  "other"        },
        {"operation",    "configuration"},
        {"wfs/req/type", "ttrace_enable"}
    });
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("ttrace true", "log I operation[configuration]",
                            "log E received watchface configuration operation!!",
                            "inner ApplyWatchfaceConfiguration", "log I retail-mode[other][0]"));
}

TEST_F(ALaunchRequest, does_without_the_data_that_cannot_be_read)
{
    const Message all = {
        {"wfs/req/type", "ttrace_enable"},
        {"operation",    "configuration"},
        {"retail-mode",  "other"        }
    };
    for (int use = 1; use <= 3; ++use) {
        platform.Forget();
        platform.Fail("app_control_get_extra_data", {.use = use});
        Ask(all);
        Strings expected = {"ttrace true", "log I operation[configuration]",
                            "log E received watchface configuration operation!!",
                            "inner ApplyWatchfaceConfiguration", "log I retail-mode[other][0]"};
        const std::string failed = "log I app_control_get_extra_data returns -5(fffffffb)";
        if (use == 1) expected[0] = failed;
        if (use == 2) expected = {expected[0], failed, expected[4]};
        if (use == 3) expected[4] = failed;
        EXPECT_EQ(platform.Timeline(), expected) << use;
    }
}

TEST_F(ALaunchRequest, has_every_code_but_0_logged)
{
    platform.Fail("app_control_get_extra_data", {.code = 26});
    Ask({
        {"operation", "x"}
    });
    EXPECT_EQ(platform.Infos().front(), "app_control_get_extra_data returns 26(1a)");
}

TEST_F(ALaunchRequest, ignores_lists_of_texts)
{
    Ask({
        {"wfs/req/type", Strings{"ttrace_enable"}},
        {"retail-mode",  Strings{"init_watch"}   }
    });
    EXPECT_THAT(platform.Timeline(), ElementsAre(kAbsent, kAbsent, kAbsent));
}

TEST_F(ALaunchRequest, resets_nothing_outside_the_retail_mode)
{
    const auto request = Ask(kReset);
    EXPECT_THAT(platform.Timeline(), ElementsAre(kAbsent, kAbsent, "log I retail-mode[init_watch][0]"));
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_FAILED);
}

// The retail mode

TEST_F(ARetailReset, is_for_init_watch_alone)
{
    for (const char* mode : {"", "init", "INIT_WATCH", "init_watch "}) {
        Ask({
            {"retail-mode", mode}
        });
        EXPECT_EQ(platform.Infos().back(), std::string("retail-mode[") + mode + "][1]");
    }
    EXPECT_THAT(platform.Calls(), IsEmpty());
    EXPECT_THAT(platform.Errors(), IsEmpty());
}

TEST_F(ARetailReset, goes_on_in_this_order)
{
    Ask(kReset);
    EXPECT_THAT(platform.Timeline(), testing::IsSupersetOf({"log I retail-mode[init_watch][1]",
                                                            "log E retailmode init_watch received!!"}));
    const auto timeline = platform.Timeline();
    ASSERT_GT(timeline.size(), 6U);
    EXPECT_THAT(Strings(timeline.begin() + 2, timeline.begin() + 7),
                ElementsAre("log I retail-mode[init_watch][1]", "log E retailmode init_watch received!!",
                            "app_control_clone", "log E LIVE DEMO UNIT INIT APP START",
                            "recursive_rm RW:watchlist/"));
    EXPECT_EQ(timeline.back(), "log E LIVE DEMO UNIT INIT APP END");
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(ARetailReset, follows_the_retail_mode_which_is_on_with_any_number_but_0)
{
    for (const StoreValue& off : {StoreValue(0), StoreValue(true), StoreValue("1")}) {
        SetRetailMode(off);
        platform.Forget();
        Ask(kReset);
        EXPECT_THAT(platform.Infos(), Contains("retail-mode[init_watch][0]"));
        EXPECT_THAT(platform.Errors(), IsEmpty());
    }
    for (const int on : {1, 2, -1}) {
        SetRetailMode(on);
        platform.Forget();
        Ask(kReset);
        EXPECT_THAT(platform.Infos(), Contains("retail-mode[init_watch][1]"));
        EXPECT_EQ(platform.Errors().front(), "retailmode init_watch received!!");
    }
}

TEST_F(ARetailReset, is_answered_when_the_last_preview_is_there)
{
    const auto request = Ask(kReset);
    EXPECT_FALSE(request->IsAnswered());
    Finish(kFirst);
    EXPECT_FALSE(request->IsAnswered());
    Finish(kSecond);
    EXPECT_TRUE(request->IsAnswered());
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(request->ReplyExtra(), (Message{
                                         {"Result", "OK"}
    }));
}

TEST_F(ARetailReset, is_answered_when_the_previews_are_given_up)
{
    const auto request = Ask(kReset);
    Finish(kFirst);
    platform.Advance(0.999);
    EXPECT_FALSE(request->IsAnswered());
    platform.Advance(0.001);
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(request->ReplyExtra(), (Message{
                                         {"Result", "OK"}
    }));
}

TEST_F(ARetailReset, is_answered_in_this_order)
{
    Ask(kReset);
    Finish(kFirst);
    platform.Forget();
    Finish(kSecond);
    const auto timeline = platform.Timeline();
    const auto done = std::find(timeline.begin(), timeline.end(), "log E update preview done!!");
    const auto end = std::find(done, timeline.end(), "timer stop");
    ASSERT_NE(end, timeline.end());
    EXPECT_THAT(Strings(done + 1, end), ElementsAre("log E retailmode send reply!!", "app_control_create",
                                                    R"(launch reply 0 {"Result": "OK"})",
                                                    "app_control_destroy", "app_control_destroy"));
}

TEST_F(ARetailReset, is_answered_once)
{
    Ask(kReset);
    FinishBoth();
    app->OnUpdatePreviewDoneCallback();
    EXPECT_EQ(platform.Errors().back(), "mRetailmodeAppControl nullptr!!");
    platform.Forget();
    // Another batch of previews is nobody's reset.
    platform.SetLanguage("ko_KR");
    platform.RunUntilIdle();
    FinishBoth();
    EXPECT_THAT(platform.Errors(), Contains("update preview done!!"));
    EXPECT_THAT(platform.Errors(), Not(Contains("mRetailmodeAppControl nullptr!!")));
    EXPECT_THAT(platform.Calls({"launch reply"}), IsEmpty());
}

TEST_F(ARetailReset, can_follow_another)
{
    Ask(kReset);
    FinishBoth();
    const auto second = Ask(kReset);
    EXPECT_FALSE(second->IsAnswered());
    FinishBoth();
    EXPECT_EQ(second->Result(), APP_CONTROL_RESULT_SUCCEEDED);
}

TEST_F(ARetailReset, takes_the_place_of_one_that_is_held)
{
    const auto first = Ask(kReset);
    const auto second = Ask(kReset);
    EXPECT_THAT(platform.Calls({"app_control_destroy"}), IsEmpty());
    FinishBoth();
    EXPECT_EQ(second->Result(), APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_FALSE(first->IsAnswered());
    EXPECT_THAT(platform.Calls({"launch reply"}), ElementsAre(R"(launch reply 0 {"Result": "OK"})"));
}

TEST_F(ARetailReset, stays_unanswered_when_the_service_ends_first)
{
    const auto request = Ask(kReset);
    platform.Forget();
    app.reset();
    EXPECT_EQ(platform.Timeline().front(), "app_control_destroy");
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_FAILED);
    EXPECT_THAT(request->ReplyExtra(), IsEmpty());
}

TEST_F(ARetailReset, resets_also_when_the_request_cannot_be_held)
{
    platform.Fail("app_control_clone");
    const auto request = Ask(kReset);
    EXPECT_EQ(request->Result(), APP_CONTROL_RESULT_FAILED);
    EXPECT_THAT(platform.Infos(), Contains("app_control_clone returns -5(fffffffb)"));
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(ARetailReset, leaves_the_callback_in_its_place_where_no_request_is_held)
{
    platform.Fail("app_control_clone");
    Ask(kReset);
    for (int batch = 0; batch < 2; ++batch) {
        platform.Forget();
        FinishBoth();
        EXPECT_THAT(platform.Errors(), Contains("mRetailmodeAppControl nullptr!!"));
        EXPECT_THAT(platform.Errors(), Not(Contains("retailmode send reply!!")));
        EXPECT_THAT(platform.Calls({"app_control", "launch reply"}), IsEmpty());
        platform.SetLanguage(batch == 0 ? "ko_KR" : "en_GB");
        platform.RunUntilIdle();
    }
}

TEST_F(ARetailReset, tries_every_step_of_the_answer_whatever_became_of_the_others)
{
    struct Row {
        const char* function;
        int use;
        Strings logs;
    };
    const Row kRows[] = {
        {"app_control_create",
         1,                                        {"I app_control_create returns -5(fffffffb)", "I app_control_get_extra_data returns -22(ffffffea)",
          "I app_control_destroy(reply) returns -22(ffffffea)"}                                       },
        {"app_control_add_extra_data",          1, {"I app_control_get_extra_data returns -5(fffffffb)"}         },
        {"app_control_reply_to_launch_request",
         1,                                        {"I app_control_reply_to_launch_request returns -5(fffffffb)"}},
        {"app_control_destroy",                 1, {"I app_control_destroy(reply) returns -5(fffffffb)"}         },
        {"app_control_destroy",                 2, {"I app_control_destroy returns -5(fffffffb)"}                },
    };
    for (const Row& row : kRows) {
        const auto request = Ask(kReset);
        Finish(kFirst);
        platform.Forget();
        platform.Fail(row.function, {.use = row.use});
        Finish(kSecond);
        Strings logs = platform.LogTexts();
        std::erase_if(logs, [](const std::string& line) { return !line.starts_with("I app_control"); });
        EXPECT_EQ(logs, row.logs);
        EXPECT_EQ(platform.Calls({"launch reply"}).size(), 1U) << row.function;
        EXPECT_EQ(platform.Calls({"app_control_destroy"}).size(), 2U) << row.function;
        EXPECT_TRUE(request->IsAnswered()) << row.function;
        // The held request is forgotten and the callback gone, whatever failed.
        app->OnUpdatePreviewDoneCallback();
        EXPECT_EQ(platform.Errors().back(), "mRetailmodeAppControl nullptr!!") << row.function;
        platform.RunUntilIdle();
    }
}

TEST_F(ARetailReset, hands_the_products_hooks_one_manager)
{
    Ask({
        {"operation",   "configuration"},
        {"retail-mode", "init_watch"   }
    });
    ASSERT_EQ(innerCalls.Managers().size(), 2U);
    EXPECT_EQ(innerCalls.Managers()[0], innerCalls.Managers()[1]);
}
