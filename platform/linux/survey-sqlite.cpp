#include <chrono>

#include "common-util-log-manager.h"
#include "process.h"

namespace {

int64_t Now()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace

void CommonUtilLogManager::SendStatusSurveyInfo(const std::string& appId, const std::string& feature,
                                                const std::string& value, const std::string& extra)
{
    Platform::Process::Current().Survey().Add({0, Now(), false, appId, feature, value, extra});
}

void CommonUtilLogManager::SendFeatureSurveyInfo(const std::string& appId, const std::string& feature,
                                                 const std::string& value, const std::string& extra)
{
    Platform::Process::Current().Survey().Add({0, Now(), true, appId, feature, value, extra});
}
