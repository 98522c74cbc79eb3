// The durations that other applications keep with the service.

#include <memory>

#include "on-a-platform.h"
#include "service-evaluation-helper.h"

using MemoryPlatform::Message;
using MemoryPlatform::StoreValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;
using testing::SizeIs;

namespace {

constexpr char kPort[] = "evaluation-helper-port";
constexpr char kApp[] = "com.example.evaluation";
constexpr char kAppPort[] = "evaluation::localport";
constexpr char kFace[] = "com.corvane.watchface-mirel-c1";
constexpr char kKey[] =
    "com.example.evaluation+com.corvane.watchface-mirel-c1+evaluation-helper-data-duration";

class AnEvaluationStore : public OnAPlatform {
protected:
    AnEvaluationStore() { platform.Forget(); }

    static Message Save(const std::string& duration, const std::string& face = kFace)
    {
        return {
            {"evaluation-helper-op",             "evaluation-helper-op-save-duration"},
            {"evaluation-helper-watchface-name", face                                },
            {"evaluation-helper-data-duration",  duration                            }
        };
    }
    static Message Load(const std::string& face = kFace)
    {
        return {
            {"evaluation-helper-op",             "evaluation-helper-op-load-duration"},
            {"evaluation-helper-watchface-name", face                                }
        };
    }
    static Message With(Message message, const Message& more)
    {
        for (const auto& [key, value] : more) message[key] = value;
        return message;
    }

    void Ask(const Message& request, const std::string& app = kApp, const std::string& port = kAppPort)
    {
        ASSERT_TRUE(platform.Deliver(kPort, app, request, port));
    }
    // The reply to a request; an empty one when there is none or more.
    Message ReplyTo(const Message& request, const std::string& app = kApp)
    {
        const std::size_t before = platform.Sent().size();
        Ask(request, app);
        const auto sent = platform.Sent();
        return sent.size() == before + 1 ? sent.back().message : Message();
    }

    std::unique_ptr<WatchfaceService::EvaluationHelper> store =
        std::make_unique<WatchfaceService::EvaluationHelper>();
};

}  // namespace

// The object

TEST_F(AnEvaluationStore, opens_an_open_port_of_its_own_and_says_no_more_than_that_it_is_there)
{
    store.reset();
    platform.Forget();
    store = std::make_unique<WatchfaceService::EvaluationHelper>();
    EXPECT_THAT(platform.Timeline(), ElementsAre("port open evaluation-helper-port open", "log I "));
}

TEST_F(AnEvaluationStore, logs_before_it_gives_up_its_port)
{
    store.reset();
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I ", "port close evaluation-helper-port"));
}

// Saving

TEST_F(AnEvaluationStore, saves_and_then_answers)
{
    Ask(Save("350"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log I app[com.example.evaluation] op[evaluation-helper-op-save-duration]",
                            std::string("pref set ") + kKey + "=350",
                            R"(send-open com.example.evaluation evaluation::localport )"
                            R"({"evaluation-helper-data-duration": "350", )"
                            R"("evaluation-helper-op": "evaluation-helper-op-save-duration", )"
                            R"("evaluation-helper-ret": "0", )"
                            R"("evaluation-helper-watchface-name": "com.corvane.watchface-mirel-c1"})",
                            "log I watchface[com.example.evaluation] saved duration[350]"));
}

TEST_F(AnEvaluationStore, keeps_a_duration_as_it_came)
{
    for (const std::string duration : {"", " 3 min\n", "-1", "시간", "\xFF\xFE"}) {
        Ask(Save(duration));
        EXPECT_THAT(platform.Pref(kKey), Optional(StoreValue(duration)));
    }
}

TEST_F(AnEvaluationStore, keeps_the_last_duration)
{
    Ask(Save("1"));
    Ask(Save("2"));
    EXPECT_THAT(platform.Prefs(), ElementsAre(Pair(kKey, StoreValue("2"))));
}

