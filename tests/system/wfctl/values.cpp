// Keys, preferences and settings.

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstring>

#include "a-watch.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char kNoUtf8[] = "\xff\xfe";

// A bus of one connection, which leaves the call unanswered that comes behind the announcement of a key.
class ABus {
public:
    explicit ABus(const std::string& path) : mListener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        EXPECT_EQ(bind(mListener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(mListener, 1), 0);
    }
    ~ABus()
    {
        sd_bus_message_unref(mHeld);
        sd_bus_flush_close_unref(mBus);
        close(mListener);
    }
    ABus(const ABus&) = delete;
    ABus& operator=(const ABus&) = delete;

    void Accept()
    {
        pollfd poller{mListener, POLLIN, 0};
        ASSERT_EQ(poll(&poller, 1, kPatienceMs), 1);
        const int client = accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        sd_id128_t id;
        sd_id128_randomize(&id);
        sd_bus_new(&mBus);
        sd_bus_set_fd(mBus, client, client);
        sd_bus_set_server(mBus, true, id);
        sd_bus_add_filter(mBus, nullptr, Take, this);
        ASSERT_GE(sd_bus_start(mBus), 0);
    }

    // The held call's member; empty when the connection ends before one comes.
    std::string AwaitCall()
    {
        while (!mHeld) {
            const int code = sd_bus_process(mBus, nullptr);
            if (code < 0 || (code == 0 && sd_bus_wait(mBus, kPatienceMs * 1000ULL) <= 0)) return {};
        }
        return sd_bus_message_get_member(mHeld);
    }

    void Answer()
    {
        sd_bus_reply_method_return(mHeld, "");
        sd_bus_flush(mBus);
    }

private:
    static constexpr int kPatienceMs = 40'000;

    static int Take(sd_bus_message* message, void* data, sd_bus_error*)
    {
        auto* self = static_cast<ABus*>(data);
        if (sd_bus_message_is_signal(message, nullptr, "Changed") > 0) self->mIsAnnounced = true;
        uint8_t type = 0;
        sd_bus_message_get_type(message, &type);
        if (type != SD_BUS_MESSAGE_METHOD_CALL) return 1;
        if (self->mIsAnnounced && !self->mHeld)
            self->mHeld = sd_bus_message_ref(message);
        else if (sd_bus_message_is_method_call(message, nullptr, "Hello") > 0)
            sd_bus_reply_method_return(message, "s", ":1.1");
        else
            sd_bus_reply_method_return(message, "");
        return 1;
    }

    const int mListener;
    sd_bus* mBus = nullptr;
    sd_bus_message* mHeld = nullptr;
    bool mIsAnnounced = false;
};

// Whether the process sleeps; one that has ended does not.
bool Sleeps(pid_t pid)
{
    const std::string stat = ContentsOf("/proc/" + std::to_string(pid) + "/stat");
    const auto close = stat.rfind(") ");
    return close != std::string::npos && stat[close + 2] == 'S';
}

}  // namespace

TEST_F(AFolder, has_keys_whose_change_the_bus_has_before_the_writer_leaves)
{
    const Arguments kWriters[] = {
        {WFCTL, "key", "set", "a",         "1"},
        {WFCTL,     "key",      "unset",  "a"},
    };
    for (const Arguments& writer : kWriters) {
        const std::string path = Path() + "/" + writer[2];
        ABus bus(path);
        Program wfctl(writer, {
                                  {"DBUS_STARTER_ADDRESS",     ""                 },
                                  {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path},
                                  {"WATCH_ROOT",               Path()             }
        });
        bus.Accept();
        ASSERT_EQ(bus.AwaitCall(), "GetId") << writer[2];
        EXPECT_TRUE(Eventually([&] { return Sleeps(wfctl.Pid()) || !IsRunning(wfctl.Pid()); }));
        EXPECT_TRUE(IsRunning(wfctl.Pid())) << writer[2];
        bus.Answer();
        EXPECT_EQ(wfctl.AwaitEnd(), 0) << writer[2];
    }
}

