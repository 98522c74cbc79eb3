// Messages and launch requests.

#include <signal.h>
#include <systemd/sd-bus.h>

#include <atomic>
#include <thread>

#include "a-watch.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr char kReceiver[] = "com.example.receiver:some port::localport";
constexpr char kSender[] = "com.example.sender:back";

// An application that answers every message with the same error.
class ARefuser {
public:
    ARefuser(const std::string& address, const char* error) : mError(error)
    {
        static const sd_bus_vtable kTable[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("SendTrusted", "sssa{sv}", "", Refuse, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END};
        sd_bus_new(&mBus);
        sd_bus_set_address(mBus, address.c_str());
        sd_bus_set_bus_client(mBus, true);
        sd_bus_start(mBus);
        sd_bus_add_object_vtable(mBus, nullptr, "/com/corvane/platform/port",
                                 "com.corvane.platform.MessagePort1", kTable, this);
        sd_bus_request_name(mBus, "com.example.refuser", 0);
        mThread = std::thread([this] {
            constexpr uint64_t kTurnUsec = 20'000;
            while (!mEnds) {
                if (sd_bus_process(mBus, nullptr) == 0) sd_bus_wait(mBus, kTurnUsec);
            }
        });
    }
    ~ARefuser()
    {
        mEnds = true;
        mThread.join();
        sd_bus_flush_close_unref(mBus);
    }
    ARefuser(const ARefuser&) = delete;
    ARefuser& operator=(const ARefuser&) = delete;

private:
    static int Refuse(sd_bus_message* message, void* self, sd_bus_error*)
    {
        return sd_bus_reply_method_errorf(message, static_cast<ARefuser*>(self)->mError, "no");
    }

    const char* mError;
    sd_bus* mBus = nullptr;
    std::atomic<bool> mEnds{false};
    std::thread mThread;
};

}  // namespace

TEST_F(AWatch, carries_messages_between_applications)
{
    const auto listener = Listen({"--as", kReceiver, "--count", "1"});
    EXPECT_EQ(Run({"send", "--as", kSender, kReceiver, "type=a", "list=[x,y\\,z]", "text=\\[1]"}).status, 0);
    EXPECT_EQ(listener->NextLine(), R"({"from": "com.example.sender", "port": "back", "bundle": )"
                                    R"({"list": ["x", "y,z"], "text": "[1]", "type": "a"}})");
    EXPECT_EQ(listener->AwaitEnd(), 0);
}