TEST_F(AnEvaluationStore, saves_an_empty_duration_for_a_request_without_one)
{
    Message request = Save("");
    request.erase("evaluation-helper-data-duration");
    EXPECT_EQ(ReplyTo(request), With(request, {
                                                  {"evaluation-helper-ret", "0"}
    }));
    EXPECT_THAT(platform.Pref(kKey), Optional(StoreValue("")));
}

TEST_F(AnEvaluationStore, saves_an_empty_duration_for_a_list_of_them)
{
    const Message request =
        With(Save(""), {
                           {"evaluation-helper-data-duration", MemoryPlatform::Strings{"1", "2"}}
    });
    EXPECT_EQ(ReplyTo(request), With(request, {
                                                  {"evaluation-helper-ret", "0"}
    }));
    EXPECT_THAT(platform.Pref(kKey), Optional(StoreValue("")));
}

TEST_F(AnEvaluationStore, hands_on_the_code_of_a_store_that_does_not_take_it)
{
    platform.Fail("CommonUtilPref::Set", {.code = -2147483647 - 1});
    EXPECT_EQ(ReplyTo(Save("350")), With(Save("350"), {
                                                          {"evaluation-helper-ret", "-2147483648"}
    }));
    EXPECT_THAT(platform.Prefs(), IsEmpty());
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("I app[com.example.evaluation] op[evaluation-helper-op-save-duration]",
                            "I watchface[com.example.evaluation] saved duration[350]"));
}

// Loading

TEST_F(AnEvaluationStore, loads_and_then_answers)
{
    platform.SetPref(kKey, "350");
    Ask(Load());
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log I app[com.example.evaluation] op[evaluation-helper-op-load-duration]",
                            std::string("pref get ") + kKey,
                            R"(send-open com.example.evaluation evaluation::localport )"
                            R"({"evaluation-helper-data-duration": "350", )"
                            R"("evaluation-helper-op": "evaluation-helper-op-load-duration", )"
                            R"("evaluation-helper-ret": "0", )"
                            R"("evaluation-helper-watchface-name": "com.corvane.watchface-mirel-c1"})",
                            "log I watchface[com.example.evaluation] loaded duration[350]"));
}

TEST_F(AnEvaluationStore, loads_what_was_saved)
{
    Ask(Save("3 min"));
    EXPECT_EQ(ReplyTo(Load()), With(Load(), {
                                                {"evaluation-helper-ret",           "0"    },
                                                {"evaluation-helper-data-duration", "3 min"}
    }));
}

TEST_F(AnEvaluationStore, answers_a_load_before_any_save_with_the_code_of_the_store_and_an_empty_duration)
{
    platform.Fail("CommonUtilPref::Get", {.code = -42});
    EXPECT_EQ(ReplyTo(Load()),
              With(Load(), {
                               {"evaluation-helper-ret",           "-42"},
                               {"evaluation-helper-data-duration", ""   }
    }));
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("I app[com.example.evaluation] op[evaluation-helper-op-load-duration]",
                            "I watchface[com.example.evaluation] loaded duration[]"));
    EXPECT_THAT(platform.Prefs(), IsEmpty());
}

TEST_F(AnEvaluationStore, puts_what_it_loads_in_place_of_a_duration_in_the_request)
{
    platform.SetPref(kKey, "350");
    const Message request = With(Load(), {
                                             {"evaluation-helper-data-duration", "7"}
    });
    EXPECT_EQ(ReplyTo(request),
              With(Load(), {
                               {"evaluation-helper-ret",           "0"  },
                               {"evaluation-helper-data-duration", "350"}
    }));
}

// Whose duration, and of what

