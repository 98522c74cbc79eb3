// Attacks on a running service, and how each went.

#pragma once

#include "a-running-service.h"

namespace Campaign {

struct Outcome {
    int tried = 0;
    int accepted = 0;  // of those, by mistake
    int refused = 0;   // of those that were right
};

struct Scene {
    const RunningService& service;
    int times;
};

// Every field of every message that becomes a path, or a part of one, or a key of a database, names what lies
// elsewhere. Each kind of message is sent with a harmless value first, and must then do what it is for.
Outcome NamePaths(const Scene& scene);

}  // namespace Campaign
