// Dates that the phone asks for: written as on the watch, in its language and time zone at this moment.

#include <cstdint>
#include <cstdlib>

#include "common-util-i18n.h"
#include "common-util-system-settings.h"
#include "message-values.h"
#include "message-vocabulary.h"
#include "service-log.h"
#include "service-msg-control.h"

namespace WatchfaceService {

namespace {

// As strtoll() reads it: a text without digits is 0.
int64_t InstantOf(bundle* message)
{
    const std::string timestamp = Get(message, MessageKey::kTimestamp);
    if (timestamp.empty()) LOG_ERROR("data/timestamp is empty");
    const int64_t instant = std::strtoll(timestamp.c_str(), nullptr, 10);
    LOG_INFO("timestampString[%s] timestamp[%lld]", timestamp.c_str(), static_cast<long long>(instant));
    return instant;
}

std::string Formatted(const std::string& skeleton, bool bestPattern, int64_t instant)
{
    const std::string timezonePath = CommonUtilSystemSettings::GetTimezonePath();
    const std::string language = CommonUtilSystemSettings::GetLanguage();
    CommonUtilI18NDateFormatter formatter(skeleton, timezonePath, language, bestPattern);
    return formatter.Format(instant, kCommonUtilI18NTimestampMilliseconds);
}

}  // namespace

// The answer goes to the phone, whoever asked; a date that cannot be written has none.
void MsgControl::OnDateRequest(const Request& request)
{
    const int64_t instant = InstantOf(request.message);
    const std::string skeleton = Get(request.message, MessageKey::kSkeleton);
    if (skeleton.empty()) LOG_ERROR("data/skeleton is empty");
    const std::string bestPattern = Get(request.message, MessageKey::kBestPattern);
    if (bestPattern.empty()) LOG_ERROR("data/bestPatternString is empty");

    std::string formatted;
    if (!skeleton.empty()) formatted = Formatted(skeleton, bestPattern == kTrue, instant);
    LOG_ERROR("formattedString = [%s]", formatted.c_str());
    SendIcuRequestReplyToWms(request.type, formatted);
}

}  // namespace WatchfaceService
