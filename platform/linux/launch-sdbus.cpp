#include "launch-sdbus.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "bundle-wire-sdbus.h"
#include "platform-log.h"
#include "trace-sdbus.h"

namespace Platform {

namespace {

// A request of another application. Whoever drops the last handle unanswered has answered "failed".
class PendingCall final : public PendingLaunch {
public:
    explicit PendingCall(sd_bus_message* call) : mCall(sd_bus_message_ref(call)) {}
    ~PendingCall() override
    {
        if (mCall) Reply(APP_CONTROL_RESULT_FAILED, {});
    }

    int Reply(app_control_result_e result, const LaunchData& extra) override
    {
        if (!mCall) return APP_CONTROL_ERROR_INVALID_PARAMETER;
        const TraceSpan span("launch", "answer");
        sd_bus_message* raw = nullptr;
        int code = sd_bus_message_new_method_return(mCall.get(), &raw);
        const MessagePtr answer(raw);
        if (code >= 0) code = sd_bus_message_append(raw, "i", static_cast<int>(result));
        if (code >= 0) code = AppendLaunchData(raw, extra);
        if (code >= 0) code = sd_bus_send(sd_bus_message_get_bus(mCall.get()), raw, nullptr);
        if (code >= 0) {
            TraceSent(span, sd_bus_message_get_bus(mCall.get()), raw);
            mCall.reset();
            return APP_CONTROL_ERROR_NONE;
        }
        // The caller still waits: another answer is taken, or it is told "failed" with the last handle.
        PLATFORM_FAULT("launch request not answered: %s", std::strerror(-code));
        return APP_CONTROL_ERROR_IO_ERROR;
    }

private:
    MessagePtr mCall;
};

// What the bus says when a program could not be started, as opposed to when the bus itself is in trouble.
bool CouldNotStart(const BusError& error)
{
    return error.Is(SD_BUS_ERROR_SERVICE_UNKNOWN) || error.Is("org.freedesktop.DBus.Error.TimedOut") ||
           std::strncmp(error.Name(), "org.freedesktop.DBus.Error.Spawn.", 33) == 0;
}

using Clock = std::chrono::steady_clock;

// Microseconds until then, at least one.
uint64_t Until(Clock::time_point deadline)
{
    using std::chrono::microseconds;
    const auto left = std::chrono::duration_cast<microseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<uint64_t>(left) : 1;
}

// Returns once the bus has greeted us; a bus that does not answer would hold a call for longer than its
// timeout.
int WaitForGreeting(sd_bus* bus, Clock::time_point deadline)
{
    for (;;) {
        const int ready = sd_bus_is_ready(bus);
        if (ready != 0) return ready;
        int code = sd_bus_process(bus, nullptr);
        if (code == 0 && Clock::now() >= deadline) return -ETIMEDOUT;
        if (code == 0) code = sd_bus_wait(bus, Until(deadline));
        if (code < 0 && code != -EINTR) return code;
    }
}

// An application that runs needs no starting, also when the bus knows no way to start it.
bool IsRunning(sd_bus* bus, const std::string& app, Clock::time_point deadline)
{
    sd_bus_message* answer = nullptr;
    BusError error;
    sd_bus_set_method_call_timeout(bus, Until(deadline));
    const int code = sd_bus_call_method(bus, kDriver, kDriverPath, kDriver, "NameHasOwner", error.Out(),
                                        &answer, "s", app.c_str());
    const MessagePtr owned(answer);
    int has = 0;
    return code >= 0 && sd_bus_message_read(answer, "b", &has) >= 0 && has;
}

int AppControlError(int code)
{
    if (code == -ETIMEDOUT) return APP_CONTROL_ERROR_TIMED_OUT;
    if (code == -EACCES || code == -EPERM) return APP_CONTROL_ERROR_PERMISSION_DENIED;
    return APP_CONTROL_ERROR_IO_ERROR;
}

}  // namespace

MessagePtr NewLaunchCall(sd_bus* bus, const std::string& app, const std::string& caller,
                         const LaunchData& extra, int* result)
{
    sd_bus_message* raw = nullptr;
    int code = sd_bus_message_new_method_call(bus, &raw, app.c_str(), kApplicationPath, kApplicationInterface,
                                              "Launch");
    MessagePtr call(raw);
    if (code >= 0) code = sd_bus_message_append(raw, "s", caller.c_str());
    if (code >= 0) code = AppendLaunchData(raw, extra);
    *result = code < 0 ? code : 0;
    return code < 0 ? MessagePtr() : std::move(call);
}

int StartApplication(const std::string& address, const std::string& app)
{
    const TraceSpan span("launch", "start", {"application", app});
    const auto deadline = Clock::now() + std::chrono::microseconds(kStartTimeoutUsec);
    sd_bus* raw = nullptr;
    int code = sd_bus_new(&raw);
    // Not flushed at the end: that would wait for a bus that does not answer.
    const std::unique_ptr<sd_bus, Releases<sd_bus_close_unref>> bus(raw);
    if (code >= 0) code = sd_bus_set_address(raw, address.c_str());
    if (code >= 0) code = sd_bus_set_bus_client(raw, true);
    if (code >= 0) code = sd_bus_start(raw);
    if (code >= 0) code = WaitForGreeting(raw, deadline);
    if (code >= 0) code = sd_bus_set_method_call_timeout(raw, Until(deadline));
    if (code < 0) {
        PLATFORM_FAULT("could not start [%s]: the bus: %s", app.c_str(), std::strerror(-code));
        return AppControlError(code);
    }
    BusError error;
    sd_bus_message* answer = nullptr;
    code = sd_bus_call_method(raw, kDriver, kDriverPath, kDriver, "StartServiceByName", error.Out(), &answer,
                              "su", app.c_str(), 0U);
    const MessagePtr owned(answer);
    if (code >= 0) return APP_CONTROL_ERROR_NONE;
    if (error.Is(SD_BUS_ERROR_SERVICE_UNKNOWN) && IsRunning(raw, app, deadline))
        return APP_CONTROL_ERROR_NONE;
    PLATFORM_FAULT("could not start [%s]: %s", app.c_str(), error.Text());
    return CouldNotStart(error) ? APP_CONTROL_ERROR_LAUNCH_FAILED : AppControlError(code);
}

LaunchReceiver::LaunchReceiver(Bus& bus, Handler handler)
    : mHandler(std::move(handler)), mRefusalSecond(1.0, [this] {
          mRefusals.EndSecond();
          return kCommonUtilTaskEnd;
      })
{
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Launch", "sa{sv}", "ia{sv}", OnLaunch, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    sd_bus_slot* slot = nullptr;
    const int code =
        sd_bus_add_object_vtable(bus.Get(), &slot, kApplicationPath, kApplicationInterface, kTable, this);
    if (code < 0) PLATFORM_FAULT("could not offer [%s]: %s", kApplicationInterface, std::strerror(-code));
    mObject.reset(slot);
}

int LaunchReceiver::OnLaunch(sd_bus_message* message, void* data, sd_bus_error*)
{
    app_control_s request;
    std::string error = "the message cannot be read";
    const char* caller = nullptr;
    auto* self = static_cast<LaunchReceiver*>(data);
    if (sd_bus_message_read(message, "s", &caller) < 0 || !ReadLaunchData(message, &request.extra, &error)) {
        return self->Refuse(message, error);
    }
    request.appId = caller;
    request.pending = std::make_shared<PendingCall>(message);
    const TraceSpan span("launch", "request", {"from", request.appId});
    TraceArrived(span, message);
    self->mHandler(&request);
    return 1;
}

int LaunchReceiver::Refuse(sd_bus_message* message, const std::string& reason)
{
    const char* sender = sd_bus_message_get_sender(message);
    if (mRefusals.Refused(sender ? sender : "", "launch request: " + reason)) mRefusalSecond.Start();
    return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_INVALID_ARGS, "%s", reason.c_str());
}

