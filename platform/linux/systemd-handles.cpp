#include "systemd-handles.h"

#include <utility>

#include "platform-log.h"

namespace Platform {

namespace {

// The function object lives with the slot.
template <typename Function>
void Bind(sd_bus_slot* slot, Function* function)
{
    sd_bus_slot_set_destroy_callback(slot, [](void* data) { delete static_cast<Function*>(data); });
    sd_bus_slot_set_userdata(slot, function);
}

int OnAnswer(sd_bus_message* answer, void* data, sd_bus_error*)
{
    (*static_cast<BusAnswer*>(data))(answer);
    return 0;
}

int OnMatch(sd_bus_message* message, void* data, sd_bus_error*)
{
    (*static_cast<BusAnswer*>(data))(message);
    return 0;
}

int OnMatchInstalled(sd_bus_message* answer, void*, sd_bus_error*)
{
    if (const sd_bus_error* error = sd_bus_message_get_error(answer)) {
        PLATFORM_FAULT("the bus took a match no more: %s", error->message);
    }
    return 0;  // on purpose: without a handler sd-bus would end the connection
}

}  // namespace

SlotPtr CallAsync(sd_bus* bus, sd_bus_message* call, uint64_t timeoutUsec, BusAnswer then, int* result)
{
    sd_bus_slot* slot = nullptr;
    const int code = sd_bus_call_async(bus, &slot, call, OnAnswer, nullptr, timeoutUsec);
    if (result) *result = code;
    if (code < 0) return {};
    Bind(slot, new BusAnswer(std::move(then)));
    return SlotPtr(slot);
}

int CallDetached(sd_bus* bus, sd_bus_message* call, uint64_t timeoutUsec, BusAnswer then)
{
    int code = 0;
    SlotPtr slot = CallAsync(bus, call, timeoutUsec, std::move(then), &code);
    if (slot) sd_bus_slot_set_floating(slot.get(), true);
    return code;
}

SlotPtr MatchAsync(sd_bus* bus, const std::string& rule, std::function<void(sd_bus_message*)> then)
{
    sd_bus_slot* slot = nullptr;
    const int code = sd_bus_add_match_async(bus, &slot, rule.c_str(), OnMatch, OnMatchInstalled, nullptr);
    if (code < 0) {
        PLATFORM_FAULT("could not match [%s]: %d", rule.c_str(), code);
        return {};
    }
    Bind(slot, new BusAnswer(std::move(then)));
    return SlotPtr(slot);
}

}  // namespace Platform