TEST_F(AnEvaluationStore, keeps_the_durations_of_two_applications_apart)
{
    Ask(Save("1"), "com.example.one");
    Ask(Save("2"), "com.example.two");
    EXPECT_EQ(ReplyTo(Load(), "com.example.one").at("evaluation-helper-data-duration"),
              (MemoryPlatform::Message::mapped_type("1")));
    EXPECT_EQ(ReplyTo(Load(), "com.example.two").at("evaluation-helper-data-duration"),
              (MemoryPlatform::Message::mapped_type("2")));
    EXPECT_THAT(
        platform.Prefs(),
        ElementsAre(Pair("com.example.one+com.corvane.watchface-mirel-c1+evaluation-helper-data-duration",
                         StoreValue("1")),
                    Pair("com.example.two+com.corvane.watchface-mirel-c1+evaluation-helper-data-duration",
                         StoreValue("2"))));
}

TEST_F(AnEvaluationStore, keeps_the_durations_of_two_faces_apart)
{
    Ask(Save("1", "a"));
    Ask(Save("2", "b"));
    EXPECT_THAT(
        platform.Prefs(),
        ElementsAre(Pair("com.example.evaluation+a+evaluation-helper-data-duration", StoreValue("1")),
                    Pair("com.example.evaluation+b+evaluation-helper-data-duration", StoreValue("2"))));
}

TEST_F(AnEvaluationStore, has_one_duration_of_an_application_for_no_face)
{
    Message request = Save("350");
    request.erase("evaluation-helper-watchface-name");
    EXPECT_EQ(ReplyTo(request), With(request, {
                                                  {"evaluation-helper-ret", "0"}
    }));
    EXPECT_THAT(platform.Prefs(), ElementsAre(Pair("com.example.evaluation++evaluation-helper-data-duration",
                                                   StoreValue("350"))));
    Message load = Load();
    load.erase("evaluation-helper-watchface-name");
    EXPECT_EQ(ReplyTo(load),
              With(load, {
                             {"evaluation-helper-ret",           "0"  },
                             {"evaluation-helper-data-duration", "350"}
    }));
}

// Replies

TEST_F(AnEvaluationStore, sends_back_all_that_a_request_holds)
{
    const Message more = {
        {"id",   "17"                             },
        {"list", MemoryPlatform::Strings{"a", "b"}}
    };
    EXPECT_EQ(ReplyTo(With(Save("1"), more)),
              With(With(Save("1"), more), {
                                              {"evaluation-helper-ret", "0"}
    }));
    EXPECT_EQ(ReplyTo(With(Load(), more)),
              With(With(Load(), more),
                   {
                       {"evaluation-helper-ret",           "0"},
                       {"evaluation-helper-data-duration", "1"}
    }));
}

TEST_F(AnEvaluationStore, puts_its_result_in_place_of_one_in_the_request)
{
    const Message forged = {
        {"evaluation-helper-ret", "77"}
    };
    EXPECT_EQ(ReplyTo(With(Save("1"), forged)), With(Save("1"), {
                                                                    {"evaluation-helper-ret", "0"}
    }));
    EXPECT_EQ(ReplyTo(With(Load(), forged)),
              With(Save("1"), {
                                  {"evaluation-helper-op",  Load().at("evaluation-helper-op")},
                                  {"evaluation-helper-ret", "0"                              }
    }));
}

TEST_F(AnEvaluationStore, leaves_the_request_as_it_is)
{
    const std::unique_ptr<bundle, void (*)(bundle*)> request(MemoryPlatform::NewBundle(Save("1")),
                                                             [](bundle* b) { bundle_free(b); });
    store->OnIPCMessageReceived(1, kApp, kAppPort, false, request.get());
    EXPECT_EQ(MemoryPlatform::ContentOf(request.get()), Save("1"));
}

