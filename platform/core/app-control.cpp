// What launch requests share on every platform. Sending and receiving is each platform's own.

#include "app-control.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "guarded.h"
#include "launch-data.h"

int app_control_create(app_control_h* handle)
{
    if (!handle) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    *handle = new (std::nothrow) app_control_s;
    return *handle ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_OUT_OF_MEMORY;
}

int app_control_clone(app_control_h* clone, app_control_h handle)
{
    if (!clone || !handle) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return Platform::Guarded<APP_CONTROL_ERROR_OUT_OF_MEMORY>([&] {
        *clone = new app_control_s(*handle);
        return APP_CONTROL_ERROR_NONE;
    });
}

int app_control_destroy(app_control_h handle)
{
    if (!handle) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    delete handle;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_set_app_id(app_control_h handle, const char* appId)
{
    if (!handle || !appId) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return Platform::Guarded<APP_CONTROL_ERROR_OUT_OF_MEMORY>([&] {
        handle->appId = appId;
        return APP_CONTROL_ERROR_NONE;
    });
}

int app_control_add_extra_data(app_control_h handle, const char* key, const char* value)
{
    if (!handle || !key || !*key || !value) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return Platform::Guarded<APP_CONTROL_ERROR_OUT_OF_MEMORY>([&] {
        handle->extra[key] = std::string(value);
        return APP_CONTROL_ERROR_NONE;
    });
}

int app_control_get_extra_data(app_control_h handle, const char* key, char** value)
{
    if (!handle || !key || !value) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    *value = nullptr;
    const auto it = handle->extra.find(std::string_view(key));
    const auto* text = it == handle->extra.end() ? nullptr : std::get_if<std::string>(&it->second);
    if (!text) return APP_CONTROL_ERROR_KEY_NOT_FOUND;
    *value = strdup(text->c_str());
    return *value ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_OUT_OF_MEMORY;
}

int app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                        app_control_result_e result)
{
    if (!request || !request->pending) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    static const Platform::LaunchData kNoData;
    return request->pending->Reply(result, reply ? reply->extra : kNoData);
}
