#include "service-preview-check.h"

#include <functional>
#include <utility>

#include "service-watchface-manager.h"

namespace WatchfaceService {

PreviewCheck::PreviewCheck(std::shared_ptr<WatchfaceManager> manager)
    : mWatchfaceManager(std::move(manager)), mIdler(std::bind(&PreviewCheck::CheckIdlerCallback, this))
{
}

void PreviewCheck::Add(const std::string&) {}

bool PreviewCheck::IsValid(const std::string&)
{
    return false;
}

CommonUtilTaskReturn PreviewCheck::CheckIdlerCallback()
{
    return kCommonUtilTaskEnd;
}

}  // namespace WatchfaceService
