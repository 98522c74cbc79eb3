// Messages between applications: what is delivered, and what is refused although somebody sent it.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "platform-fixture.h"

namespace PlatformTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kNotTrusted[] = "com.corvane.platform.Error.NotTrusted";
constexpr char kNoSuchPort[] = "com.corvane.platform.Error.NoSuchPort";
constexpr char kInvalidBundle[] = "com.corvane.platform.Error.InvalidBundle";
constexpr char kQueueFull[] = "com.corvane.platform.Error.QueueFull";

class ATrustedPort : public AnApplication {
protected:
    ATrustedPort()
    {
        OpenPort();
        Announce();
    }

    // What the peer is answered to a message in the name of `claimed`.
    std::string AnswerTo(Peer& peer, const std::string& claimed, const std::string& port = kPort)
    {
        const std::size_t before = peer.Answers().size();
        peer.Send(claimed,
                  *Bundle({
                      {"type", "hello"}
        }),
                  port);
        if (!RunUntil([&] { return peer.Answers().size() > before; })) return "no answer";
        return peer.Answers().back();
    }

    // A call whose bundle is written by `append`.
    template <typename Append>
    std::string AnswerToBundle(Peer& peer, Append append)
    {
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_method_call(peer.Get(), &raw, kApp, Platform::kPortPath, Platform::kPortInterface,
                                       "SendTrusted");
        sd_bus_message_append(raw, "sss", kPort, kHome, "");
        append(raw);
        const std::size_t before = peer.Answers().size();
        peer.SendRaw(Platform::MessagePtr(raw));
        if (!RunUntil([&] { return peer.Answers().size() > before; })) return "no answer";
        return peer.Answers().back();
    }

    Peer home{bus.Address()};
};

TEST_F(ATrustedPort, takes_a_message_from_who_owns_the_name_it_gives)
{
    home.Own(kHome);
    EXPECT_EQ(AnswerTo(home, kHome), "");
    ASSERT_THAT(received, SizeIs(1));
    EXPECT_EQ(received[0].app, kHome);
    EXPECT_EQ(received[0].port, "reply::port");
    EXPECT_TRUE(received[0].trusted);
    EXPECT_EQ(received[0].Text("type"), "hello");
}

TEST_F(ATrustedPort, refuses_a_sender_whose_name_another_owns)
{
    home.Own(kHome);
    Peer forger(bus.Address());
    EXPECT_EQ(AnswerTo(forger, kHome), kNotTrusted);
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ATrustedPort, refuses_a_sender_whose_name_nobody_owns)
{
    EXPECT_EQ(AnswerTo(home, kHome), kNotTrusted);
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ATrustedPort, refuses_a_sender_that_gives_a_unique_name_or_none)
{
    EXPECT_EQ(AnswerTo(home, home.UniqueName()), kNotTrusted);
    EXPECT_EQ(AnswerTo(home, ""), kNotTrusted);
    EXPECT_EQ(AnswerTo(home, "no name"), kNotTrusted);
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ATrustedPort, takes_the_owner_of_the_moment_when_the_bus_routed_the_message)
{
    constexpr int kRounds = 500;
    for (int i = 0; i < kRounds; ++i) {
        home.OwnLater(kHome);
        home.Send(kHome, *Bundle({
                             {"type", "owned"}
        }));
        home.ReleaseLater(kHome);
        home.Send(kHome, *Bundle({
                             {"type", "not owned"}
        }));
        ASSERT_TRUE(RunUntil([&] { return home.Answers().size() >= 2u * (static_cast<unsigned>(i) + 1); }));
    }
    EXPECT_THAT(received, SizeIs(kRounds));
    for (const Received& message : received) EXPECT_EQ(message.Text("type"), "owned");
}

TEST_F(ATrustedPort, keeps_apart_owned_and_not_owned_in_one_burst)
{
    for (int i = 0; i < 30; ++i) {
        home.OwnLater(kHome);
        home.Send(kHome, *Bundle({
                             {"type", "owned"}
        }));
        home.ReleaseLater(kHome);
        home.Send(kHome, *Bundle({
                             {"type", "not owned"}
        }));
    }
    ASSERT_TRUE(RunUntil([&] { return home.Answers().size() == 60; }));
    EXPECT_THAT(received, SizeIs(30));
    for (const Received& message : received) EXPECT_EQ(message.Text("type"), "owned");
}

