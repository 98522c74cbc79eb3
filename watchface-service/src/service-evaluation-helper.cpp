#include "service-evaluation-helper.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

#include "common-util-pref.h"
#include "message-values.h"
#include "service-log.h"

namespace WatchfaceService {

namespace {

constexpr char kEvaluationPort[] = "evaluation-helper-port";

namespace EvaluationKey {
constexpr char kOperation[] = "evaluation-helper-op";
constexpr char kWatchfaceName[] = "evaluation-helper-watchface-name";
constexpr char kDuration[] = "evaluation-helper-data-duration";
constexpr char kResult[] = "evaluation-helper-ret";  // decimal, the store's code
}  // namespace EvaluationKey

BundlePtr NewReply(bundle* request, int result)
{
    BundlePtr reply(bundle_dup(request));
    Add(reply, EvaluationKey::kResult, std::to_string(result));
    return reply;
}

}  // namespace

using namespace std::placeholders;

EvaluationHelper::EvaluationHelper()
    : mIpcControl(kEvaluationPort, false,
                  std::bind(&EvaluationHelper::OnIPCMessageReceived, this, _1, _2, _3, _4, _5))
{
    LOG_INFO("");
}

EvaluationHelper::~EvaluationHelper()
{
    LOG_INFO("");
}

const EvaluationHelper::Operation EvaluationHelper::kOperations[] = {
    {"evaluation-helper-op-save-duration", &EvaluationHelper::SaveDuration},
    {"evaluation-helper-op-load-duration", &EvaluationHelper::LoadDuration},
};

void EvaluationHelper::OnIPCMessageReceived(int, const std::string& remoteAppId,
                                            const std::string& remotePort, bool, bundle* message)
{
    if (!message) {
        LOG_ERROR("message is nullptr");
        return;
    }
    if (remoteAppId.empty() || remotePort.empty()) {
        LOG_ERROR("remoteAppId[%s] or remotePort[%s] is empty!!", remoteAppId.c_str(), remotePort.c_str());
        return;
    }
    const std::string op = Get(message, EvaluationKey::kOperation);
    const std::string watchName = Get(message, EvaluationKey::kWatchfaceName);
    LOG_INFO("app[%s] op[%s]", remoteAppId.c_str(), op.c_str());

    const auto operation =
        std::ranges::find_if(kOperations, [&](const Operation& o) { return op == o.name; });
    if (operation == std::end(kOperations)) {
        LOG_ERROR("wrong op[%s]", op.c_str());
        return;
    }
    const std::string key = remoteAppId + "+" + watchName + "+" + EvaluationKey::kDuration;
    (this->*operation->handle)({remoteAppId, remotePort, key, message});
}

// The log names the application where it says watch face; what reads it knows the lines so.

void EvaluationHelper::SaveDuration(const Request& request)
{
    const std::string duration = Get(request.message, EvaluationKey::kDuration);
    const int result = CommonUtilPref::SetString(request.key, duration);
    Answer(request, NewReply(request.message, result));
    LOG_INFO("watchface[%s] saved duration[%s]", request.remoteAppId.c_str(), duration.c_str());
}

void EvaluationHelper::LoadDuration(const Request& request)
{
    const auto [result, duration] = CommonUtilPref::GetString(request.key);
    BundlePtr reply = NewReply(request.message, result);
    Add(reply, EvaluationKey::kDuration, duration);
    Answer(request, std::move(reply));
    LOG_INFO("watchface[%s] loaded duration[%s]", request.remoteAppId.c_str(), duration.c_str());
}

// Whether it arrives does not matter here.
void EvaluationHelper::Answer(const Request& request, BundlePtr reply)
{
    CommonUtilIPCControl::SendMessage(request.remoteAppId, request.remotePort, reply.get(), &mIpcControl);
}

}  // namespace WatchfaceService
