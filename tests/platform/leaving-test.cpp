// An application that ends on its own wish. Its loop ends for good, so each case runs in a process of its
// own.

#include <cstdlib>

#include "platform-fixture.h"

namespace PlatformTest {
namespace {

// Asked on a connection of its own: those of the loop end with it.
bool HasOwner(const std::string& address, const char* name)
{
    sd_bus* raw = nullptr;
    sd_bus_new(&raw);
    const Platform::BusPtr bus(raw);
    sd_bus_set_address(raw, address.c_str());
    sd_bus_set_bus_client(raw, true);
    sd_bus_start(raw);
    sd_bus_message* answer = nullptr;
    sd_bus_call_method(raw, Platform::kDriver, Platform::kDriverPath, Platform::kDriver, "NameHasOwner",
                       nullptr, &answer, "s", name);
    const Platform::MessagePtr owned(answer);
    int has = 1;
    sd_bus_message_read(answer, "b", &has);
    return has;
}

// Ends with status 0 when the application's name was free while it still ran, and all that was routed before
// has reached its port: one message of each of so many senders, each to be checked first.
[[noreturn]] void LeaveWithMessagesRouted(int senders)
{
    TestSupport::PrivateBus bus;
    const TestSupport::TemporaryFolder root;
    unsetenv("DBUS_STARTER_ADDRESS");
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str(), 1);
    setenv("WATCH_ROOT", root.Path().c_str(), 1);
    const auto process = Platform::Process::Start(kApp);
    int received = 0;
    process->Ports().Open(kPort, true, [&](auto&&...) { ++received; });
    std::string failed;
    process->Ports().Announce(&failed);
    process->GetBus().RequestName(kApp);

    std::vector<std::unique_ptr<Peer>> peers;
    for (int i = 0; i < senders; ++i) {
        const std::string name = "com.example.peer" + std::to_string(i);
        Peer& peer = *peers.emplace_back(std::make_unique<Peer>(bus.Address()));
        peer.Own(name);
        peer.Send(name, *Bundle({
                            {"type", "x"}
        }));
        peer.WaitUntilRouted();
    }
    process->Leave();
    sd_bus_flush(process->GetBus().Get());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    bool isFree = false;
    while (!isFree && std::chrono::steady_clock::now() < deadline) isFree = !HasOwner(bus.Address(), kApp);
    const int status = sd_event_loop(Platform::MainLoop());
    bus.Kill();  // nothing is destroyed at _Exit()
    std::_Exit(isFree && status == 0 && received == senders ? EXIT_SUCCESS : EXIT_FAILURE);
}

class ALeavingApplication : public testing::Test {
protected:
    ALeavingApplication() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ALeavingApplication, works_off_what_was_routed_to_it)
{
    EXPECT_EXIT(LeaveWithMessagesRouted(40), testing::ExitedWithCode(0), "");
}

TEST_F(ALeavingApplication, leaves_when_there_is_nothing_to_work_off)
{
    EXPECT_EXIT(LeaveWithMessagesRouted(0), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace PlatformTest
