// The entry point: hands the platform's event functions to the application wrapper and runs the service.

#include "common-util-app.h"
#include "service-app.h"
#include "service-log.h"
#include "watchface-service.h"

int main(int argc, char** argv)
{
    CommonUtilAppEventHandler::SetEventFunctions(service_app_add_event_handler,
                                                 service_app_remove_event_handler);
    CommonUtilAppMain appMain([] { return new WatchfaceService::WatchfaceServiceApp(); });

    service_app_lifecycle_callback_s callbacks = {};
    callbacks.create = CommonUtilAppMain::AppCreated;
    callbacks.terminate = CommonUtilAppMain::AppTerminated;
    callbacks.app_control = CommonUtilAppMain::AppControl;
    const int result = service_app_main(argc, argv, &callbacks, &appMain);
    // The text names another call than the one made; what reads the log knows it by this name.
    if (result != 0) LOG_ERROR("ui_app_main returns %d(%x)", result, result);
    return result;
}
