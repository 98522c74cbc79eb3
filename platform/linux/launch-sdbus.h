// Launch requests on the bus: the object that takes them, and the way they are sent.

#pragma once

#include <functional>
#include <list>
#include <string>

#include "bus-names.h"
#include "bus-sdbus.h"
#include "common-util-tasks.h"
#include "event-loop-sdevent.h"
#include "launch-data.h"
#include "refusal-log.h"

namespace Platform {

// How long an application may take to come up.
inline constexpr uint64_t kStartTimeoutUsec = 3'000'000;

// A `Launch` call, ready to be sent.
MessagePtr NewLaunchCall(sd_bus* bus, const std::string& app, const std::string& caller,
                         const LaunchData& extra, int* result);

// Starts an application through the bus on a connection of its own, on any thread, and waits until it is
// there: 0, APP_CONTROL_ERROR_LAUNCH_FAILED when its program could not be started, or another app_control
// error.
int StartApplication(const std::string& address, const std::string& app);

// Requests that other applications make of this one.
class LaunchReceiver {
public:
    using Handler = std::function<void(app_control_h)>;
    LaunchReceiver(Bus& bus, Handler handler);
    LaunchReceiver(const LaunchReceiver&) = delete;
    LaunchReceiver& operator=(const LaunchReceiver&) = delete;

private:
    static int OnLaunch(sd_bus_message* message, void* self, sd_bus_error*);
    int Refuse(sd_bus_message* message, const std::string& reason);

    Handler mHandler;
    RefusalLog mRefusals;
    CommonUtilTimer mRefusalSecond;
    SlotPtr mObject;  // last: no request arrives while the rest is destroyed
};

// Requests that this application makes. Send() may be called on any thread; the rest on the main loop's.
class LaunchSender {
public:
    LaunchSender(Bus& bus, std::string address, std::string appId, LoopInbox& inbox);
    LaunchSender(const LaunchSender&) = delete;
    LaunchSender& operator=(const LaunchSender&) = delete;

    int Send(app_control_h request, app_control_reply_cb callback, void* userData);

    // No callback runs after this.
    void CancelAll();

private:
    struct Pending {
        app_control_s request;
        app_control_reply_cb callback;
        void* userData;
        SlotPtr slot;
    };
    void SendOnLoop(app_control_s request, app_control_reply_cb callback, void* userData);
    void Answered(std::list<Pending>::iterator pending, sd_bus_message* answer);
    void End(std::list<Pending>::iterator pending, app_control_h reply, app_control_result_e result);

    Bus& mBus;
    const std::string mAddress;
    const std::string mAppId;
    LoopInbox& mInbox;
    bool mCancelled = false;
    std::list<Pending> mPending;
};

}  // namespace Platform
