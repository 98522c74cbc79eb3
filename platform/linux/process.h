// One application process: its loop, its connection, and what hangs on them.
//
// The interfaces of the service (keys, ports, launches, …) find it through Current(). It is made by
// service_app_main(), which runs it; a test or a tool may make one of its own.

#pragma once

#include <memory>
#include <string>

#include "bus-sdbus.h"
#include "event-loop-sdevent.h"
#include "launch-sdbus.h"
#include "message-port-sdbus.h"
#include "service-app.h"
#include "survey-store-sqlite.h"
#include "trace-switch-keys.h"
#include "value-store-sqlite.h"

namespace Platform {

// How a program ends when it lost its bus, or had none.
inline constexpr int kExitBusLost = 69;
// How a second instance ends.
inline constexpr int kExitAlreadyRunning = 75;

class Process {
public:
    // Takes the areas from the environment and connects; null with a line in the log when there is no bus.
    static std::unique_ptr<Process> Start(const std::string& appId);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    static Process& Current();  // there is one

    // Creates the application, takes its names, says ready, runs the loop, terminates the application.
    int Run(const service_app_lifecycle_callback_s& callbacks, void* userData);
    void Exit(int code);
    // Gives up the names, works off what the bus has routed to us until then, and ends.
    void Leave();

    const std::string& ApplicationId() const { return mAppId; }
    Bus& GetBus() { return *mBus; }
    MessagePorts& Ports() { return *mPorts; }
    LaunchSender& Launches() { return *mLaunches; }
    ValueStore& Keys() { return mKeys; }
    ValueStore& Preferences() { return mPreferences; }
    SurveyStore& Survey() { return mSurvey; }
    TraceSwitch& Tracing() { return *mTracing; }

private:
    Process(std::string appId, std::string address);
    bool Connect();
    int TakeNames();
    void GiveUpNames();
    void HandleSignals();

    const std::string mAppId;
    const std::string mAddress;
    std::unique_ptr<Bus> mBus;
    LoopInbox mInbox;
    ValueStore mKeys;
    ValueStore mPreferences;
    SurveyStore mSurvey;
    std::unique_ptr<MessagePorts> mPorts;
    std::unique_ptr<LaunchSender> mLaunches;
    std::unique_ptr<TraceSwitch> mTracing;
    std::unique_ptr<CommonUtilIdler> mEnd;
};

// WATCH_ROOT and WATCH_RESOURCES, or where they are when nobody set them.
void SetAreasFromEnvironment();

// PREFIX of the build tree or the installation that this program runs from.
std::string InstallPrefix();

}  // namespace Platform
