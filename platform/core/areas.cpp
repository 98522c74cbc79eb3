#include "areas.h"

#include <cstring>
#include <utility>

#include "app-manager.h"

namespace Platform {

namespace {
Areas& Current()
{
    static Areas areas;
    return areas;
}
}  // namespace

std::string Areas::Common() const
{
    return root + "/common/";
}
std::string Areas::PrivateOf(const std::string& appId) const
{
    return root + "/apps/" + appId + "/";
}
std::string Areas::DataOf(const std::string& appId) const
{
    return PrivateOf(appId) + "shared/data/";
}
std::string Areas::TrustedOf(const std::string& appId) const
{
    return PrivateOf(appId) + "shared/trusted/";
}

std::string Areas::ResourceOf(const std::string& appId) const
{
    return resources + "/" + appId + "/shared/res/";
}

void SetAreas(Areas areas)
{
    Current() = std::move(areas);
}
const Areas& CurrentAreas()
{
    return Current();
}

}  // namespace Platform

namespace {

constexpr int kInvalidParameter = -22;
constexpr int kNoMemory = -12;

int Answer(const char* appId, char** path, std::string (Platform::Areas::*area)(const std::string&) const)
{
    if (!appId || !*appId || !path) return kInvalidParameter;
    char* text = strdup((Platform::CurrentAreas().*area)(appId).c_str());
    if (!text) return kNoMemory;
    *path = text;
    return 0;
}

}  // namespace

int app_manager_get_shared_resource_path(const char* appId, char** path)
{
    return Answer(appId, path, &Platform::Areas::ResourceOf);
}

int app_manager_get_shared_data_path(const char* appId, char** path)
{
    return Answer(appId, path, &Platform::Areas::DataOf);
}

int app_manager_get_shared_trusted_path(const char* appId, char** path)
{
    return Answer(appId, path, &Platform::Areas::TrustedOf);
}
