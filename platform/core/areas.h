// Where this process finds the watch's files. Set once before anything asks; tests set it to a folder of
// their own.

#pragma once

#include <string>

namespace Platform {

struct Areas {
    std::string root;       // what the watch writes: databases and apps/ (no "/" at the end)
    std::string resources;  // what is installed: A/shared/res/ of every application A

    std::string Common() const;                              // …/common/: what all programs write together
    std::string DataOf(const std::string& appId) const;      // …/shared/data/
    std::string TrustedOf(const std::string& appId) const;   // …/shared/trusted/
    std::string ResourceOf(const std::string& appId) const;  // …/shared/res/
    std::string PrivateOf(const std::string& appId) const;   // …/apps/A/, where its preferences are
};

void SetAreas(Areas areas);
const Areas& CurrentAreas();

}  // namespace Platform
