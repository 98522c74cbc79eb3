// Durations of applications, saved and loaded by hand.

#include <signal.h>

#include <chrono>

#include "a-watch.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr char kApp[] = "com.example.evaluation";

class AWatchThatIsEvaluated : public AWatch {};

}  // namespace

TEST_F(AWatchThatIsEvaluated, keeps_a_duration_for_each_face)
{
    const Result saved = Run({"evaluate", "save", "c1", "3 min 시간"});
    EXPECT_EQ(saved.status, 0) << saved.err;
    EXPECT_EQ(saved.out, "");
    EXPECT_EQ(Run({"evaluate", "save", kDigital, ""}).status, 0);
    EXPECT_EQ(Run({"evaluate", "load", kClassic}).out, "3 min 시간\n");
    EXPECT_EQ(Run({"evaluate", "load", "e1"}).out, "\n");
}

TEST_F(AWatchThatIsEvaluated, keeps_the_last_duration)
{
    Run({"evaluate", "save", "c1", "1"});
    Run({"evaluate", "save", "c1", "2"});
    EXPECT_EQ(Run({"evaluate", "load", "c1"}).out, "2\n");
}

TEST_F(AWatchThatIsEvaluated, keeps_durations_for_each_application)
{
    ASSERT_EQ(Run({"evaluate", "save", "c1", "1", "--as", kApp}).status, 0);
    ASSERT_EQ(Run({"evaluate", "save", "c1", "2"}).status, 0);
    EXPECT_EQ(Run({"evaluate", "load", "c1", "--as", std::string(kApp) + ":any port"}).out, "1\n");
    EXPECT_EQ(Run({"evaluate", "load", "c1"}).out, "2\n");
}

TEST_F(AWatchThatIsEvaluated, has_no_duration_that_nobody_saved)
{
    Run({"evaluate", "save", "c1", "1", "--as", kApp});
    const Result loaded = Run({"evaluate", "load", "c1"});
    EXPECT_EQ(loaded.status, 10);
    EXPECT_EQ(loaded.out, "");
    EXPECT_THAT(loaded.err, HasSubstr("wfctl evaluate save c1 DURATION"));
}

TEST_F(AWatchThatIsEvaluated, takes_a_whole_name_as_it_stands_and_of_others_only_those_of_faces)
{
    EXPECT_EQ(Run({"evaluate", "save", "com.example.gone", "1"}).status, 0);
    EXPECT_EQ(Run({"evaluate", "load", "com.example.gone"}).out, "1\n");
    EXPECT_EQ(Run({"evaluate", "save", "c11", "1"}).status, 10);
    EXPECT_EQ(Run({"evaluate", "load", "c11"}).status, 10);
}

TEST_F(AWatchThatIsEvaluated, keeps_no_more_than_there_is_room_for)
{
    ASSERT_EQ(Run({"evaluate", "save", "c1", "1"}).status, 0);
    const Result saved = Run({"evaluate", "save", "c1", std::string(20000, 'x'), "--json"});
    EXPECT_EQ(saved.status, 1);
    EXPECT_EQ(saved.AsJson()["bundle"]["evaluation-helper-ret"], "13");
    EXPECT_THAT(saved.err, HasSubstr("there is no room for more"));
    EXPECT_EQ(Run({"evaluate", "load", "c1"}).out, "1\n");
}

TEST_F(AWatchThatIsEvaluated, prints_replies_as_json)
{
    const Json saved = Run({"evaluate", "save", "c1", "350", "--json"}).AsJson();
    Json bundle = {
        {"evaluation-helper-op",             "evaluation-helper-op-save-duration"},
        {"evaluation-helper-watchface-name", kClassic                            },
        {"evaluation-helper-data-duration",  "350"                               },
        {"evaluation-helper-ret",            "0"                                 }
    };
    EXPECT_EQ(saved, Json::object({
                         {"from",   kService                },
                         {"port",   "evaluation-helper-port"},
                         {"bundle", bundle                  }
    }));
    bundle["evaluation-helper-op"] = "evaluation-helper-op-load-duration";
    EXPECT_EQ(Run({"evaluate", "load", "c1", "--json"}).AsJson()["bundle"], bundle);
}

TEST_F(AWatchThatIsEvaluated, needs_a_name_and_to_save_a_duration)
{
    EXPECT_EQ(Run({"evaluate", "save", "c1"}).status, 2);
    EXPECT_EQ(Run({"evaluate", "load"}).status, 2);
    EXPECT_EQ(Run({"evaluate", "load", "c1", "350"}).status, 2);
    EXPECT_EQ(Run({"evaluate", "save", "c1", "350", "--as", "not an id"}).status, 2);
    EXPECT_THAT(Run({"pref", "list", kService}).out, testing::Not(HasSubstr("evaluation")));
}

TEST_F(AWatchThatIsEvaluated, does_not_wait_for_an_answer_that_cannot_come)
{
    // The answer goes to an open port, and whoever is the application now has none.
    const auto listener = Listen({"--as", std::string(kApp) + ":port"});
    const Result saved = Run({"evaluate", "save", "c1", "350", "--as", kApp});
    EXPECT_EQ(saved.status, 1);
    EXPECT_THAT(saved.err, HasSubstr(kApp));
}

TEST_F(AWatchThatIsEvaluated, waits_no_longer_than_it_was_told_to)
{
    const pid_t service = Run({"status", "--json"}).AsJson()["service"]["pid"];
    kill(service, SIGSTOP);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Run({"evaluate", "load", "c1", "--timeout", "0.3"}).status, 3);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
    kill(service, SIGCONT);
}

TEST_F(AWatchThatIsEvaluated, is_one_that_is_up)
{
    EXPECT_EQ(Wfctl({"evaluate", "load", "c1"}).status, 8);
}

TEST_F(AWatch, says_at_once_that_a_listener_has_no_port_for_the_answer)
{
    const auto listener = Listen({"--as", kEditor});
    const Result saved = Run({"evaluate", "save", "c1", "350"});
    EXPECT_EQ(saved.status, 1);
    EXPECT_THAT(saved.err,
                HasSubstr("pid " + std::to_string(listener->Pid()) + ") and has no untrusted port"));
}

TEST_F(AWatch, is_answered_through_a_listener_of_the_kind)
{
    const auto listener = Listen({"--as", std::string(kEditor) + ":mine", "--untrusted"});
    EXPECT_EQ(Run({"evaluate", "save", "c1", "350"}).status, 0);
    EXPECT_EQ(Run({"evaluate", "load", "c1"}).out, "350\n");
    EXPECT_THAT(Run({"bg", "save"}).err, HasSubstr("has no trusted port"));
}
