// wfctl's connection to a watch's bus, and waiting on it.

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "bus-sdbus.h"

namespace Wfctl {

using Seconds = std::chrono::duration<double>;

// A time that does not come.
inline constexpr Seconds kForEver{-1};

// When that time is over. What is longer than thirty years, as 1e300, and what is no number is thirty years.
std::chrono::steady_clock::time_point DeadlineIn(Seconds most);

// What a method call was answered.
struct Answer {
    Platform::MessagePtr message;  // empty: no answer in time
    std::string errorName;         // empty: a good answer
    std::string errorText;
    bool Good() const { return message && errorName.empty(); }
};

class Connection {
public:
    // Connects to the watch that SelectWatch() took; stops with Exit::kNoWatch when nothing answers there.
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Platform::Bus& Bus() { return *mBus; }
    sd_bus* Get() { return mBus->Get(); }
    const std::string& Address() const { return mAddress; }

    // Runs the loop until `done`; false when the time is over first. Stops with Exit::kInterrupted on SIGINT
    // and SIGTERM, and with Exit::kNoWatch when the bus goes.
    bool RunUntil(const std::function<bool()>& done, Seconds most);

    // Sends and waits for the answer while the loop runs.
    Answer Call(sd_bus_message* call, Seconds most);

    // Asks the bus driver; nothing when it does not answer or refuses.
    std::optional<uint32_t> ProcessBehind(const std::string& name);  // nothing: nobody owns the name
    bool CanBeStarted(const std::string& name);
    bool IsNameBelow(const std::string& prefix);  // owned by anybody
    // After this all that was asked of the bus before is in force.
    void RoundTrip();

private:
    Platform::MessagePtr DriverCall(const char* member, const char* argument);

    const std::string mAddress;
    bool mLost = false;
    bool mInterrupted = false;
    Platform::EventSourcePtr mSignals[2];
    std::unique_ptr<Platform::Bus> mBus;
};

// The service, or whatever the user must be told when a watch has none.
void RequireService(Connection& connection);

}  // namespace Wfctl