TEST_F(ATrustedPort, believes_no_owner_change_that_a_peer_forges)
{
    home.Own(kHome);
    ASSERT_EQ(AnswerTo(home, kHome), "");
    Peer forger(bus.Address());
    sd_bus_message* raw = nullptr;
    sd_bus_message_new_signal(forger.Get(), &raw, Platform::kDriverPath, Platform::kDriver,
                              "NameOwnerChanged");
    sd_bus_message_append(raw, "sss", kHome, home.UniqueName().c_str(), forger.UniqueName().c_str());
    sd_bus_message_set_destination(raw, kApp);
    const Platform::MessagePtr forged(raw);
    ASSERT_GE(sd_bus_send(forger.Get(), raw, nullptr), 0);
    EXPECT_EQ(AnswerTo(forger, kHome), kNotTrusted);
    EXPECT_EQ(AnswerTo(home, kHome), "");
    EXPECT_THAT(received, SizeIs(2));
}

TEST_F(ATrustedPort, hears_no_signal_that_a_peer_addresses_to_it_alone)
{
    int changes = 0;
    const auto watch = Platform::WatchKey(process->GetBus().Get(), "db/some/key", [&] { ++changes; });
    for (const bool addressed : {true, false}) {
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_signal(home.Get(), &raw, Platform::kKeysPath, Platform::kKeysInterface, "Changed");
        sd_bus_message_append(raw, "s", "db/some/key");
        if (addressed) sd_bus_message_set_destination(raw, kApp);
        const Platform::MessagePtr signal(raw);
        ASSERT_GE(sd_bus_send(home.Get(), raw, nullptr), 0);
    }
    Settle(home);
    EXPECT_EQ(changes, 1);
}

TEST_F(ATrustedPort, keeps_the_order_of_a_connections_messages)
{
    home.Own(kHome);
    home.Own("com.example.second");
    std::vector<std::string> sent;
    for (int i = 0; i < 20; ++i) {
        sent.push_back(std::to_string(i));
        home.Send(i % 2 ? kHome : "com.example.second", *Bundle({
                                                            {"type", sent.back()}
        }));
    }
    ASSERT_TRUE(RunUntil([&] { return received.size() == 20; }));
    std::vector<std::string> got;
    for (const Received& message : received) got.push_back(message.Text("type"));
    EXPECT_EQ(got, sent);
}

TEST_F(ATrustedPort, says_that_there_is_no_such_port)
{
    home.Own(kHome);
    EXPECT_EQ(AnswerTo(home, kHome, "another::port"), kNoSuchPort);
}

TEST_F(ATrustedPort, is_not_reached_as_an_untrusted_one)
{
    home.Own(kHome);
    home.Send(kHome,
              *Bundle({
                  {"type", "hello"}
    }),
              kPort, false);
    ASSERT_TRUE(RunUntil([&] { return !home.Answers().empty(); }));
    EXPECT_THAT(home.Answers(), ElementsAre(kNoSuchPort));
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ATrustedPort, takes_strings_and_bytes_and_arrays_of_both)
{
    home.Own(kHome);
    EXPECT_EQ(AnswerToBundle(home,
                             [](sd_bus_message* m) {
                                 sd_bus_message_append(m, "a{sv}", 4, "s", "s", "text", "as", "as", 2, "a",
                                                       "b", "ay", "ay", 2, 0xff, 0x41, "aay", "aay", 2, 1,
                                                       0x61, 2, 0x62, 0x63);
                             }),
              "");
    ASSERT_THAT(received, SizeIs(1));
    EXPECT_EQ(received[0].Text("s"), "text");
    EXPECT_EQ(received[0].Text("ay"), "\xff\x41");
    const auto array = [&](const char* key) {
        return std::get<Platform::StringArrayValue>(received[0].values.at(key)).strings;
    };
    EXPECT_THAT(array("as"), ElementsAre("a", "b"));
    EXPECT_THAT(array("aay"), ElementsAre("a", "bc"));
}

