// What a service costs others under load: its memory, and how long they wait for an answer.

#pragma once

#include "a-running-service.h"

namespace Campaign {

// The service's memory in KiB.
struct Memory {
    explicit Memory(const RunningService& service);

    long now;   // its share of what is shared
    long most;  // so far, with all that is shared
};

inline constexpr long kMostGrowth = 160L << 10;  // KiB of the service's memory, at any time
#ifdef WATCH_SANITIZED
inline constexpr bool kKeepsFreedMemory = true;  // a sanitizer, to notice its use
#else
inline constexpr bool kKeepsFreedMemory = false;
#endif

// The milliseconds until a question of the phone-side manager is answered; nobody else asks the same.
double MillisecondsUntilAnswered(RawBus& manager);

}  // namespace Campaign