LaunchSender::LaunchSender(Bus& bus, std::string address, std::string appId, LoopInbox& inbox)
    : mBus(bus), mAddress(std::move(address)), mAppId(std::move(appId)), mInbox(inbox)
{
}

int LaunchSender::Send(app_control_h request, app_control_reply_cb callback, void* userData)
{
    if (!request || request->appId.empty()) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    if (const int code = StartApplication(mAddress, request->appId); code != 0) return code;
    app_control_s copy = *request;
    copy.pending.reset();
    mInbox.Post([this, copy, callback, userData] { SendOnLoop(copy, callback, userData); });
    return APP_CONTROL_ERROR_NONE;
}

void LaunchSender::SendOnLoop(app_control_s request, app_control_reply_cb callback, void* userData)
{
    if (mCancelled) return;
    const TraceSpan span("launch", "send", {"to", request.appId});
    int code = 0;
    const MessagePtr call = NewLaunchCall(mBus.Get(), request.appId, mAppId, request.extra, &code);
    const auto pending = mPending.insert(mPending.end(), {std::move(request), callback, userData, {}});
    if (call) {
        pending->slot = CallAsync(
            mBus.Get(), call.get(), UINT64_MAX,
            [this, pending](sd_bus_message* answer) { Answered(pending, answer); }, &code);
    }
    if (pending->slot) return TraceSent(span, mBus.Get(), call.get());
    PLATFORM_FAULT("launch request to [%s] not sent: %s", pending->request.appId.c_str(),
                   std::strerror(-code));
    app_control_s nothing;
    End(pending, &nothing, APP_CONTROL_RESULT_FAILED);
}

// Runs the callback, which may send another request or cancel all.
void LaunchSender::End(std::list<Pending>::iterator it, app_control_h reply, app_control_result_e result)
{
    // The slot is kept until the callback has returned: the function object that runs us lives in it.
    std::list<Pending> one;
    one.splice(one.begin(), mPending, it);
    Pending& pending = one.front();
    if (pending.callback) pending.callback(&pending.request, reply, result, pending.userData);
}

void LaunchSender::Answered(std::list<Pending>::iterator pending, sd_bus_message* answer)
{
    const TraceSpan span("launch", "answered", {"by", pending->request.appId});
    TraceArrived(span, answer);
    app_control_s reply;
    std::string error;
    int result = APP_CONTROL_RESULT_FAILED;
    const bool read = !sd_bus_message_get_error(answer) && sd_bus_message_read(answer, "i", &result) >= 0 &&
                      ReadLaunchData(answer, &reply.extra, &error);
    if (!read) PLATFORM_FAULT("launch request to [%s] was not answered", pending->request.appId.c_str());
    const bool succeeded = read && result == 0;
    End(pending, &reply, succeeded ? APP_CONTROL_RESULT_SUCCEEDED : APP_CONTROL_RESULT_FAILED);
}

void LaunchSender::CancelAll()
{
    mCancelled = true;
    mPending.clear();
}

}  // namespace Platform
