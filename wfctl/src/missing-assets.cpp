#include "missing-assets.h"

#include <filesystem>

#include "json-text.h"
#include "shell-command.h"

namespace Wfctl {

std::set<std::string> MissingAssets(const Face& face, std::set<std::string> assets)
{
    std::erase_if(assets, [&](const std::string& asset) {
        std::error_code error;
        return std::filesystem::exists(face.folder + asset, error) ||
               std::filesystem::exists(ShippedFaces() + face.name + "/" + asset, error);
    });
    return assets;
}

void WarnOfMissingAssets(const std::string& name, const std::set<std::string>& assets)
{
    const Face face = WritableFace(name);
    for (const std::string& asset : MissingAssets(face, assets)) {
        Warn("[" + asset + "] is not on the watch, so the face is shown without it; put it at [" +
             face.folder + asset + "], then: " + WatchCommand("preview request " + ShellWord(name)));
    }
}

}  // namespace Wfctl
