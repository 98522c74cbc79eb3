// Which areas an application writes beside its own: what the confinement of a process allows, what a unit
// mounts writable, and whose the folders are on a device.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "application-table.h"
#include "areas.h"

namespace Platform {

struct AreaWriter {
    std::string_view application;
    std::string (Areas::*area)(const std::string& appId) const;
    std::string_view of;  // the application whose area it is
};

inline constexpr AreaWriter kAreaWriters[] = {
    {kServiceId, &Areas::DataOf,    kFacesId},
    {kServiceId, &Areas::TrustedOf, kFacesId},
    {kCaptureId, &Areas::DataOf,    kFacesId},
};

// All folders that the application makes, writes and removes files in.
inline std::vector<std::string> WritableFolders(const Areas& areas, const std::string& appId)
{
    std::vector<std::string> folders = {areas.Common(), areas.PrivateOf(appId)};
    for (const AreaWriter& writer : kAreaWriters) {
        if (writer.application == appId) folders.push_back((areas.*writer.area)(std::string(writer.of)));
    }
    return folders;
}

}  // namespace Platform
