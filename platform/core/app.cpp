#include "common-util-app.h"

#include <utility>

void CommonUtilAppInterface::OnAppControl(app_control_s*) {}
void CommonUtilAppInterface::OnAppPause() {}
void CommonUtilAppInterface::OnAppResume() {}
void CommonUtilAppInterface::OnAppTimeTick(const CommonUtilWatchTimeInfo&) {}
void CommonUtilAppInterface::OnAppAmbientTick(const CommonUtilWatchTimeInfo&) {}
void CommonUtilAppInterface::OnAppAmbientChanged(bool) {}
void CommonUtilAppInterface::OnAppLowMemory() {}
void CommonUtilAppInterface::OnAppLowBattery() {}

namespace {

struct EventFunctions {
    CommonUtilAppEventHandler::AddFunction add = nullptr;
    CommonUtilAppEventHandler::RemoveFunction remove = nullptr;
};

EventFunctions& Functions()
{
    static EventFunctions functions;
    return functions;
}

}  // namespace

void CommonUtilAppEventHandler::SetEventFunctions(AddFunction add, RemoveFunction remove)
{
    Functions() = {add, remove};
}

CommonUtilAppEventHandler::CommonUtilAppEventHandler(app_event_type_e type, std::function<void()> handler)
    : mHandler(std::move(handler))
{
    if (!Functions().add) return;
    const auto run = [](app_event_info_h, void* self) {
        static_cast<CommonUtilAppEventHandler*>(self)->mHandler();
    };
    if (Functions().add(&mHandle, type, run, this) != 0) mHandle = nullptr;
}

CommonUtilAppEventHandler::~CommonUtilAppEventHandler()
{
    if (mHandle && Functions().remove) Functions().remove(mHandle);
}

CommonUtilAppMain::CommonUtilAppMain(std::function<CommonUtilAppInterface*()> factory)
    : mFactory(std::move(factory))
{
}

CommonUtilAppMain::~CommonUtilAppMain() = default;

bool CommonUtilAppMain::AppCreated(void* userData)
{
    auto* self = static_cast<CommonUtilAppMain*>(userData);
    self->mApp.reset(self->mFactory());
    if (!self->mApp) return false;
    self->mLowMemory = std::make_unique<CommonUtilAppEventHandler>(APP_EVENT_LOW_MEMORY,
                                                                   [self] { self->mApp->OnAppLowMemory(); });
    self->mLowBattery = std::make_unique<CommonUtilAppEventHandler>(
        APP_EVENT_LOW_BATTERY, [self] { self->mApp->OnAppLowBattery(); });
    return true;
}

void CommonUtilAppMain::AppTerminated(void* userData)
{
    auto* self = static_cast<CommonUtilAppMain*>(userData);
    self->mLowBattery.reset();
    self->mLowMemory.reset();
    self->mApp.reset();
}

void CommonUtilAppMain::AppControl(app_control_h request, void* userData)
{
    auto* self = static_cast<CommonUtilAppMain*>(userData);
    if (self->mApp) self->mApp->OnAppControl(request);
}
