// A backup of a watch as a folder: the files, and manifest.json, which lists them with sizes and digests.
//
// A folder is written beside its place and gets its name last, so that what has the name is whole. It is
// checked whole before anything of it is used: it may come from anywhere.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "backup-manifest.h"

namespace Wfctl {

// Whether the service makes room for the pictures of a backup once it has this face; of any family.
bool IsGalleryFace(const BackupItem& item);

// Whether a watch takes these bytes as the item.
bool IsTaken(const BackupItem& item, const std::string& bytes);

// A backup that is being made.
class BackupWriter {
public:
    // Stops with Exit::kError when `folder` is there and not empty, or cannot be made.
    explicit BackupWriter(const std::string& folder);
    ~BackupWriter();  // without Finish() nothing stays
    BackupWriter(const BackupWriter&) = delete;
    BackupWriter& operator=(const BackupWriter&) = delete;

    // Drops what was added.
    void Clear();
    // False when a watch would not take it back: a face's document that is refused, a picture of another
    // kind.
    bool Add(const std::string& name, const std::string& bgType, const std::string& bytes);
    const std::vector<BackupItem>& Items() const { return mManifest.items; }
    // Gives the folder its name; what it holds now.
    BackupManifest Finish(const std::string& current);

private:
    std::string mFolder;
    std::string mUnfinished;
    BackupManifest mManifest;
};

// A backup whose every file was found to be what the manifest says.
class Backup {
public:
    // Stops with Exit::kNotFound when there is none, with Exit::kError and the item's name when one is
    // damaged, missing or no face or picture, or when there are pictures without the face that they belong
    // to. `onItem` is told how many are checked, and of how many.
    explicit Backup(std::string folder, const std::function<void(std::size_t, std::size_t)>& onItem = {});

    const BackupManifest& Manifest() const { return mManifest; }
    std::string PathOf(const BackupItem& item) const { return mFolder + "/" + item.file; }
    // Once more with all checks: it may have been changed meanwhile.
    std::string Read(const BackupItem& item) const;

private:
    std::string mFolder;
    BackupManifest mManifest;
};

}  // namespace Wfctl
