#include "service-app.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "app-control.h"
#include "common-util-ipc-control.h"
#include "confinement-landlock.h"
#include "process.h"

extern "C" {
// Part of the executable, made from the table of applications.
extern const char* const kEmbeddedApplicationId;
}

using Platform::Process;

int service_app_main(int, char**, service_app_lifecycle_callback_s* callbacks, void* userData)
{
    const auto process = Process::Start(kEmbeddedApplicationId);
    if (process && !Platform::Confine(Platform::ConfinementOf(kEmbeddedApplicationId))) return EXIT_FAILURE;
    return process ? process->Run(*callbacks, userData) : Platform::kExitBusLost;
}

void service_app_exit(void)
{
    Process::Current().Leave();
}

// No source of these events exists on a plain Linux; the registration is kept for platforms that have one.
struct app_event_handler {
    app_event_type_e type;
};

int service_app_add_event_handler(app_event_handler_h* handler, app_event_type_e type, app_event_cb callback,
                                  void*)
{
    if (!handler || !callback) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    *handler = new (std::nothrow) app_event_handler{type};
    return *handler ? 0 : APP_CONTROL_ERROR_OUT_OF_MEMORY;
}

int service_app_remove_event_handler(app_event_handler_h handler)
{
    if (!handler) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    delete handler;
    return 0;
}

int app_control_send_launch_request(app_control_h handle, app_control_reply_cb callback, void* userData)
{
    return Process::Current().Launches().Send(handle, callback, userData);
}

class CommonUtilIPCControl::Impl {
public:
    Impl(const std::string& name, bool trusted, Callback callback)
        : mName(name), mId(Process::Current().Ports().Open(name, trusted, std::move(callback)))
    {
    }
    ~Impl() { Process::Current().Ports().Close(mId); }
    const std::string& Name() const { return mName; }

private:
    const std::string mName;
    const int mId;
};

CommonUtilIPCControl::CommonUtilIPCControl(const std::string& name, bool trusted, Callback callback)
    : mImpl(std::make_unique<Impl>(name, trusted, std::move(callback)))
{
}
CommonUtilIPCControl::~CommonUtilIPCControl() = default;

int CommonUtilIPCControl::SendTrustedMessage(const std::string& appId, const std::string& port,
                                             bundle* message, const CommonUtilIPCControl* from)
{
    if (!message) return BUNDLE_ERROR_INVALID_PARAMETER;
    return Process::Current().Ports().Send(appId, port, true, from ? from->mImpl->Name() : "", *message);
}

int CommonUtilIPCControl::SendMessage(const std::string& appId, const std::string& port, bundle* message,
                                      const CommonUtilIPCControl* from)
{
    if (!message) return BUNDLE_ERROR_INVALID_PARAMETER;
    return Process::Current().Ports().Send(appId, port, false, from ? from->mImpl->Name() : "", *message);
}

int CommonUtilIPCControl::CheckTrustedRemotePort(const std::string& appId, const std::string& port)
{
    return Process::Current().Ports().IsTrustedPortUp(appId, port);
}

std::string CommonUtilIPCControl::BundleGetString(bundle* message, const std::string& key)
{
    char* value = nullptr;
    bundle_get_str(message, key.c_str(), &value);
    return value ? value : "";
}