TEST_F(ATrustedPort, refuses_a_value_of_another_type)
{
    home.Own(kHome);
    EXPECT_EQ(
        AnswerToBundle(home, [](sd_bus_message* m) { sd_bus_message_append(m, "a{sv}", 1, "n", "i", 1); }),
        kInvalidBundle);
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ATrustedPort, refuses_a_key_that_comes_twice)
{
    home.Own(kHome);
    EXPECT_EQ(AnswerToBundle(home,
                             [](sd_bus_message* m) {
                                 sd_bus_message_append(m, "a{sv}", 2, "k", "s", "1", "k", "s", "2");
                             }),
              kInvalidBundle);
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ATrustedPort, refuses_bytes_with_a_NUL_inside)
{
    home.Own(kHome);
    EXPECT_EQ(AnswerToBundle(home,
                             [](sd_bus_message* m) {
                                 sd_bus_message_append(m, "a{sv}", 1, "k", "ay", 3, 0x61, 0, 0x62);
                             }),
              kInvalidBundle);
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ATrustedPort, takes_a_bundle_of_eight_megabytes_and_none_larger)
{
    home.Own(kHome);
    const auto send = [&](std::size_t size) {
        return AnswerToBundle(home, [&](sd_bus_message* m) {
            sd_bus_message_open_container(m, 'a', "{sv}");
            sd_bus_message_open_container(m, 'e', "sv");
            sd_bus_message_append(m, "s", "k");
            sd_bus_message_open_container(m, 'v', "ay");
            const std::string bytes(size, 'x');
            sd_bus_message_append_array(m, 'y', bytes.data(), bytes.size());
            for (int i = 0; i < 3; ++i) sd_bus_message_close_container(m);
        });
    };
    EXPECT_EQ(send(Platform::kMostBundleBytes - 1), "");
    EXPECT_EQ(send(Platform::kMostBundleBytes), kInvalidBundle);
    EXPECT_THAT(received, SizeIs(1));
}

TEST_F(ATrustedPort, refuses_more_strings_than_it_wants_to_hold)
{
    home.Own(kHome);
    const auto send = [&](std::size_t count) {
        return AnswerToBundle(home, [&](sd_bus_message* m) {
            sd_bus_message_open_container(m, 'a', "{sv}");
            sd_bus_message_open_container(m, 'e', "sv");
            sd_bus_message_append(m, "s", "k");
            sd_bus_message_open_container(m, 'v', "aay");
            sd_bus_message_open_container(m, 'a', "ay");
            for (std::size_t i = 0; i < count; ++i) sd_bus_message_append_array(m, 'y', nullptr, 0);
            for (int i = 0; i < 4; ++i) sd_bus_message_close_container(m);
        });
    };
    EXPECT_EQ(send(Platform::kMostBundleStrings - 1), "");
    EXPECT_EQ(send(Platform::kMostBundleStrings), kInvalidBundle);
    EXPECT_EQ(send(10 * Platform::kMostBundleStrings), kInvalidBundle);
    EXPECT_THAT(received, SizeIs(1));
}

TEST_F(ATrustedPort, logs_ten_lines_a_second_of_a_connection_whatever_it_calls_itself)
{
    testing::internal::CaptureStderr();
    for (int i = 0; i < 50; ++i) {
        home.Send("com.example.invented" + std::to_string(i), *Bundle({
                                                                  {"type", "x"}
        }));
    }
    EXPECT_TRUE(RunUntil([&] { return home.Answers().size() == 50; }));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 10) << log;
}

