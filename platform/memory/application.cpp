// The life of the application, its events and its usage records.

#include <algorithm>
#include <ostream>

#include "common-util-log-manager.h"
#include "platform-state.h"
#include "service-app.h"

using namespace MemoryPlatform;

int service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callbacks, void* userData)
{
    State* state = Current();
    std::string call = "service_app_main";
    for (int i = 0; i < argc; ++i) call += std::string(" ") + argv[i];
    Note(call);
    const MainScript script = state->mainScript;
    if (!script.runs) return script.result;
    state->application = callbacks;
    state->applicationData = userData;
    if (callbacks->create(userData)) {
        if (script.body) {
            script.body();
        } else {
            state->loop.RunUntilIdle();
        }
    }
    {
        const std::lock_guard lock(state->launchMutex);
        state->waitingReplies.clear();
    }
    callbacks->terminate(userData);
    state->application = nullptr;
    return script.result;
}

void service_app_exit(void)
{
    Note("service_app_exit");
}

int service_app_add_event_handler(app_event_handler_h* handler, app_event_type_e type, app_event_cb callback,
                                  void* userData)
{
    Note("event add " + std::to_string(type));
    if (const auto code = Use("service_app_add_event_handler")) return *code;
    *handler = new app_event_handler{type, callback, userData};
    Current()->eventHandlers.push_back(*handler);
    return 0;
}

int service_app_remove_event_handler(app_event_handler_h handler)
{
    State* state = Current();
    if (!state || std::erase(state->eventHandlers, handler) == 0) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    Note("event remove " + std::to_string(handler->type));
    delete handler;
    return 0;
}

namespace {

std::string CallOf(const SurveyRecord& record)
{
    return std::string("survey ") + (record.feature ? "feature " : "status ") + record.appId + " " +
           record.name + " " + record.value + " " + record.extra;
}

void Report(const SurveyRecord& record)
{
    Note(CallOf(record));
    Current()->survey.push_back(record);
    if (Current()->onSurvey) Current()->onSurvey(record);
}

}  // namespace

void CommonUtilLogManager::SendStatusSurveyInfo(const std::string& appId, const std::string& feature,
                                                const std::string& value, const std::string& extra)
{
    Report({false, appId, feature, value, extra});
}

void CommonUtilLogManager::SendFeatureSurveyInfo(const std::string& appId, const std::string& feature,
                                                 const std::string& value, const std::string& extra)
{
    Report({true, appId, feature, value, extra});
}

namespace MemoryPlatform {

void PrintTo(const SurveyRecord& record, std::ostream* out)
{
    *out << CallOf(record);
}

void Platform::ScriptMain(MainScript script)
{
    mState->mainScript = std::move(script);
}

void Platform::OnSurvey(std::function<void(const SurveyRecord&)> sent)
{
    mState->onSurvey = std::move(sent);
}

void Platform::RaiseEvent(app_event_type_e type)
{
    const std::vector<app_event_handler_h> now = mState->eventHandlers;
    for (const app_event_handler_h handler : now) {
        const auto& left = mState->eventHandlers;
        if (std::find(left.begin(), left.end(), handler) == left.end() || handler->type != type) continue;
        handler->callback(nullptr, handler->userData);
    }
}

}  // namespace MemoryPlatform
