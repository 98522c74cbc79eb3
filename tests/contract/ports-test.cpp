#include "common-util-ipc-control.h"
#include "contract-test.h"

namespace Contract {
namespace {

constexpr char kOwnPort[] = "watchface-service::localport";
constexpr char kOwnOpenPort[] = "evaluation-helper-port";

struct Arrived {
    std::string from;
    std::string fromPort;
    bool trusted;
    Message message;
};

class APort : public ContractTest {
protected:
    CommonUtilIPCControl::Callback Into(std::vector<Arrived>& list)
    {
        return [&list](int, const std::string& from, const std::string& fromPort, bool trusted,
                       bundle* message) {
            list.push_back({from, fromPort, trusted, ContentOf(message)});
        };
    }
    bool RunUntilCount(const std::vector<Arrived>& list, std::size_t count)
    {
        return harness->RunUntil([&] { return list.size() >= count; });
    }
    std::vector<Arrived> got;
    std::unique_ptr<Peer> home = harness->AsPeer(kHome);
};

TEST_F(APort, hands_over_a_message_with_its_sender)
{
    const CommonUtilIPCControl port(kOwnPort, true, Into(got));
    harness->WaitTurn();
    home->Listen(kHomePort, true);
    home->Send(kOwnPort, true,
               {
                   {"type",  "watch-idle-changed"},
                   {"pkgid", "a"                 }
    },
               kHomePort);
    ASSERT_TRUE(RunUntilCount(got, 1));
    EXPECT_EQ(got[0].from, kHome);
    EXPECT_EQ(got[0].fromPort, kHomePort);
    EXPECT_TRUE(got[0].trusted);
    EXPECT_EQ(got[0].message, (Message{
                                  {"type",  "watch-idle-changed"},
                                  {"pkgid", "a"                 }
    }));
}

TEST_F(APort, takes_messages_of_senders_without_a_port)
{
    const CommonUtilIPCControl port(kOwnPort, true, Into(got));
    harness->WaitTurn();
    home->Send(kOwnPort, true,
               {
                   {"type", "x"}
    });
    ASSERT_TRUE(RunUntilCount(got, 1));
    EXPECT_EQ(got[0].fromPort, "");
}

TEST_F(APort, hands_over_any_text)
{
    const Message message = {
        {"empty",      ""                 },
        {"not UTF-8",  "caf\xE9.png"      },
        {"korean",     "시계"           },
        {"lines",      "a\n\tb"           },
        {"long",       std::string(100'000, 'x')},
        {"array",            Strings{"a", "", "\xFF", "a"}                        },
        {"long array",            Strings(1000,"name.png")},
        {"no array", Strings{}                        },
    };
    const CommonUtilIPCControl port(kOwnPort, true, Into(got));
    harness->WaitTurn();
    home->Send(kOwnPort, true, message);
    ASSERT_TRUE(RunUntilCount(got, 1));
    EXPECT_EQ(got[0].message, message);
}

TEST_F(APort, hands_over_an_empty_message)
{
    const CommonUtilIPCControl port(kOwnPort, true, Into(got));
    harness->WaitTurn();
    home->Send(kOwnPort, true, {});
    ASSERT_TRUE(RunUntilCount(got, 1));
    EXPECT_EQ(got[0].message, Message{});
}

TEST_F(APort, keeps_the_order_of_a_sender)
{
    const CommonUtilIPCControl port(kOwnPort, true, Into(got));
    harness->WaitTurn();
    for (int i = 0; i < 50; ++i)
        home->Send(kOwnPort, true,
                   {
                       {"n", std::to_string(i)}
        });
    ASSERT_TRUE(RunUntilCount(got, 50));
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(got[static_cast<std::size_t>(i)].message, (Message{
                                                                {"n", std::to_string(i)}
        }));
    }
}

TEST_F(APort, tells_its_senders_apart)
{
    const auto editor = harness->AsPeer(kEditor);
    const CommonUtilIPCControl port(kOwnPort, true, Into(got));
    harness->WaitTurn();
    home->Send(kOwnPort, true,
               {
                   {"n", "1"}
    });
    ASSERT_TRUE(RunUntilCount(got, 1));
    editor->Send(kOwnPort, true,
                 {
                     {"n", "2"}
    });
    ASSERT_TRUE(RunUntilCount(got, 2));
    EXPECT_EQ(got[0].from, kHome);
    EXPECT_EQ(got[1].from, kEditor);
}

TEST_F(APort, gets_only_its_own_messages)
{
    std::vector<Arrived> gotOpen;
    const CommonUtilIPCControl trusted(kOwnPort, true, Into(got));
    const CommonUtilIPCControl open(kOwnOpenPort, false, Into(gotOpen));
    harness->WaitTurn();
    home->Send(kOwnOpenPort, false,
               {
                   {"n", "1"}
    });
    home->Send(kOwnPort, true,
               {
                   {"n", "2"}
    });
    ASSERT_TRUE(RunUntilCount(gotOpen, 1));
    ASSERT_TRUE(RunUntilCount(got, 1));
    ASSERT_EQ(gotOpen.size(), 1u);
    EXPECT_FALSE(gotOpen[0].trusted);
    EXPECT_EQ(gotOpen[0].message, (Message{
                                      {"n", "1"}
    }));
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].message, (Message{
                                  {"n", "2"}
    }));
}

TEST_F(APort, takes_nothing_that_was_sent_the_other_way)
{
    std::vector<Arrived> gotOpen;
    const CommonUtilIPCControl trusted(kOwnPort, true, Into(got));
    const CommonUtilIPCControl open(kOwnOpenPort, false, Into(gotOpen));
    harness->WaitTurn();
    home->Send(kOwnPort, false,
               {
                   {"n", "untrusted to a trusted port"}
    });
    home->Send(kOwnOpenPort, true,
               {
                   {"n", "trusted to an open port"}
    });
    home->Send(kOwnPort, true,
               {
                   {"n", "last"}
    });
    ASSERT_TRUE(RunUntilCount(got, 1));
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].message, (Message{
                                  {"n", "last"}
    }));
    EXPECT_THAT(gotOpen, testing::SizeIs(0));
}