TEST_F(AWatch, keeps_keys_with_their_types)
{
    Run({"key", "set", "flag", "true"});
    Run({"key", "set", "number", "-5"});
    Run({"key", "set", "text", "it's"});
    Run({"key", "set", "digits", "12", "--type", "string"});
    EXPECT_EQ(Run({"key", "get", "flag"}).out, "true\n");
    EXPECT_EQ(Run({"key", "list"}).out, "digits=12\nflag=true\nnumber=-5\ntext=it's\n");
    EXPECT_EQ(Run({"key", "list", "--json"}).AsJson(),
              Json::parse(R"({"digits": "12", "flag": true, "number": -5, "text": "it's"})"));
}

TEST_F(AWatch, keeps_the_type_of_a_key_that_is_set_again)
{
    Run({"key", "set", "number", "1"});
    const Result refused = Run({"key", "set", "number", "one"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.err, HasSubstr("--type"));
    EXPECT_EQ(Run({"key", "get", "number"}).out, "1\n");
    EXPECT_EQ(Run({"key", "set", "number", "one", "--type", "string"}).status, 0);
    EXPECT_EQ(Run({"key", "get", "number", "--json"}).out, "\"one\"\n");
}

TEST_F(AWatch, has_no_key_that_was_unset)
{
    Run({"key", "set", "a", "1"});
    EXPECT_EQ(Run({"key", "unset", "a"}).status, 0);
    EXPECT_EQ(Run({"key", "get", "a"}).status, 10);
    EXPECT_EQ(Run({"key", "unset", "a"}).status, 10);
}

TEST_F(AWatch, unsets_once_what_is_named_twice)
{
    Run({"key", "set", "a/b", "1"});
    EXPECT_EQ(Run({"key", "unset", "a/b", "a/b", "--json"}).out, "{\"a/b\": null}\n");
    EXPECT_EQ(Run({"key", "get", "a/b"}).status, 10);
    Run({"pref", "set", kService, "a", "1"});
    EXPECT_EQ(Run({"pref", "unset", kService, "a", "a"}).status, 0);
}

TEST_F(AWatch, names_what_is_no_text_in_json_too)
{
    Run({"pref", "set", "com.example.app", kNoUtf8, "1"});
    EXPECT_EQ(Run({"pref", "list", "com.example.app", "--json"}).out, "{\"base64://4=\": 1}\n");
    const Result unset = Run({"pref", "unset", "com.example.app", kNoUtf8, "--json"});
    EXPECT_EQ(unset.status, 0) << unset.err;
    EXPECT_EQ(unset.out, "{\"base64://4=\": null}\n");
}

TEST_F(AWatch, keeps_no_key_of_which_nobody_can_hear)
{
    EXPECT_EQ(Run({"key", "set", kNoUtf8, "1"}).status, 2);
    EXPECT_EQ(Run({"key", "list"}).out, "");
}

TEST_F(AWatch, knows_an_application_by_its_folder)
{
    const std::string near = std::string(kService).substr(0, sizeof kService - 2) + "x";
    EXPECT_THAT(Run({"pref", "set", near, "k", "1"}).err, HasSubstr("there is no application"));
    EXPECT_EQ(Run({"pref", "set", near, "k", "1"}).err, "");
}

TEST_F(AWatch, does_not_doubt_a_key_that_is_stored)
{
    const char* const near = "db/system/languages";
    EXPECT_THAT(Run({"key", "watch", near, "--timeout", "0"}).err, HasSubstr("did you mean"));
    EXPECT_THAT(Run({"key", "set", near, "x"}).err, HasSubstr("did you mean"));
    EXPECT_THAT(Run({"key", "watch", near, "--timeout", "0"}).err, Not(HasSubstr("did you mean")));
    EXPECT_EQ(Run({"key", "set", near, "y"}).err, "");
}

TEST_F(AWatch, counts_what_came)
{
    EXPECT_THAT(Run({"key", "watch", "a", "--timeout", "0"}).err, HasSubstr("0 changes came"));
    EXPECT_THAT(Run({"listen", "--as", "com.example.a:p", "--count", "1", "--timeout", "0"}).err,
                HasSubstr("0 of 1 message came"));
}

TEST_F(AWatch, knows_which_key_is_meant)
{
    Run({"key", "set", "my/own-key", "1"});
    EXPECT_THAT(Run({"key", "get", "my/onw-key"}).err,
                HasSubstr("did you mean my/own-key? type: wfctl key list"));
}

TEST_F(AWatch, tells_of_keys_whenever_they_are_written)
{
    const auto watcher = Start({"key", "watch", "a", "b", "--count", "4", "--json"});
    ASSERT_THAT(watcher->NextErrorLine().value_or(""), StartsWith("watching"));
    Run({"key", "set", "a", "1"});
    Run({"key", "set", "a", "1"});
    Run({"key", "set", "other", "1"});
    Run({"key", "set", "b", "text"});
    Run({"key", "unset", "b"});
    EXPECT_EQ(watcher->NextLine(), R"({"key": "a", "value": 1})");
    EXPECT_EQ(watcher->NextLine(), R"({"key": "a", "value": 1})");
    // The value is the store's at the time of printing; it may be unset by then.
    EXPECT_THAT(watcher->NextLine().value_or(""), StartsWith(R"({"key": "b", "value": )"));
    EXPECT_EQ(watcher->NextLine(), R"({"key": "b", "value": null})");
    EXPECT_EQ(watcher->AwaitEnd(), 0);
}

TEST_F(AWatch, tells_of_nothing_in_time)
{
    EXPECT_EQ(Run({"key", "watch", "a", "--timeout", "0.1"}).status, 3);
}

TEST_F(AWatch, keeps_preferences_for_each_application)
{
    EXPECT_EQ(Run({"pref", "set", "com.example.app", "k", "1"}).status, 0);
    EXPECT_EQ(Run({"pref", "set", "com.example.other", "k", "x"}).status, 0);
    EXPECT_EQ(Run({"pref", "get", "com.example.app", "k"}).out, "1\n");
    EXPECT_EQ(Run({"pref", "list", "com.example.other"}).out, "k=x\n");
    EXPECT_EQ(Run({"pref", "unset", "com.example.app", "k"}).status, 0);
    EXPECT_EQ(Run({"pref", "get", "com.example.app", "k"}).status, 10);
    EXPECT_EQ(Run({"pref", "list", "com.example.nobody"}).out, "");
    EXPECT_EQ(Run({"pref", "get", "../../keys", "k"}).status, 2);
}

TEST_F(AWatch, takes_what_nobody_set_from_the_environment_that_it_was_brought_up_in)
{
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    ASSERT_EQ(RunProgram(
                  {
                      WFCTL, "up", "--root", mRoot
    },
                  {{"LC_ALL", "de_DE.UTF-8"}, {"TZ", "Europe/Berlin"}})
                  .status,
              0);
    EXPECT_EQ(Wfctl({"setting", "list", "--root", mRoot}).out,
              "language=de_DE\ncountry=de_DE\n24-hour=true\ntimezone=Europe/Berlin\n");
}

TEST_F(AWatch, keeps_settings)
{
    EXPECT_EQ(Run({"setting", "set", "language=en_GB", "24-hour=false"}).status, 0);
    EXPECT_EQ(Run({"setting", "set", "timezone", "Asia/Seoul"}).status, 0);
    EXPECT_EQ(Run({"setting", "get", "language"}).out, "en_GB\n");
    EXPECT_EQ(Run({"setting", "get", "24-hour", "--json"}).out, "false\n");
    EXPECT_EQ(Run({"setting", "get", "timezone"}).out, "Asia/Seoul\n");
    EXPECT_EQ(Run({"key", "get", "db/system/language"}).out, "en_GB\n");
}

TEST_F(AWatch, that_was_named_is_named_where_something_else_is_advised)
{
    EXPECT_THAT(Wfctl({"--root", mRoot, "setting", "set", "language=xx_YY"}).err,
                HasSubstr("To write it all the same: wfctl --root '" + mFolder));
    EXPECT_THAT(Wfctl({"--root", mRoot, "edit", "c1"}).err, HasSubstr("`wfctl --root '" + mFolder));
}

TEST_F(AWatch, writes_no_setting_when_one_of_them_is_wrong)
{
    EXPECT_EQ(Run({"setting", "set", "language=en_GB", "24-hour=perhaps"}).status, 2);
    EXPECT_EQ(Run({"setting", "set", "language=en_GB", "colour=red"}).status, 2);
    EXPECT_EQ(Run({"key", "list"}).out, "");
}

TEST_F(AWatch, tells_of_settings_by_their_names)
{
    const auto watcher = Start({"setting", "watch", "--count", "1"});
    ASSERT_THAT(watcher->NextErrorLine().value_or(""), StartsWith("watching"));
    Run({"setting", "set", "24-hour=true"});
    EXPECT_EQ(watcher->NextLine(), "24-hour=true");
    EXPECT_EQ(watcher->AwaitEnd(), 0);
}
