// The application wrapper: a factory makes the application object when the platform creates the
// application; it is destroyed when the platform terminates it.

#pragma once

#include <functional>
#include <memory>

#include "app-control.h"
#include "service-app.h"

// A tick of a watch application.
class CommonUtilWatchTimeInfo;

// What an application is asked by the platform. The order of the operations is fixed.
class CommonUtilAppInterface {
public:
    virtual ~CommonUtilAppInterface() = default;
    virtual void OnAppControl(app_control_s* request);
    virtual void OnAppPause();
    virtual void OnAppResume();
    virtual void OnAppTimeTick(const CommonUtilWatchTimeInfo& time);
    virtual void OnAppAmbientTick(const CommonUtilWatchTimeInfo& time);
    virtual void OnAppAmbientChanged(bool ambient);
    virtual void OnAppLowMemory();
    virtual void OnAppLowBattery();
};

// Which functions the wrapper registers for system events with. Set before a CommonUtilAppMain is created.
class CommonUtilAppEventHandler {
public:
    using AddFunction = int (*)(app_event_handler_h*, app_event_type_e, app_event_cb, void*);
    using RemoveFunction = int (*)(app_event_handler_h);
    static void SetEventFunctions(AddFunction add, RemoveFunction remove);

    // Registers while it lives; does nothing without functions.
    CommonUtilAppEventHandler(app_event_type_e type, std::function<void()> handler);
    ~CommonUtilAppEventHandler();
    CommonUtilAppEventHandler(const CommonUtilAppEventHandler&) = delete;
    CommonUtilAppEventHandler& operator=(const CommonUtilAppEventHandler&) = delete;

private:
    std::function<void()> mHandler;
    app_event_handler_h mHandle = nullptr;
};

// Owns the application object between creation and termination. The static operations are the life-cycle
// callbacks; their user data is the CommonUtilAppMain.
class CommonUtilAppMain {
public:
    explicit CommonUtilAppMain(std::function<CommonUtilAppInterface*()> factory);
    ~CommonUtilAppMain();
    CommonUtilAppMain(const CommonUtilAppMain&) = delete;
    CommonUtilAppMain& operator=(const CommonUtilAppMain&) = delete;

    static bool AppCreated(void* userData);
    static void AppTerminated(void* userData);
    static void AppControl(app_control_h request, void* userData);

private:
    std::function<CommonUtilAppInterface*()> mFactory;
    std::unique_ptr<CommonUtilAppInterface> mApp;
    std::unique_ptr<CommonUtilAppEventHandler> mLowMemory;
    std::unique_ptr<CommonUtilAppEventHandler> mLowBattery;
};