TEST_F(APort, gets_nothing_once_it_is_closed)
{
    std::vector<Arrived> gotOpen;
    auto port = std::make_unique<CommonUtilIPCControl>(kOwnPort, true, Into(got));
    const CommonUtilIPCControl open(kOwnOpenPort, false, Into(gotOpen));
    harness->WaitTurn();
    port.reset();
    home->Send(kOwnPort, true,
               {
                   {"n", "1"}
    });
    home->Send(kOwnOpenPort, false,
               {
                   {"n", "2"}
    });
    ASSERT_TRUE(RunUntilCount(gotOpen, 1));
    EXPECT_THAT(got, testing::SizeIs(0));
}

TEST_F(APort, may_be_closed_inside_its_callback)
{
    std::unique_ptr<CommonUtilIPCControl> port;
    const auto close = [&](int, const std::string& from, const std::string&, bool, bundle* message) {
        port.reset();
        got.push_back({from, "", true, ContentOf(message)});
    };
    port = std::make_unique<CommonUtilIPCControl>(kOwnPort, true, close);
    harness->WaitTurn();
    home->Send(kOwnPort, true,
               {
                   {"n", "1"}
    });
    ASSERT_TRUE(RunUntilCount(got, 1));
    EXPECT_EQ(got[0].message, (Message{
                                  {"n", "1"}
    }));
}

class ASend : public ContractTest {
protected:
    static int SendTrusted(const char* app, const char* port, const Message& message,
                           const CommonUtilIPCControl* from = nullptr)
    {
        return CommonUtilIPCControl::SendTrustedMessage(app, port, MakeBundle(message).get(), from);
    }
    // CheckTrustedRemotePort() may have to hear from the bus first.
    bool RunUntilPortIs(bool up, const char* app, const char* port)
    {
        return harness->RunUntil(
            [=] { return (CommonUtilIPCControl::CheckTrustedRemotePort(app, port) == 1) == up; });
    }
    bool RunUntilArrived(const Peer& peer, std::size_t count)
    {
        return harness->RunUntil([&] { return peer.Inbox().size() >= count; });
    }
    std::unique_ptr<Peer> home = harness->AsPeer(kHome);
};

TEST_F(ASend, reaches_the_port_of_its_receiver)
{
    home->Listen(kHomePort, true);
    const Message message = {
        {"type",    "watch-bg-del"          },
        {"bg_list", Strings{"a", "\xE9", ""}}
    };
    EXPECT_EQ(SendTrusted(kHome, kHomePort, message), 0);
    ASSERT_TRUE(RunUntilArrived(*home, 1));
    EXPECT_EQ(home->Inbox()[0].from, harness->ApplicationId());
    EXPECT_EQ(home->Inbox()[0].port, kHomePort);
    EXPECT_EQ(home->Inbox()[0].message, message);
}

TEST_F(ASend, leaves_the_bundle_to_its_owner)
{
    home->Listen(kHomePort, true);
    const BundlePtr message = MakeBundle({
        {"n", "1"}
    });
    EXPECT_EQ(CommonUtilIPCControl::SendTrustedMessage(kHome, kHomePort, message.get()), 0);
    bundle_add_str(message.get(), "n", "2");
    EXPECT_EQ(CommonUtilIPCControl::SendTrustedMessage(kHome, kHomePort, message.get()), 0);
    ASSERT_TRUE(RunUntilArrived(*home, 2));
    EXPECT_EQ(home->Inbox()[0].message, (Message{
                                            {"n", "1"}
    }));
    EXPECT_EQ(home->Inbox()[1].message, (Message{
                                            {"n", "2"}
    }));
}