TEST_F(AnEvaluationStore, answers_from_its_own_port_to_the_open_port_that_asked)
{
    Ask(Save("1"), kApp, "first");
    Ask(Load(), "com.example.other", "second");
    const auto sent = platform.Sent();
    ASSERT_THAT(sent, SizeIs(2));
    EXPECT_EQ(sent[0].appId, kApp);
    EXPECT_EQ(sent[0].port, "first");
    EXPECT_EQ(sent[1].appId, "com.example.other");
    EXPECT_EQ(sent[1].port, "second");
    for (const auto& reply : sent) {
        EXPECT_EQ(reply.senderPort, kPort);
        EXPECT_FALSE(reply.trusted);
    }
}

TEST_F(AnEvaluationStore, does_not_mind_when_its_answer_cannot_be_sent)
{
    platform.Fail("SendMessage", {.times = 2});
    Ask(Save("1"));
    Ask(Load());
    EXPECT_THAT(platform.Pref(kKey), Optional(StoreValue("1")));
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("I app[com.example.evaluation] op[evaluation-helper-op-save-duration]",
                            "I watchface[com.example.evaluation] saved duration[1]",
                            "I app[com.example.evaluation] op[evaluation-helper-op-load-duration]",
                            "I watchface[com.example.evaluation] loaded duration[1]"));
}

TEST_F(AnEvaluationStore, saves_also_when_no_answer_can_be_made)
{
    platform.Fail("bundle_dup", {.times = 2});
    Ask(Save("1"));
    Ask(Load());
    EXPECT_THAT(platform.Pref(kKey), Optional(StoreValue("1")));
    EXPECT_THAT(platform.Sent(), IsEmpty());
}

// What it does not answer

TEST_F(AnEvaluationStore, only_logs_a_message_that_is_none)
{
    ASSERT_TRUE(platform.DeliverNothing(kPort, kApp));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E message is nullptr"));
}

TEST_F(AnEvaluationStore, looks_at_the_message_before_its_sender)
{
    store->OnIPCMessageReceived(1, "", "", false, nullptr);
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E message is nullptr"));
}

TEST_F(AnEvaluationStore, only_logs_a_request_without_an_application)
{
    Ask(Save("1"), "", kAppPort);
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E remoteAppId[] or remotePort[evaluation::localport] is empty!!"));
}

TEST_F(AnEvaluationStore, only_logs_a_request_without_a_port_to_answer_to)
{
    Ask(Save("1"), kApp, "");
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E remoteAppId[com.example.evaluation] or remotePort[] is empty!!"));
}

TEST_F(AnEvaluationStore, only_logs_an_operation_that_it_has_not)
{
    for (const std::string op : {"evaluation-helper-op-delete-duration",
                                 "evaluation-helper-op-save-duration ", "evaluation-helper-op", ""}) {
        platform.Forget();
        Ask(With(Save("1"), {
                                {"evaluation-helper-op", op}
        }));
        EXPECT_THAT(platform.Timeline(), ElementsAre("log I app[com.example.evaluation] op[" + op + "]",
                                                     "log E wrong op[" + op + "]"));
    }
}

TEST_F(AnEvaluationStore, takes_a_missing_operation_and_a_list_of_them_for_an_empty_one)
{
    Message without = Save("1");
    without.erase("evaluation-helper-op");
    const Message list =
        With(Save("1"),
             {
                 {"evaluation-helper-op", MemoryPlatform::Strings{"evaluation-helper-op-save-duration"}}
    });
    for (const Message& request : {without, list}) {
        platform.Forget();
        Ask(request);
        EXPECT_THAT(platform.Timeline(),
                    ElementsAre("log I app[com.example.evaluation] op[]", "log E wrong op[]"));
    }
}

TEST_F(AnEvaluationStore, does_not_care_whether_the_sender_is_trusted)
{
    const std::unique_ptr<bundle, void (*)(bundle*)> request(MemoryPlatform::NewBundle(Save("1")),
                                                             [](bundle* b) { bundle_free(b); });
    store->OnIPCMessageReceived(0, kApp, kAppPort, true, request.get());
    ASSERT_THAT(platform.Sent(), SizeIs(1));
    EXPECT_FALSE(platform.Sent()[0].trusted);
}
