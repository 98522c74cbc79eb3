// An application under test on a private bus, and peers that are other connections of the same loop.

#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "message-port-sdbus.h"
#include "platform-keys-sdbus.h"
#include "private-bus.h"
#include "process.h"

namespace PlatformTest {

inline constexpr char kApp[] = "com.corvane.watchface-service";
inline constexpr char kPort[] = "watchface-service::localport";
inline constexpr char kHome[] = "com.corvane.w-home";
inline constexpr char kHomePort[] = "w-home::localport";

// Another program on the bus.
class Peer {
public:
    explicit Peer(const std::string& address);

    sd_bus* Get() const { return mBus.get(); }
    std::string UniqueName() const;
    void Own(const std::string& name);
    void OwnLater(const std::string& name);  // sent, not waited for
    void ReleaseLater(const std::string& name);

    // Sends a message that says it comes from `claimed`; the answer's error name, or "" when it was taken,
    // arrives in Answers().
    void Send(const std::string& claimed, const bundle& message, const std::string& port = kPort,
              bool trusted = true);
    // Returns when the bus has passed on all that was sent.
    void WaitUntilRouted();
    void SendRaw(Platform::MessagePtr call);
    const std::vector<std::string>& Answers() const { return mAnswers; }

private:
    Platform::BusPtr mBus;
    std::vector<std::string> mAnswers;
};

struct Received {
    std::string app, port;
    bool trusted;
    std::map<std::string, bundle::Value> values;
    std::string Text(const std::string& key) const;
};

class AnApplication : public testing::Test {
protected:
    AnApplication();
    ~AnApplication() override;

    // Opens a port that keeps what it gets.
    void OpenPort(const std::string& name = kPort, bool trusted = true);
    void Announce();

    // Runs the loop until the condition holds; false when it does not within the deadline.
    template <typename Condition>
    bool RunUntil(Condition condition, std::chrono::milliseconds deadline = std::chrono::seconds(10))
    {
        const auto end = std::chrono::steady_clock::now() + deadline;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            sd_event_run(Platform::MainLoop(), 10'000);
        }
        return true;
    }

    // Until every connection has seen what the others sent before.
    void Settle(Peer& peer);

    TestSupport::PrivateBus bus;
    TestSupport::TemporaryFolder root;
    std::unique_ptr<Platform::Process> process;
    std::vector<Received> received;
};

Platform::BundlePtr Bundle(const std::map<std::string, std::string>& values);

}  // namespace PlatformTest
