// Whether the watch records its trace: a platform key, which every application follows.

#pragma once

#include <string>

#include "bus-sdbus.h"
#include "value-store-sqlite.h"

namespace Platform {

inline constexpr char kTraceKey[] = "db/system/trace";

class TraceSwitch {
public:
    TraceSwitch(Bus& bus, ValueStore& keys, std::string appId);
    ~TraceSwitch();  // this process records no more
    TraceSwitch(const TraceSwitch&) = delete;
    TraceSwitch& operator=(const TraceSwitch&) = delete;

    // Joins the trace that is being recorded, if one is, and each that is begun from here on.
    void Follow();
    // Begins a new trace, for all applications, or ends it.
    void Set(bool on);

private:
    void Obey();

    Bus& mBus;
    ValueStore& mKeys;
    const std::string mAppId;
    SlotPtr mWatch;
};

// The file of the trace, below the watch's root.
std::string TracePath();

}  // namespace Platform
