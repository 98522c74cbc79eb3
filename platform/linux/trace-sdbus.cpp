#include "trace-sdbus.h"

#include <string_view>

namespace Platform {

namespace {

// FNV-1a over the sender, then the serial.
uint64_t NumberOf(std::string_view sender, uint64_t serial)
{
    constexpr uint64_t kPrime = 0x100000001b3;
    uint64_t hash = 0xcbf29ce484222325;
    for (const char c : sender) hash = (hash ^ static_cast<uint8_t>(c)) * kPrime;
    for (int shift = 0; shift < 32; shift += 8) hash = (hash ^ ((serial >> shift) & 0xff)) * kPrime;
    return hash ^ (hash >> 32);
}

uint64_t SerialOf(sd_bus_message* message)
{
    uint64_t serial = 0;
    sd_bus_message_get_cookie(message, &serial);
    return serial;
}

}  // namespace

void TraceSent(const TraceSpan& span, sd_bus* bus, sd_bus_message* message)
{
    if (!span.IsRecorded()) return;
    const char* self = nullptr;
    if (sd_bus_get_unique_name(bus, &self) >= 0) span.FlowOut(NumberOf(self, SerialOf(message)));
}

void TraceArrived(const TraceSpan& span, sd_bus_message* message)
{
    if (!span.IsRecorded()) return;
    if (const char* sender = sd_bus_message_get_sender(message))
        span.FlowIn(NumberOf(sender, SerialOf(message)));
}

}  // namespace Platform
