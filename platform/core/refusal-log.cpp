#include "refusal-log.h"

#include "platform-log.h"

namespace Platform {

bool RefusalLog::Refused(const std::string& sender, const std::string& reason)
{
    const bool counting = !mCounting;
    mCounting = true;
    const bool known = mRefusals.size() < kMostSenders || mRefusals.contains(sender);
    const int count = ++mRefusals[known ? sender : "others"];
    if (count <= kLinesASecond)
        PLATFORM_REFUSAL("message of [%s] refused: %s", sender.c_str(), reason.c_str());
    return counting;
}

void RefusalLog::EndSecond()
{
    for (const auto& [sender, count] : mRefusals) {
        if (count <= kLinesASecond) continue;
        PLATFORM_REFUSAL("%d more messages of [%s] refused", count - kLinesASecond, sender.c_str());
    }
    mRefusals.clear();
    mCounting = false;
}

}  // namespace Platform
