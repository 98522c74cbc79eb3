// A peer that sends as fast as it goes, in a process of its own.

#pragma once

#include <sys/types.h>

#include "a-running-service.h"
#include "unique-fd.h"

namespace Campaign {

// What is sent over and over, as fast as it goes. Calls go on when one is answered; what expects no
// reply is taken by the bus as fast as it can.
struct Flood {
    const char* name;
    const char* kind;  // of the table
    std::size_t bytes;
    bool isAnswered;
};

// Floods once it is made, and until it goes, which waits until what it has sent is worked off.
class Flooder {
public:
    // `calls`: how many it has on their way. Returns when these are sent; throws std::runtime_error when they
    // cannot be.
    Flooder(const RunningService& service, const Identity& peer, const Flood& flood, int calls);
    ~Flooder();
    Flooder(const Flooder&) = delete;
    Flooder& operator=(const Flooder&) = delete;

private:
    Platform::UniqueFd mStop;
    pid_t mPid = -1;
};

}  // namespace Campaign
