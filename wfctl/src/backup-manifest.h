// The list of what a backup holds, as the text of manifest.json.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Wfctl {

// What a picture belongs to, as the service calls it.
inline constexpr char kGalleryPictures[] = "watch-bg-gallery-u1";
inline constexpr char kThemePictures[] = "watch-bg-digital";

struct BackupItem {
    std::string name;    // of the watch face, or of the picture; any bytes
    std::string bgType;  // empty: a watch face's result XML
    std::string file;    // in the folder: "faces/…", "pictures/…"
    uint64_t size = 0;   // bytes
    std::string sha256;  // in hexadecimal

    bool IsFace() const { return bgType.empty(); }
    std::string Title() const;  // for people
};

struct BackupManifest {
    std::string made;     // when, as in ISO 8601, UTC
    std::string current;  // the current watch face; empty: another clock was shown
    std::vector<BackupItem> items;
};

// Reads a manifest; stops with Exit::kError and what is wrong. The names of its files do not leave the
// folder.
BackupManifest ParseManifest(const std::string& text);
std::string ManifestText(const BackupManifest& manifest);

// Where in the folder the item's file lies, with "/" at the end.
std::string_view FolderOf(const BackupItem& item);
// Whether a name can be a file's on any disk.
bool IsPlainName(std::string_view name);

}  // namespace Wfctl
