// Launch requests: the calls shared with every platform, recorded, and sending and receiving for tests.

#include "app-control.h"
#include "app-manager.h"
#include "platform-state.h"

using namespace MemoryPlatform;

extern "C" {

int __real_app_control_create(app_control_h* handle);
int __real_app_control_clone(app_control_h* clone, app_control_h handle);
int __real_app_control_destroy(app_control_h handle);
int __real_app_control_set_app_id(app_control_h handle, const char* appId);
int __real_app_control_add_extra_data(app_control_h handle, const char* key, const char* value);
int __real_app_control_get_extra_data(app_control_h handle, const char* key, char** value);
int __real_app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                               app_control_result_e result);

int __wrap_app_control_create(app_control_h* handle)
{
    Note("app_control_create");
    if (const auto code = Use("app_control_create")) return *code;
    return __real_app_control_create(handle);
}

int __wrap_app_control_clone(app_control_h* clone, app_control_h handle)
{
    Note("app_control_clone");
    if (const auto code = Use("app_control_clone")) return *code;
    const int result = __real_app_control_clone(clone, handle);
    if (result != APP_CONTROL_ERROR_NONE) return result;
    State* state = Current();
    const std::lock_guard lock(state->launchMutex);
    state->clones.insert(*clone);
    return result;
}

int __wrap_app_control_destroy(app_control_h handle)
{
    Note("app_control_destroy");
    const auto code = Use("app_control_destroy");
    if (State* state = Current()) {
        const std::lock_guard lock(state->launchMutex);
        state->clones.erase(handle);
    }
    const int result = __real_app_control_destroy(handle);
    return code ? *code : result;
}

int __wrap_app_control_set_app_id(app_control_h handle, const char* appId)
{
    Note(std::string("app_control_set_app_id ") + (appId ? appId : "(null)"));
    if (const auto code = Use("app_control_set_app_id")) return *code;
    return __real_app_control_set_app_id(handle, appId);
}

int __wrap_app_control_add_extra_data(app_control_h handle, const char* key, const char* value)
{
    if (const auto code = Use("app_control_add_extra_data")) return *code;
    return __real_app_control_add_extra_data(handle, key, value);
}

int __wrap_app_control_get_extra_data(app_control_h handle, const char* key, char** value)
{
    if (const auto code = Use("app_control_get_extra_data")) return *code;
    return __real_app_control_get_extra_data(handle, key, value);
}

int __wrap_app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                               app_control_result_e result)
{
    Note("launch reply " + std::to_string(result) + " " +
         ToText(reply ? ContentOf(reply->extra) : Message()));
    if (const auto code = Use("app_control_reply_to_launch_request")) return *code;
    return __real_app_control_reply_to_launch_request(reply, request, result);
}

}  // extern "C"

int app_control_send_launch_request(app_control_h handle, app_control_reply_cb callback, void* userData)
{
    State* state = Current();
    if (!handle || handle->appId.empty() || !state) return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const Message extra = ContentOf(handle->extra);
    Note("launch " + handle->appId + " " + ToText(extra));
    const auto failure = Use("app_control_send_launch_request");
    const int thread = state->record->ThreadNumber();

    const std::lock_guard lock(state->launchMutex);
    int result = failure.value_or(APP_CONTROL_ERROR_NONE);
    if (!failure && !state->launchResults.empty()) {
        result = state->launchResults.front();
        state->launchResults.pop_front();
    }
    state->launches.push_back({handle->appId, extra, result, thread});
    if (result != APP_CONTROL_ERROR_NONE || !callback) return result;
    WaitingReply waiting{*handle, callback, userData};
    if (!state->repliesAtOnce) {
        state->waitingReplies.push_back(std::move(waiting));
        return result;
    }
    state->loop.Post([waiting]() mutable {
        app_control_s reply;
        waiting.callback(&waiting.request, &reply, APP_CONTROL_RESULT_SUCCEEDED, waiting.userData);
    });
    return result;
}

namespace MemoryPlatform {

struct ReceivedRequest::Answer {
    bool given = false;
    int result = 0;
    Message extra;
};

class ReceivedRequest::Pending : public ::Platform::PendingLaunch {
public:
    explicit Pending(std::shared_ptr<Answer> answer) : mAnswer(std::move(answer)) {}
    ~Pending() override
    {
        if (!mAnswer->given) *mAnswer = {true, APP_CONTROL_RESULT_FAILED, {}};
    }
    int Reply(app_control_result_e result, const ::Platform::LaunchData& extra) override
    {
        if (mAnswer->given) return APP_CONTROL_ERROR_INVALID_PARAMETER;
        *mAnswer = {true, result, ContentOf(extra)};
        return APP_CONTROL_ERROR_NONE;
    }

private:
    std::shared_ptr<Answer> mAnswer;
};

ReceivedRequest::ReceivedRequest(const Message& extra, const std::string& caller)
    : mAnswer(std::make_shared<Answer>()),
      mHandle(new app_control_s{caller, LaunchDataOf(extra), std::make_shared<Pending>(mAnswer)})
{
}

ReceivedRequest::~ReceivedRequest()
{
    Close();
}

void ReceivedRequest::Close()
{
    delete std::exchange(mHandle, nullptr);
}

bool ReceivedRequest::IsAnswered() const
{
    return mAnswer->given;
}
int ReceivedRequest::Result() const
{
    return mAnswer->result;
}
Message ReceivedRequest::ReplyExtra() const
{
    return mAnswer->extra;
}

void Platform::ScriptLaunches(const std::vector<int>& results)
{
    const std::lock_guard lock(mState->launchMutex);
    mState->launchResults.assign(results.begin(), results.end());
}

std::vector<Launch> Platform::Launches() const
{
    const std::lock_guard lock(mState->launchMutex);
    return mState->launches;
}

bool Platform::ReplyToLaunch(app_control_result_e result, const Message& extra)
{
    const std::lock_guard lock(mState->launchMutex);
    if (mState->waitingReplies.empty()) return false;
    mState->loop.Post([waiting = mState->waitingReplies.front(), result, extra]() mutable {
        app_control_s reply;
        reply.extra = LaunchDataOf(extra);
        waiting.callback(&waiting.request, &reply, result, waiting.userData);
    });
    mState->waitingReplies.pop_front();
    return true;
}

void Platform::ReplyToLaunchesAtOnce(bool on)
{
    const std::lock_guard lock(mState->launchMutex);
    mState->repliesAtOnce = on;
}

std::unique_ptr<ReceivedRequest> Platform::Request(const Message& extra, const std::string& caller)
{
    if (!mState->application) return nullptr;
    auto request = std::make_unique<ReceivedRequest>(extra, caller);
    mState->application->app_control(request->Handle(), mState->applicationData);
    request->Close();
    return request;
}

}  // namespace MemoryPlatform
