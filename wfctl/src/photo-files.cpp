#include "photo-files.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "application-table.h"
#include "areas.h"
#include "private-watch.h"

namespace Wfctl {

namespace {

std::string ThemeFolder()
{
    return Platform::CurrentAreas().TrustedOf(std::string(Platform::kFacesId)) + "theme/";
}

// What `bg --type` calls the pictures of a face.
std::string KindOf(const DataUtil::Photos& photos)
{
    if (photos.background == "theme") return "digital";
    std::string prefix = photos.prefix;
    std::ranges::transform(prefix, prefix.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return prefix.empty() ? "gallery" : "gallery-" + prefix;
}

}  // namespace

std::string PicturesFolder(const std::string& kind)
{
    constexpr std::string_view kGallery = "gallery";
    if (!kind.starts_with(kGallery)) return ThemeFolder() + "Backgrounds/";
    const std::size_t prefixAt = kGallery.size() + 1;  // behind the "-"
    std::string prefix = kind.size() > prefixAt ? kind.substr(prefixAt) : "";
    std::ranges::transform(prefix, prefix.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return ThemeFolder() + "GalleryBackgrounds/" + (prefix.empty() ? "" : prefix + "/");
}

std::vector<std::string> PicturesIn(const std::string& folder)
{
    namespace fs = std::filesystem;
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (!entry.is_directory(error)) names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

std::string PhotoPath(const DataUtil::Photos& photos, const std::string& name)
{
    if (photos.background == "theme") return ThemeFolder() + "Backgrounds/" + name;
    return ThemeFolder() + "GalleryBackgrounds/" + (photos.prefix.empty() ? "" : photos.prefix + "/") + name;
}

std::string AddCommand(const DataUtil::Photos& photos, const std::string& file)
{
    return "wfctl bg add --type " + KindOf(photos) + " " + ShellQuoted(file);
}

}  // namespace Wfctl
