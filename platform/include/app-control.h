// Launch requests: asking an application to start and do something, and answering such a request.
//
// A handle holds the target's application id and extra data (string pairs). The request that an
// application receives is released by the platform when its callback returns; a clone keeps it open.
// A request whose last handle goes unanswered is answered for it as failed, without data.

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef struct app_control_s* app_control_h;

typedef enum {
    APP_CONTROL_ERROR_NONE = 0,
    APP_CONTROL_ERROR_INVALID_PARAMETER = -22,
    APP_CONTROL_ERROR_OUT_OF_MEMORY = -12,
    APP_CONTROL_ERROR_TIMED_OUT = -110,
    APP_CONTROL_ERROR_IO_ERROR = -5,
    APP_CONTROL_ERROR_PERMISSION_DENIED = -13,
    APP_CONTROL_ERROR_KEY_NOT_FOUND = -126,
    APP_CONTROL_ERROR_LAUNCH_FAILED = -0x010fffdd,  // 0xFEF00023: the program could not be started
} app_control_error_e;

typedef enum {
    APP_CONTROL_RESULT_SUCCEEDED = 0,
    APP_CONTROL_RESULT_FAILED = -1,
} app_control_result_e;

// Runs on the main loop when the launched application has answered. `request` and `reply` belong to the
// platform and end with the call.
typedef void (*app_control_reply_cb)(app_control_h request, app_control_h reply, app_control_result_e result,
                                     void* userData);

int app_control_create(app_control_h* handle);
int app_control_clone(app_control_h* clone, app_control_h handle);
int app_control_destroy(app_control_h handle);

int app_control_set_app_id(app_control_h handle, const char* appId);
int app_control_add_extra_data(app_control_h handle, const char* key, const char* value);
// `*value` is a new string that the caller releases with free(); null when the key is missing.
int app_control_get_extra_data(app_control_h handle, const char* key, char** value);

// Starts the application where it does not run, within 3 s, and hands it the request. May be called on any
// thread. Returns APP_CONTROL_ERROR_LAUNCH_FAILED when the program could not be started and another
// negative code for any other failure; in both cases `callback` is not called.
int app_control_send_launch_request(app_control_h handle, app_control_reply_cb callback, void* userData);

// Answers `request` (a received request or its clone) with the extra data of `reply`. Once only.
int app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                        app_control_result_e result);

#ifdef __cplusplus
}
#endif
