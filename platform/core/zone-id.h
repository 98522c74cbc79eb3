#pragma once

#include <string_view>

namespace Platform {

// The time zone's id in a path of the zone files: "/usr/share/zoneinfo/Asia/Seoul" has "Asia/Seoul". What is
// no such path stands as it is.
inline std::string_view ZoneIdOf(std::string_view path)
{
    constexpr std::string_view kFolder = "/zoneinfo/";
    const auto folder = path.rfind(kFolder);
    if (folder == std::string_view::npos) return path;
    path.remove_prefix(folder + kFolder.size());
    // The same zones lie there once more without and with leap seconds.
    for (const std::string_view variant : {"posix/", "right/"}) {
        if (path.starts_with(variant)) return path.substr(variant.size());
    }
    return path;
}

}  // namespace Platform