TEST_F(AWatch, carries_bytes_that_are_no_text)
{
    const auto listener = Listen({"--as", kReceiver, "--count", "1"});
    const std::string path = Holding("bytes", "\xff\xfe");
    EXPECT_EQ(Run({"send", "--as", kSender, kReceiver, "file=@" + path}).status, 0);
    const Json message = Json::parse(listener->NextLine().value_or("null"));
    EXPECT_EQ(message["bundle"]["file"], Json::parse(R"({"base64": "//4="})"));
}

TEST_F(AWatch, carries_messages_of_megabytes_and_no_more_than_eight)
{
    const auto listener = Listen({"--as", kReceiver, "--count", "1"});
    const std::string text(std::size_t{5} << 20, 'x');
    const auto sender = Start({"send", "--as", kSender, kReceiver, "file=@" + Holding("large", text)});
    EXPECT_EQ(Json::parse(listener->NextLine().value_or("null"))["bundle"]["file"], text);
    EXPECT_EQ(sender->AwaitEnd(), 0);
    const std::string tooMuch(std::size_t{9} << 20, 'x');
    const Result refused = Run({"send", "--as", kSender, kReceiver, "file=@" + Holding("huge", tooMuch)});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("8 MiB"));
}

TEST_F(AWatch, keeps_trusted_and_untrusted_ports_apart)
{
    const auto listener = Listen({"--as", kReceiver, "--untrusted", "--count", "1"});
    EXPECT_EQ(Run({"send", "--as", kSender, kReceiver, "type=a"}).status, 10);
    EXPECT_EQ(Run({"send", "--as", kSender, kReceiver, "type=b", "--untrusted"}).status, 0);
    EXPECT_EQ(Json::parse(listener->NextLine().value_or("null"))["bundle"]["type"], "b");
}

TEST_F(AWatch, brings_replies_back)
{
    const Result sent = Run({"send", "--as", kManager, kService, "type=watch-setting-created", "pkgid=x",
                             "--wait", "30", "--count", "1"});
    EXPECT_EQ(sent.status, 0) << sent.err;
    const Json reply = sent.AsJson();
    EXPECT_EQ(reply["from"], kService);
    EXPECT_EQ(reply["port"], "watchface-service::localport");
    EXPECT_EQ(reply["bundle"]["status"], "fail");
    EXPECT_EQ(reply["bundle"]["pkgid"], "x");
}

TEST_F(AWatch, gives_no_reply_to_whoever_gets_none)
{
    const Result sent =
        Run({"send", "--as", kManager, kService, "type=watch-req-watchlists", "--wait", "0.3"});
    EXPECT_EQ(sent.status, 3);
    EXPECT_THAT(sent.out, IsEmpty());
}

TEST_F(AWatch, says_why_a_message_was_not_taken)
{
    EXPECT_EQ(Run({"send", "--as", kSender, "com.example.nobody:p", "type=a"}).status, 10);
    EXPECT_EQ(Run({"send", "--as", kSender, std::string(kService) + ":nope", "type=a"}).status, 10);
    EXPECT_EQ(Run({"send", "--as", kSender, "com.example.nobody", "type=a"}).status, 2);
    EXPECT_EQ(Run({"send", "--as", "nobody", kService, "type=a"}).status, 2);
}

TEST_F(AWatch, says_when_a_sender_is_not_trusted)
{
    const ARefuser refuser(mEnvironment["DBUS_SESSION_BUS_ADDRESS"], "com.corvane.platform.Error.NotTrusted");
    const Result sent = Run({"send", "--as", kSender, "com.example.refuser:p", "type=a"});
    EXPECT_EQ(sent.status, 4);
    EXPECT_THAT(sent.err, HasSubstr("com.example.refuser:p"));
}

TEST_F(AWatch, says_when_a_receiver_has_too_much_to_do)
{
    const ARefuser refuser(mEnvironment["DBUS_SESSION_BUS_ADDRESS"], "com.corvane.platform.Error.QueueFull");
    EXPECT_EQ(Run({"send", "--as", kSender, "com.example.refuser:p", "type=a"}).status, 1);
}

TEST_F(AWatch, lets_nobody_speak_as_another_program)
{
    const Result sent = Run({"send", "--as", kService, std::string(kService), "type=a"});
    EXPECT_EQ(sent.status, 1);
    EXPECT_THAT(sent.err, HasSubstr("is another program"));
    EXPECT_EQ(Run({"listen", "--as", kService, "--timeout", "1"}).status, 1);
}

TEST_F(AWatch, speaks_through_a_listener_that_is_the_application)
{
    const auto receiver = Listen({"--as", kReceiver, "--count", "1"});
    const auto listener = Listen({"--as", "com.example.sender:listener-port"});
    EXPECT_EQ(Run({"send", "--as", kSender, kReceiver, "type=a"}).status, 0);
    const Json message = Json::parse(receiver->NextLine().value_or("null"));
    EXPECT_EQ(message["from"], "com.example.sender");
    EXPECT_EQ(message["port"], "listener-port");
}

TEST_F(AWatch, shows_replies_at_the_listener_and_at_whoever_spoke_through_it)
{
    const auto listener = Listen({"--as", kManager, "--count", "1"});
    const Result sent = Run({"send", "--as", kManager, kService, "type=watch-setting-created", "pkgid=x",
                             "--wait", "30", "--count", "1"});
    EXPECT_EQ(sent.status, 0) << sent.err;
    EXPECT_EQ(sent.AsJson()["bundle"]["status"], "fail");
    EXPECT_EQ(Json::parse(listener->NextLine().value_or("null")), sent.AsJson());
    EXPECT_EQ(listener->AwaitEnd(), 0);
}

TEST_F(AWatch, says_through_a_listener_why_a_message_was_not_taken)
{
    const auto listener = Listen({"--as", kSender});
    EXPECT_EQ(Run({"send", "--as", kSender, "com.example.nobody:p", "type=a"}).status, 10);
    EXPECT_EQ(Run({"send", "--as", kSender, std::string(kService) + ":nope", "type=a"}).status, 10);
}

TEST_F(AWatch, asks_for_no_port_where_no_answer_comes)
{
    Run({"set", "c4"});
    const auto listener = Listen({"--as", std::string(kEditor) + ":mine", "--untrusted"});
    const Result prepared = Run({"world-clock", "prepare"});
    EXPECT_EQ(prepared.status, 0) << prepared.err;
    const Result updated = Run({"world-clock", "update", "city", "Asia/Seoul"});
    EXPECT_EQ(updated.status, 1);
    EXPECT_THAT(updated.err, HasSubstr("has no trusted port, where the answer would come"));
    EXPECT_THAT(Run({"pref", "list", kService}).out, testing::Not(HasSubstr("Seoul")));
}

TEST_F(AWatch, listens_once_an_application)
{
    const auto listener = Listen({"--as", kReceiver});
    EXPECT_EQ(Run({"listen", "--as", kReceiver, "--timeout", "1"}).status, 1);
}

TEST_F(AWatch, stops_listening_when_told_to)
{
    EXPECT_EQ(Run({"listen", "--as", kReceiver, "--timeout", "0.1"}).status, 3);
    EXPECT_EQ(Run({"listen", "--as", kReceiver, "--timeout", "0.1", "--count", "1"}).status, 3);
    const auto listener = Listen({"--as", kReceiver});
    listener->Signal(SIGINT);
    EXPECT_EQ(listener->AwaitEnd(), 130);
}

TEST_F(AWatch, stops_listening_when_it_goes_down)
{
    const auto listener = Listen({"--as", kReceiver});
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    EXPECT_EQ(listener->AwaitEnd(), 8);
}

TEST_F(AWatch, answers_launch_requests)
{
    const Result launched = Run({"launch", kService, "operation=x"});
    EXPECT_THAT(launched.AsJson(), testing::AnyOf(Json::parse(R"({"result": 0, "extra": {}})"),
                                                  Json::parse(R"({"result": -1, "extra": {}})")));
    EXPECT_EQ(launched.status, launched.AsJson()["result"] == 0 ? 0 : 1);
    EXPECT_EQ(Run({"launch", "com.example.nobody"}).status, 10);
    EXPECT_EQ(Run({"launch", "nobody"}).status, 2);
}

TEST_F(AWatch, waits_for_nothing_where_nothing_can_come_to)
{
    const Result sent =
        Run({"send", "--as", "com.corvane.worldclock-map", kService, "type=x", "--wait", "30"});
    EXPECT_EQ(sent.status, 2);
    EXPECT_THAT(sent.err, HasSubstr("which port of [com.corvane.worldclock-map]? say --as APP:PORT"));
}

TEST_F(AWatch, says_where_to_look_when_the_service_does_not_answer)
{
    const Result sent = Run({"send", "--as", "com.example.app:port", kService, "type=x", "--wait", "0.1"});
    EXPECT_EQ(sent.status, 3);
    EXPECT_THAT(sent.err, HasSubstr("nothing came back to [com.example.app:port] in time"));
    EXPECT_THAT(sent.err, HasSubstr("look for watchface-service in [" + mRoot + "/watch.log]"));
}
