// The connection to the bus.
//
// One connection a process. Its guard drops what sd-bus would let through: signals that a peer forges in the
// bus driver's name, and any signal that a peer addresses to us alone (sd-bus does not check `sender=` of a
// match). The owner ledger hangs on it.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "owner-ledger.h"
#include "systemd-handles.h"

namespace Platform {

inline constexpr char kDriver[] = "org.freedesktop.DBus";
inline constexpr char kDriverPath[] = "/org/freedesktop/DBus";

// The address of the watch's bus: the one that started us, else the session's, else the system's.
std::string BusAddress();

// Whether the address is that of the system's bus, as opposed to a session's or a private one.
bool IsSystemBus(const std::string& address);

class Bus final : private OwnerLedger::Watcher {
public:
    // Connects and attaches to `event`; null with the reason in `*error` when it cannot. `onLost` runs when
    // the connection ends from the other side.
    static std::unique_ptr<Bus> Open(const std::string& address, sd_event* event,
                                     std::function<void()> onLost, std::string* error);
    ~Bus() override;
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    sd_bus* Get() const { return mBus.get(); }
    OwnerLedger& Owners() { return mOwners; }

    // Owns a name without queueing or replacing: 0, -EEXIST when another owns it, or another negative code.
    int RequestName(const std::string& name);
    void ReleaseName(const std::string& name);

    // Runs `then` once all has come in that the bus had routed to us when it read this.
    void AfterRouting(std::function<void()> then);

    // Whether anything has come that was not looked at.
    bool HasMoreToRead() const;

    // Looks at what has come, for so long at most. Not while a message is looked at.
    void ReadAhead(std::chrono::microseconds longest);

    // The owner of a name now: what the ledger knows, else one question to the bus. Nothing when the bus
    // does not tell.
    std::optional<std::string> OwnerNow(const std::string& name);

    // The uid behind a connection, from the bus's own record; nothing when the bus does not tell (the
    // connection may be gone). `then` runs at once when it is known.
    void UserOf(const std::string& uniqueName, std::function<void(std::optional<uid_t>)> then);

private:
    Bus(BusPtr bus, std::function<void()> onLost);
    static int OnFilter(sd_bus_message* message, void* self, sd_bus_error*);
    SlotPtr MatchOwnerChanges(const std::string& names);
    bool Watch(const std::string& name, uint64_t generation) override;
    void Forget(const std::string& name) override;

    std::function<void()> mOnLost;
    OwnerLedger mOwners;
    std::map<std::string, uid_t> mUsers;  // by unique name, which the bus never uses twice
    std::map<std::string, std::vector<std::function<void(std::optional<uid_t>)>>> mUserQuestions;
    // The connection outlives what hangs on it: slots go first, in reverse order.
    BusPtr mBus;
    SlotPtr mGuard;
    SlotPtr mApplications;  // the owner changes of all applications of the watch
    std::map<std::string, SlotPtr> mWatches;
};

}  // namespace Platform
