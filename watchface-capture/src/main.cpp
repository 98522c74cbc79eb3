// The capture application, and its drawing for the command line.

#include <cstring>

#include "capture-application.h"
#include "confinement-landlock.h"
#include "draw-command.h"
#include "service-app.h"

int main(int argc, char** argv)
{
    if (argc > 1) {
        const auto confine = [](const std::string& folder) {
            return Platform::Confine({{folder}, {}, false});
        };
        return Capture::RunDrawCommand(argc, argv, confine);
    }

    CommonUtilAppEventHandler::SetEventFunctions(service_app_add_event_handler,
                                                 service_app_remove_event_handler);
    CommonUtilAppMain application([] { return new Capture::CaptureApplication; });
    service_app_lifecycle_callback_s callbacks{
        CommonUtilAppMain::AppCreated, CommonUtilAppMain::AppTerminated, CommonUtilAppMain::AppControl};
    return service_app_main(argc, argv, &callbacks, &application);
}
