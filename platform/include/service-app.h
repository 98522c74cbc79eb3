// The life of a service application: one main loop, created, asked, terminated.

#pragma once

#include <stdbool.h>

#include "app-control.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
    bool (*create)(void* userData);  // false ends the program
    void (*terminate)(void* userData);
    void (*app_control)(app_control_h request, void* userData);
} service_app_lifecycle_callback_s;

// Opens the bus, runs `create`, takes the names of the ports and last the application's own, says ready,
// and runs the main loop until the program is told to end; then gives up the names and runs `terminate`,
// whose answers to held launch requests still leave. Returns 0, or a code when the application could not run
// or lost its bus. A second instance is refused.
int service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callbacks, void* userData);

// Ends the application on its own wish: it gives up its ports and its name, works off what has arrived by
// then, and service_app_main() returns 0. A message that comes later finds nobody, or starts the program
// anew.
void service_app_exit(void);

typedef enum {
    APP_EVENT_LOW_MEMORY = 0,
    APP_EVENT_LOW_BATTERY,
    APP_EVENT_LANGUAGE_CHANGED,
    APP_EVENT_DEVICE_ORIENTATION_CHANGED,
    APP_EVENT_REGION_FORMAT_CHANGED,
} app_event_type_e;

typedef struct app_event_info* app_event_info_h;
typedef struct app_event_handler* app_event_handler_h;
typedef void (*app_event_cb)(app_event_info_h info, void* userData);

// Registers for one kind of system event. The handle is removed by its owner.
int service_app_add_event_handler(app_event_handler_h* handler, app_event_type_e type, app_event_cb callback,
                                  void* userData);
int service_app_remove_event_handler(app_event_handler_h handler);

#ifdef __cplusplus
}
#endif
