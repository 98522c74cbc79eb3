// Owners of libsystemd's handles, one pointer wide each, and calls that end in a function object.

#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <functional>
#include <memory>
#include <string>

namespace Platform {

template <auto Release>
struct Releases {
    void operator()(auto* handle) const { Release(handle); }
};

using EventPtr = std::unique_ptr<sd_event, Releases<sd_event_unref>>;
// Disabled as well, so that a callback that runs right now is the last one.
using EventSourcePtr = std::unique_ptr<sd_event_source, Releases<sd_event_source_disable_unref>>;
using BusPtr = std::unique_ptr<sd_bus, Releases<sd_bus_flush_close_unref>>;
using SlotPtr = std::unique_ptr<sd_bus_slot, Releases<sd_bus_slot_unref>>;
using MessagePtr = std::unique_ptr<sd_bus_message, Releases<sd_bus_message_unref>>;

// An error of sd-bus, freed with its scope.
class BusError {
public:
    BusError() = default;
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    ~BusError() { sd_bus_error_free(&mError); }
    sd_bus_error* Out() { return &mError; }
    bool Is(const char* name) const { return sd_bus_error_has_name(&mError, name) > 0; }
    const char* Name() const { return mError.name ? mError.name : ""; }
    const char* Text() const { return mError.message ? mError.message : ""; }

private:
    sd_bus_error mError{};
};

// Sends `call` and runs `then` with the answer on the loop. The returned slot cancels it; an empty slot means
// that it could not be sent, with the code in `*result`.
using BusAnswer = std::function<void(sd_bus_message* answer)>;
SlotPtr CallAsync(sd_bus* bus, sd_bus_message* call, uint64_t timeoutUsec, BusAnswer then,
                  int* result = nullptr);

// Like CallAsync(), for answers that nobody cancels: they end with the bus.
int CallDetached(sd_bus* bus, sd_bus_message* call, uint64_t timeoutUsec, BusAnswer then);

// Runs `then` for every message that matches, while the slot lives. The bus side of the match is installed
// without waiting for it.
SlotPtr MatchAsync(sd_bus* bus, const std::string& rule, std::function<void(sd_bus_message*)> then);

}  // namespace Platform
