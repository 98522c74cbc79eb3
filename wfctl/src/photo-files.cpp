#include "photo-files.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "application-table.h"
#include "area-copy.h"
#include "areas.h"
#include "exit-status.h"
#include "folder-entries.h"
#include "png-file.h"
#include "private-watch.h"
#include "reading-files.h"
#include "shell-command.h"
#include "unique-fd.h"

namespace Wfctl {

namespace {

constexpr std::uintmax_t kMostPhotoBytes = std::uintmax_t{32} << 20;  // what a drawing reads

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

// Whether the last scan of a JPEG ends. Nothing inside a scan reads like a marker.
bool HasEnd(std::string_view jpeg)
{
    const auto scan = jpeg.rfind("\xff\xda");
    return scan != std::string_view::npos && jpeg.find("\xff\xd9", scan) != std::string_view::npos;
}

// What is wrong with a file that can be read; stops where it cannot.
std::string ProblemOfBytes(const std::string& path)
{
    switch (KindOfPicture(path)) {
        case PictureKind::kNone:
            return "is neither a PNG nor a JPEG";
        case PictureKind::kPng:
            return LookAtPng(path).kind == PngKind::kNone
                       ? "is a damaged PNG, or one of more than 4096 pixels a side"
                       : "";
        case PictureKind::kJpeg:
            return HasEnd(ReadNamedFile(path)) ? "" : "is a JPEG that is cut short";
    }
    return {};
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
    std::vector<std::string> names;
    for (const std::filesystem::path& path : EntriesOf(folder)) {
        std::error_code error;
        if (!std::filesystem::is_directory(path, error)) names.push_back(path.filename());
    }
    return names;
}

std::string PhotoPath(const DataUtil::Photos& photos, const std::string& name)
{
    if (photos.background == "theme") return ThemeFolder() + "Backgrounds/" + name;
    return ThemeFolder() + "GalleryBackgrounds/" + (photos.prefix.empty() ? "" : photos.prefix + "/") + name;
}

std::string PhotoProblem(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(path, error)))
        return "is no regular file";
    if (std::filesystem::file_size(path, error) > kMostPhotoBytes && !error) return "is larger than 32 MiB";
    if (!Platform::UniqueFd(open(path.c_str(), O_RDONLY | O_CLOEXEC)))
        return std::string("cannot be read (") + std::strerror(errno) + ")";
    try {
        return ProblemOfBytes(path);
    } catch (const Stop&) {
        return "cannot be read";
    }
}

std::string AddCommand(const DataUtil::Photos& photos, const std::string& file)
{
    return RunningWatchCommand("bg add --type " + KindOf(photos) + " " + ShellQuoted(file));
}

}  // namespace Wfctl
