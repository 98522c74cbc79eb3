#include "trace-switch-keys.h"

#include <utility>

#include "areas.h"
#include "platform-keys-sdbus.h"
#include "platform-log.h"
#include "trace-event-json.h"

namespace Platform {

std::string TracePath()
{
    return CurrentAreas().Common() + "trace.json";
}

TraceSwitch::TraceSwitch(Bus& bus, ValueStore& keys, std::string appId)
    : mBus(bus), mKeys(keys), mAppId(std::move(appId))
{
}

TraceSwitch::~TraceSwitch()
{
    Trace::Leave();
}

void TraceSwitch::Follow()
{
    mWatch = WatchKey(mBus.Get(), kTraceKey, [this] { Obey(); });
    Obey();
}

void TraceSwitch::Obey()
{
    if (GetAs<bool>(mKeys, kTraceKey).value_or(false)) {
        Trace::Join(TracePath(), mAppId);
    } else {
        Trace::Leave();
    }
}

void TraceSwitch::Set(bool on)
{
    if (on && !Trace::Begin(TracePath(), mAppId)) return;
    SetKey(mKeys, mBus.Get(), kTraceKey, on);
    if (!on) Trace::Leave();
    PLATFORM_NOTE("the trace [%s] %s", TracePath().c_str(), on ? "begins" : "ends");
}

}  // namespace Platform
