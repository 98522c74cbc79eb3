// An application that ends on its own wish. Its loop ends for good, so each case runs in a process of its
// own.

#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

#include "app-control.h"
#include "bundle-wire-sdbus.h"
#include "launch-sdbus.h"
#include "platform-fixture.h"
#include "service-app.h"

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

using Clock = std::chrono::steady_clock;

// Waits until the name has an owner, or none; false when that takes too long.
bool WaitForOwner(const std::string& address, const char* name, bool owned)
{
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (HasOwner(address, name) != owned) {
        if (Clock::now() > deadline) return false;
    }
    return true;
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
    const bool isFree = WaitForOwner(bus.Address(), kApp, false);
    const int status = sd_event_loop(Platform::MainLoop());
    bus.Kill();  // nothing is destroyed at _Exit()
    std::_Exit(isFree && status == 0 && received == senders ? EXIT_SUCCESS : EXIT_FAILURE);
}

// The result of a launch request and how much data came with it, asked on a connection of its own; waits
// until there is whom to ask.
std::pair<int, bool> Launch(const std::string& address)
{
    sd_bus* raw = nullptr;
    sd_bus_new(&raw);
    const Platform::BusPtr bus(raw);
    sd_bus_set_address(raw, address.c_str());
    sd_bus_set_bus_client(raw, true);
    sd_bus_start(raw);
    sd_bus_message* answer = nullptr;
    WaitForOwner(address, kApp, true);
    int code = 0;
    const auto call = Platform::NewLaunchCall(raw, kApp, "", {}, &code);
    sd_bus_call(raw, call.get(), UINT64_MAX, nullptr, &answer);
    const Platform::MessagePtr owned(answer);
    int result = -99;
    std::string reason;
    Platform::LaunchData extra;
    const bool read = answer && sd_bus_message_read(answer, "i", &result) >= 0 &&
                      Platform::ReadLaunchData(answer, &extra, &reason);
    return {result, read && extra.empty()};
}

// Ends with status 0 when a request that was held until the application was terminated has failed without
// data, and the application's name was free by then.
[[noreturn]] void EndWithARequestHeld()
{
    TestSupport::PrivateBus bus;
    const TestSupport::TemporaryFolder root;
    unsetenv("DBUS_STARTER_ADDRESS");
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str(), 1);
    setenv("WATCH_ROOT", root.Path().c_str(), 1);
    auto process = Platform::Process::Start(kApp);
    struct Held {
        app_control_h request = nullptr;
        std::string address;
        bool nameWasFree = false;
    } held{.address = bus.Address()};
    service_app_lifecycle_callback_s callbacks{};
    callbacks.app_control = [](app_control_h request, void* data) {
        app_control_clone(&static_cast<Held*>(data)->request, request);
        Platform::Process::Current().Exit(0);
    };
    callbacks.terminate = [](void* data) {
        auto* self = static_cast<Held*>(data);
        self->nameWasFree = WaitForOwner(self->address, kApp, false);
        app_control_destroy(self->request);
    };
    std::pair<int, bool> answer;
    std::thread caller([&] { answer = Launch(bus.Address()); });
    const int status = process->Run(callbacks, &held);
    process.reset();
    caller.join();
    bus.Kill();  // nothing is destroyed at _Exit()
    const bool isGood = status == 0 && held.nameWasFree && answer == std::pair(-1, true);
    std::_Exit(isGood ? EXIT_SUCCESS : EXIT_FAILURE);
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

TEST_F(ALeavingApplication, answers_what_it_held_to_its_end)
{
    EXPECT_EXIT(EndWithARequestHeld(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace PlatformTest