TEST_F(ATrustedPort, answers_a_refused_message_whatever_it_holds)
{
    std::string port;
    for (int i = 0; i < 100'000; ++i) port += "\u00e9";
    EXPECT_EQ(AnswerTo(home, kHome, port), kNoSuchPort);
    EXPECT_EQ(AnswerTo(home, kHome, "x" + port), kNoSuchPort);
}

// A connection that has not been seen: all its messages wait for its user.
class APortWithABurstOfAnUnknownSender : public ATrustedPort {
protected:
    static constexpr std::size_t kLarge = std::size_t{4} << 20;

    // Calls with a text of this size, all of them before the port looks at any.
    void Burst(Peer& peer, const std::string& name, std::size_t count, std::size_t size)
    {
        peer.Own(name);
        const auto message = Bundle({
            {"type", std::string(size, 'x')}
        });
        for (std::size_t i = 0; i < count; ++i) peer.Send(name, *message);
        peer.WaitUntilRouted();
    }

    auto AnswersOf(const Peer& peer, const std::string& answer)
    {
        return std::count(peer.Answers().begin(), peer.Answers().end(), answer);
    }
};

TEST_F(APortWithABurstOfAnUnknownSender, loses_none_of_thousands_of_messages)
{
    constexpr std::size_t kCount = 5000;
    home.Own(kHome);
    for (std::size_t i = 0; i < kCount; ++i) {
        int code = 0;
        // Nobody would say that it was lost.
        const auto message = Platform::NewPortMessage(home.Get(), kApp, kPort, true, kHome, "",
                                                      *Bundle({
                                                          {"type", std::to_string(i)}
        }),
                                                      false, &code);
        ASSERT_GE(sd_bus_send(home.Get(), message.get(), nullptr), 0);
    }
    home.WaitUntilRouted();
    ASSERT_TRUE(RunUntil([&] { return !received.empty(); }));
    EXPECT_EQ(AnswerTo(home, kHome), "");
    EXPECT_THAT(received, SizeIs(kCount + 1));
}

TEST_F(APortWithABurstOfAnUnknownSender, refuses_what_it_has_no_room_for_and_says_so)
{
    Burst(home, kHome, 5, kLarge);
    ASSERT_TRUE(RunUntil([&] { return home.Answers().size() == 5; }));
    EXPECT_THAT(received, SizeIs(3));
    EXPECT_EQ(AnswersOf(home, kQueueFull), 2);
    // Later ones find it known.
    EXPECT_EQ(AnswerTo(home, kHome), "");
}

TEST_F(APortWithABurstOfAnUnknownSender, counts_what_each_string_takes)
{
    home.Own(kHome);
    constexpr std::size_t kCount = 8;
    for (std::size_t i = 0; i < kCount; ++i) {
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_method_call(home.Get(), &raw, kApp, Platform::kPortPath, Platform::kPortInterface,
                                       "SendTrusted");
        sd_bus_message_append(raw, "sss", kPort, kHome, "");
        std::vector<char*> empty(Platform::kMostBundleStrings, const_cast<char*>(""));
        empty.back() = nullptr;
        sd_bus_message_open_container(raw, 'a', "{sv}");
        sd_bus_message_open_container(raw, 'e', "sv");
        sd_bus_message_append(raw, "s", "k");
        sd_bus_message_open_container(raw, 'v', "as");
        sd_bus_message_append_strv(raw, empty.data());
        for (int depth = 0; depth < 3; ++depth) sd_bus_message_close_container(raw);
        home.SendRaw(Platform::MessagePtr(raw));
    }
    home.WaitUntilRouted();
    ASSERT_TRUE(RunUntil([&] { return home.Answers().size() == kCount; }));
    EXPECT_THAT(received, SizeIs(3));
    EXPECT_EQ(AnswersOf(home, kQueueFull), 5);
}

TEST_F(APortWithABurstOfAnUnknownSender, keeps_room_for_another_one)
{
    Burst(home, kHome, 5, kLarge);
    Peer other(bus.Address());
    other.Own("com.example.second");
    other.Send("com.example.second", *Bundle({
                                         {"type", "hello"}
    }));
    other.WaitUntilRouted();
    ASSERT_TRUE(RunUntil([&] { return !other.Answers().empty(); }));
    EXPECT_THAT(other.Answers(), ElementsAre(""));
}

TEST_F(APortWithABurstOfAnUnknownSender, has_a_bound_for_all_of_them_together)
{
    std::vector<std::unique_ptr<Peer>> peers;
    std::size_t taken = 0;
    for (int i = 0; i < 4; ++i) {
        peers.push_back(std::make_unique<Peer>(bus.Address()));
        Burst(*peers.back(), "com.example.peer" + std::to_string(i), 3, kLarge);
    }
    for (const auto& peer : peers) {
        ASSERT_TRUE(RunUntil([&] { return peer->Answers().size() == 3; }));
        taken += static_cast<std::size_t>(AnswersOf(*peer, ""));
    }
    EXPECT_EQ(taken, 6u);
}

TEST_F(ATrustedPort, lets_senders_take_turns_when_more_has_come)
{
    constexpr int kMessages = 10, kMostRounds = 50;
    Peer other(bus.Address());
    home.Own(kHome);
    other.Own("com.example.second");
    ASSERT_EQ(AnswerTo(home, kHome), "");
    ASSERT_EQ(AnswerTo(other, "com.example.second"), "");
    const auto deliveredBeforeTheOther = [&] {
        received.clear();
        for (int i = 0; i < kMessages; ++i)
            home.Send(kHome, *Bundle({
                                 {"type", std::to_string(i)}
            }));
        home.WaitUntilRouted();
        other.Send("com.example.second", *Bundle({
                                             {"type", "hello"}
        }));
        other.WaitUntilRouted();
        EXPECT_TRUE(RunUntil([&] { return received.size() == kMessages + 1; }));
        return std::ranges::find(received, "hello", [](const Received& one) { return one.Text("type"); }) -
               received.begin();
    };
    // What has come is read in slices of time, which end early in a process that has to wait for a processor.
    auto before = deliveredBeforeTheOther();
    for (int round = 1; before > 2 && round < kMostRounds; ++round) before = deliveredBeforeTheOther();
    EXPECT_LE(before, 2);
}

TEST_F(ATrustedPort, refuses_another_user)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs root to become somebody else";
    int done[2];
    ASSERT_EQ(pipe2(done, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        // A program of the user "nobody" that owns the name for itself.
        if (setgid(65534) != 0 || setuid(65534) != 0) _exit(1);
        sd_bus* raw = nullptr;
        sd_bus_new(&raw);
        sd_bus_set_address(raw, bus.Address().c_str());
        sd_bus_set_bus_client(raw, true);
        if (sd_bus_start(raw) < 0 || sd_bus_request_name(raw, kHome, 0) < 0) _exit(2);
        int code = 0;
        const auto call = Platform::NewPortMessage(raw, kApp, kPort, true, kHome, "",
                                                   *Bundle({
                                                       {"type", "x"}
        }),
                                                   true, &code);
        Platform::BusError error;
        sd_bus_call(raw, call.get(), 5'000'000, error.Out(), nullptr);
        _exit(error.Is(kNotTrusted) ? 0 : 3);
    }
    int status = -1;
    ASSERT_TRUE(RunUntil([&] { return waitpid(child, &status, WNOHANG) == child; }));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_THAT(received, IsEmpty());
}

class AnUntrustedPort : public AnApplication {};

TEST_F(AnUntrustedPort, takes_messages_sent_untrusted_and_still_checks_the_name)
{
    OpenPort("open-port", false);
    Announce();
    Peer peer(bus.Address());
    peer.Send("com.example.anybody",
              *Bundle({
                  {"type", "1"}
    }),
              "open-port", false);
    ASSERT_TRUE(RunUntil([&] { return !peer.Answers().empty(); }));
    peer.OwnLater("com.example.anybody");
    peer.Send("com.example.anybody",
              *Bundle({
                  {"type", "2"}
    }),
              "open-port", false);
    ASSERT_TRUE(RunUntil([&] { return peer.Answers().size() == 2; }));
    ASSERT_THAT(received, SizeIs(1));
    EXPECT_EQ(received[0].Text("type"), "2");
    EXPECT_FALSE(received[0].trusted);
}

TEST_F(AnUntrustedPort, is_not_reached_by_a_trusted_send)
{
    OpenPort("open-port", false);
    Announce();
    Peer peer(bus.Address());
    peer.Own(kHome);
    peer.Send(kHome,
              *Bundle({
                  {"type", "1"}
    }),
              "open-port", true);
    ASSERT_TRUE(RunUntil([&] { return !peer.Answers().empty(); }));
    EXPECT_THAT(peer.Answers(), ElementsAre(kNoSuchPort));
}

class ASender : public AnApplication {
protected:
    ASender() { Announce(); }

    // A peer with a port, on the same loop.
    Peer home{bus.Address()};
};

TEST_F(ASender, sees_a_port_as_up_while_its_name_has_the_applications_owner)
{
    EXPECT_EQ(process->Ports().IsTrustedPortUp(kHome, kHomePort), 0);
    home.Own(kHome);
    home.Own(Platform::PortBusName(kHome, kHomePort, true));
    Settle(home);
    EXPECT_EQ(process->Ports().IsTrustedPortUp(kHome, kHomePort), 1);
    home.ReleaseLater(Platform::PortBusName(kHome, kHomePort, true));
    Settle(home);
    EXPECT_EQ(process->Ports().IsTrustedPortUp(kHome, kHomePort), 0);
}

TEST_F(ASender, keeps_a_bounded_amount_while_the_bus_takes_nothing)
{
    home.Own(kHome);
    const auto send = [&](std::size_t size) {
        return process->Ports().Send(kHome, kHomePort, true, "",
                                     *Bundle({
                                         {"type", std::string(size, 'x')}
        }));
    };
    bus.Pause();
    int kept = 0;
    while (kept < 200 && send(std::size_t{1} << 20) == 0) ++kept;
    bus.Resume();
    EXPECT_GE(kept, 30);
    EXPECT_LT(kept, 100);  // the daemon takes some until it stops
    EXPECT_TRUE(RunUntil([&] { return send(1) == 0; }));
}

TEST_F(ASender, sees_no_port_of_what_is_no_application)
{
    for (const char* app : {"", "no name", "a.b',member='x", "com..example", ".a.b"}) {
        EXPECT_EQ(process->Ports().IsTrustedPortUp(app, kHomePort), 0) << app;
    }
    EXPECT_EQ(process->Ports().IsTrustedPortUp(kHome, std::string(300, 'x')), 0);
    EXPECT_EQ(process->GetBus().Owners().NamesWatched(), 0u);
}

TEST_F(ASender, does_not_see_a_port_that_another_connection_put_up)
{
    home.Own(kHome);
    Peer other(bus.Address());
    other.Own(Platform::PortBusName(kHome, kHomePort, true));
    EXPECT_EQ(process->Ports().IsTrustedPortUp(kHome, kHomePort), 0);
}

TEST_F(ASender, loses_a_message_to_a_peer_that_is_not_there_and_starts_nobody)
{
    const std::string mark = root.Path() + "/started";
    bus.AddActivation(kHome, "/bin/sh -c \"touch " + mark + "\"");
    EXPECT_EQ(process->Ports().Send(kHome, kHomePort, true, "",
                                    *Bundle({
                                        {"type", "x"}
    })),
              0);
    Settle(home);
    EXPECT_NE(access(mark.c_str(), F_OK), 0);
}

TEST_F(ASender, sends_long_strings_and_such_as_no_text_may_hold_as_bytes)
{
    std::map<std::string, std::string> types;
    sd_bus_slot* slot = nullptr;
    const auto read = [](sd_bus_message* m, void* data, sd_bus_error*) {
        const char* text = nullptr;
        if (!sd_bus_message_is_method_call(m, Platform::kPortInterface, "SendTrusted")) return 0;
        for (int i = 0; i < 3; ++i) sd_bus_message_read(m, "s", &text);
        sd_bus_message_enter_container(m, 'a', "{sv}");
        while (sd_bus_message_enter_container(m, 'e', "sv") > 0) {
            const char* type = nullptr;
            sd_bus_message_read(m, "s", &text);
            sd_bus_message_peek_type(m, nullptr, &type);
            (*static_cast<std::map<std::string, std::string>*>(data))[text] = type;
            sd_bus_message_skip(m, "v");
            sd_bus_message_exit_container(m);
        }
        return 1;
    };
    sd_bus_add_filter(home.Get(), &slot, read, &types);
    const Platform::SlotPtr filter(slot);
    home.Own(kHome);
    auto message = Bundle({
        {"short", "x"             },
        {"long",  std::string(4096, 'x')},
        {"bytes",       "\xff"                },
        {"block",       "\uFDD0\uFDEF"},
        {"last",       "a\uFFFE"                 },
        {"plane",       "\U0010FFFFb"},
        {"beside",       "\uFDCF\uFDF0\uFFFD\U00010000\U0001FFFD"                },
    });
    message->Set("array", Platform::StringArray{"a", "\xff"});
    message->Set("texts", Platform::StringArray{"a"});
    EXPECT_EQ(process->Ports().Send(kHome, kHomePort, true, "", *message), 0);
    ASSERT_TRUE(RunUntil([&] { return types.size() == 9; }));
    using testing::Pair;
    EXPECT_THAT(types, ElementsAre(Pair("array", "aay"), Pair("beside", "s"), Pair("block", "ay"),
                                   Pair("bytes", "ay"), Pair("last", "ay"), Pair("long", "ay"),
                                   Pair("plane", "ay"), Pair("short", "s"), Pair("texts", "as")));
}

TEST(APortName, encodes_the_port_as_a_label)
{
    EXPECT_EQ(Platform::PortBusName("a.b", "watchface-service::localport", true),
              "a.b.trusted.watchface_2dservice_3a_3alocalport");
    EXPECT_EQ(Platform::PortBusName("a.b", "1x", false), "a.b.open._31x");
    EXPECT_EQ(Platform::PortBusName("a.b", "", false), "a.b.open._");
}

}  // namespace
}  // namespace PlatformTest
