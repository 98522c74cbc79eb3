#include "launch-sdbus.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "bundle-wire-sdbus.h"
#include "platform-log.h"

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
        const MessagePtr call = std::move(mCall);
        sd_bus_message* raw = nullptr;
        int code = sd_bus_message_new_method_return(call.get(), &raw);
        const MessagePtr answer(raw);
        if (code >= 0) code = sd_bus_message_append(raw, "i", static_cast<int>(result));
        if (code >= 0) code = AppendLaunchData(raw, extra);
        if (code >= 0) code = sd_bus_send(sd_bus_message_get_bus(call.get()), raw, nullptr);
        if (code >= 0) return APP_CONTROL_ERROR_NONE;
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

// An application that runs needs no starting, also when the bus knows no way to start it.
bool IsRunning(sd_bus* bus, const std::string& app)
{
    sd_bus_message* answer = nullptr;
    BusError error;
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
    sd_bus* raw = nullptr;
    int code = sd_bus_new(&raw);
    const BusPtr bus(raw);
    if (code >= 0) code = sd_bus_set_address(raw, address.c_str());
    if (code >= 0) code = sd_bus_set_bus_client(raw, true);
    if (code >= 0) code = sd_bus_set_method_call_timeout(raw, kStartTimeoutUsec);
    if (code >= 0) code = sd_bus_start(raw);
    if (code < 0) return AppControlError(code);
    BusError error;
    sd_bus_message* answer = nullptr;
    code = sd_bus_call_method(raw, kDriver, kDriverPath, kDriver, "StartServiceByName", error.Out(), &answer,
                              "su", app.c_str(), 0U);
    const MessagePtr owned(answer);
    if (code >= 0) return APP_CONTROL_ERROR_NONE;
    if (error.Is(SD_BUS_ERROR_SERVICE_UNKNOWN) && IsRunning(raw, app)) return APP_CONTROL_ERROR_NONE;
    PLATFORM_FAULT("could not start [%s]: %s", app.c_str(), error.Text());
    return CouldNotStart(error) ? APP_CONTROL_ERROR_LAUNCH_FAILED : AppControlError(code);
}

LaunchReceiver::LaunchReceiver(Bus& bus, Handler handler) : mHandler(std::move(handler))
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
    std::string error;
    const char* caller = nullptr;
    if (sd_bus_message_read(message, "s", &caller) < 0 || !ReadLaunchData(message, &request.extra, &error)) {
        PLATFORM_REFUSAL("launch request refused: %s", error.c_str());
        return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_INVALID_ARGS, "%s", error.c_str());
    }
    request.appId = caller;
    request.pending = std::make_shared<PendingCall>(message);
    static_cast<LaunchReceiver*>(data)->mHandler(&request);
    return 1;
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
    int code = 0;
    const MessagePtr call = NewLaunchCall(mBus.Get(), request.appId, mAppId, request.extra, &code);
    const auto pending = mPending.insert(mPending.end(), {std::move(request), callback, userData, {}});
    if (call) {
        pending->slot = CallAsync(
            mBus.Get(), call.get(), UINT64_MAX,
            [this, pending](sd_bus_message* answer) { Answered(pending, answer); }, &code);
    }
    if (pending->slot) return;
    PLATFORM_FAULT("launch request to [%s] not sent: %s", pending->request.appId.c_str(),
                   std::strerror(-code));
    mPending.erase(pending);
}

void LaunchSender::Answered(std::list<Pending>::iterator it, sd_bus_message* answer)
{
    // The slot is kept until the callback has returned: the function object that runs us lives in it.
    std::list<Pending> one;
    one.splice(one.begin(), mPending, it);
    Pending& pending = one.front();
    app_control_s reply;
    std::string error;
    int result = APP_CONTROL_RESULT_FAILED;
    const bool read = !sd_bus_message_get_error(answer) && sd_bus_message_read(answer, "i", &result) >= 0 &&
                      ReadLaunchData(answer, &reply.extra, &error);
    if (!read) PLATFORM_FAULT("launch request to [%s] was not answered", pending.request.appId.c_str());
    if (pending.callback) {
        const auto code = read && result == 0 ? APP_CONTROL_RESULT_SUCCEEDED : APP_CONTROL_RESULT_FAILED;
        pending.callback(&pending.request, &reply, code, pending.userData);
    }
}

void LaunchSender::CancelAll()
{
    mCancelled = true;
    mPending.clear();
}

}  // namespace Platform
