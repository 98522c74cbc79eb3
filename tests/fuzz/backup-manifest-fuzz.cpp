// Manifests of backups, from anywhere: what is taken has names that stay in its folder and on the watch, and
// is the same when it is written and read again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "backup-manifest.h"
#include "exit-status.h"

namespace {

void Require(bool holds)
{
    if (!holds) std::abort();
}

bool StaysBelow(const std::string& file)
{
    int depth = 0;
    for (const std::filesystem::path& part : std::filesystem::path(file)) {
        if (part == ".." || part == "." || part.empty() || part == "/") return false;
        ++depth;
    }
    return depth >= 2 && depth <= 3;
}

void Check(const Wfctl::BackupManifest& manifest)
{
    for (const Wfctl::BackupItem& item : manifest.items) {
        Require(StaysBelow(item.file));
        Require(!item.name.empty() && item.name != "." && item.name != "..");
        Require(item.name.find('/') == std::string::npos && item.name.find('\0') == std::string::npos);
        Require(item.IsFace() || item.bgType == Wfctl::kGalleryPictures ||
                item.bgType == Wfctl::kThemePictures);
    }
    const std::string text = Wfctl::ManifestText(manifest);
    Require(Wfctl::ManifestText(Wfctl::ParseManifest(text)) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    try {
        Check(Wfctl::ParseManifest({reinterpret_cast<const char*>(data), size}));
    } catch (const Wfctl::Stop& stop) {
        Require(stop.Status() == Wfctl::Exit::kError && *stop.what());
    }
    return 0;
}
