#include "missing-assets.h"

#include <filesystem>

#include "faces.h"
#include "json-text.h"
#include "shell-command.h"

namespace Wfctl {

void WarnOfMissingAssets(const std::string& face, const std::set<std::string>& assets)
{
    const std::string folder = WritableFace(face).folder;
    for (const std::string& asset : assets) {
        std::error_code error;
        if (std::filesystem::exists(folder + asset, error) ||
            std::filesystem::exists(ShippedFaces() + face + "/" + asset, error))
            continue;
        Warn("[" + asset + "] is not on the watch, so the face is shown without it; put it at [" + folder +
             asset + "], then: " + WatchCommand("preview request " + ShellWord(face)));
    }
}

}  // namespace Wfctl
