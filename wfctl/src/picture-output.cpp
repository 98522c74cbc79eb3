#include "picture-output.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "child-process.h"
#include "json-text.h"

namespace Wfctl {

void ShowPicture(const std::string& path)
{
    if (!WantsColor()) return;
    const std::string viewer = FindProgram("chafa");
    if (!viewer.empty()) RunProgram(viewer, {"--size=40x20", path});
}

std::string PictureNameProblem(const std::string& path)
{
    constexpr std::string_view kOthers[] = {".jpg", ".jpeg", ".gif", ".webp", ".bmp", ".tiff", ".pdf"};
    std::string end = std::filesystem::path(path).extension();
    std::ranges::transform(end, end.begin(), [](unsigned char c) { return std::tolower(c); });
    if (std::ranges::find(kOthers, end) == std::end(kOthers)) return {};
    return "pictures are PNGs, or SVGs where the name ends in .svg; [" + path + "] would be neither";
}

}  // namespace Wfctl