TEST_F(ASend, through_a_port_carries_that_port)
{
    const CommonUtilIPCControl port(kOwnPort, true,
                                    [](int, const std::string&, const std::string&, bool, bundle*) {});
    harness->WaitTurn();
    home->Listen(kHomePort, true);
    SendTrusted(kHome, kHomePort,
                {
                    {"n", "1"}
    },
                &port);
    ASSERT_TRUE(RunUntilArrived(*home, 1));
    EXPECT_EQ(home->Inbox()[0].fromPort, kOwnPort);
}

TEST_F(ASend, without_a_port_carries_none)
{
    home->Listen(kHomePort, true);
    SendTrusted(kHome, kHomePort,
                {
                    {"n", "1"}
    });
    ASSERT_TRUE(RunUntilArrived(*home, 1));
    EXPECT_EQ(home->Inbox()[0].fromPort, "");
}

TEST_F(ASend, reaches_open_ports_untrusted)
{
    home->Listen("home-open", false);
    EXPECT_EQ(CommonUtilIPCControl::SendMessage(kHome, "home-open",
                                                MakeBundle({
                                                               {"n", "1"}
    })
                                                    .get()),
              0);
    ASSERT_TRUE(RunUntilArrived(*home, 1));
    EXPECT_EQ(home->Inbox()[0].message, (Message{
                                            {"n", "1"}
    }));
}

TEST_F(ASend, to_a_port_that_is_not_there_is_lost_without_an_error)
{
    EXPECT_EQ(SendTrusted(kHome, kHomePort,
                          {
                              {"n", "before"}
    }),
              0);
    EXPECT_EQ(SendTrusted(kEditor, "watch-face-editor::localport",
                          {
                              {"n", "to nobody"}
    }),
              0);
    harness->WaitTurn();
    home->Listen(kHomePort, true);
    EXPECT_EQ(SendTrusted(kHome, "another-port",
                          {
                              {"n", "to another port"}
    }),
              0);
    EXPECT_EQ(SendTrusted(kHome, kHomePort,
                          {
                              {"n", "last"}
    }),
              0);
    ASSERT_TRUE(RunUntilArrived(*home, 1));
    ASSERT_EQ(home->Inbox().size(), 1u);
    EXPECT_EQ(home->Inbox()[0].message, (Message{
                                            {"n", "last"}
    }));
}

TEST_F(ASend, without_a_message_is_refused)
{
    EXPECT_NE(CommonUtilIPCControl::SendTrustedMessage(kHome, kHomePort, nullptr), 0);
    EXPECT_NE(CommonUtilIPCControl::SendMessage(kHome, kHomePort, nullptr), 0);
}

TEST_F(ASend, can_be_preceded_by_asking_whether_the_port_is_up)
{
    EXPECT_NE(CommonUtilIPCControl::CheckTrustedRemotePort(kHome, kHomePort), 1);
    home->Listen(kHomePort, true);
    EXPECT_TRUE(RunUntilPortIs(true, kHome, kHomePort));
    EXPECT_NE(CommonUtilIPCControl::CheckTrustedRemotePort(kHome, "another-port"), 1);
    EXPECT_NE(CommonUtilIPCControl::CheckTrustedRemotePort(kEditor, kHomePort), 1);
}

TEST_F(ASend, finds_no_port_of_a_peer_that_has_left)
{
    home->Listen(kHomePort, true);
    ASSERT_TRUE(RunUntilPortIs(true, kHome, kHomePort));
    home.reset();
    EXPECT_TRUE(RunUntilPortIs(false, kHome, kHomePort));
}

TEST_F(ASend, does_not_take_an_open_port_for_a_trusted_one)
{
    home->Listen(kHomePort, true);
    home->Listen("home-open", false);
    ASSERT_TRUE(RunUntilPortIs(true, kHome, kHomePort));
    EXPECT_NE(CommonUtilIPCControl::CheckTrustedRemotePort(kHome, "home-open"), 1);
}

TEST(AMessage, reads_missing_strings_as_empty)
{
    const BundlePtr message(bundle_create());
    bundle_add_str(message.get(), "type", "x");
    const char* list[] = {"a"};
    bundle_add_str_array(message.get(), "bg_list", list, 1);
    EXPECT_EQ(CommonUtilIPCControl::BundleGetString(message.get(), "type"), "x");
    EXPECT_EQ(CommonUtilIPCControl::BundleGetString(message.get(), "pkgid"), "");
    EXPECT_EQ(CommonUtilIPCControl::BundleGetString(message.get(), "bg_list"), "");
    EXPECT_EQ(CommonUtilIPCControl::BundleGetString(nullptr, "type"), "");
}

}  // namespace
}  // namespace Contract
