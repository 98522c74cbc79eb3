// The background images that the user has added to editable watch faces, in the shared trusted area of the
// watch-face viewer: *theme* backgrounds in one folder for all, *gallery* backgrounds in a folder of their
// own with a folder below it for each prefix.
//
// A *prefix* is the folder of a gallery variant, such as "U1"; it may be empty. The *type* is a BgType; any
// number but 0 is placed like a gallery background, and only exactly kGalleryBg can be kept pending.
//
// Normal flow: Add() copies an image in, Del() removes some. With `keep` the change is *pending* until
// ApplyChanges() makes it last or CancelChanges() takes it back, for one prefix at a time. A file that is
// pending as added is in its place already; one that is pending as deleted is still there.
//
// What is pending are bare file names in the order in which they came, as often as they came. It is kept in
// memory only: after a restart pending additions have been applied and pending deletions cancelled.

#pragma once

#include <map>
#include <string>
#include <vector>

namespace WatchfaceService {

enum BgType { kThemeBg = 0, kGalleryBg = 1 };

class BgManager {
public:
    using BgList = std::vector<std::string>;  // file names

    BgManager();
    BgManager(const BgManager&) = delete;
    BgManager& operator=(const BgManager&) = delete;

    // Copies the image at `filePath` in, over one of its name. A type that cannot be kept is added at once.
    // False when the path is empty, there is no such file or it cannot be copied.
    bool Add(const std::string& filePath, int type, const std::string& prefix, bool keep);

    // Deletes images, or notes them as pending. False when there are no names.
    bool Del(const BgList& files, int type, const std::string& prefix, bool keep);

    // Deletes images from the disk; those that cannot be deleted are logged. Always true.
    bool DelInternal(const BgList& files, int type, const std::string& prefix);

    void ApplyChanges(const std::string& prefix);
    void CancelChanges(const std::string& prefix);

    // Deletes every file in one folder. Folders below it and what is pending stay.
    void DeleteAllBg(int type, const std::string& prefix);

    // Where an image is; the folder, ending in "/", for an empty file name.
    std::string BuildBgPath(int type, const std::string& prefix, const std::string& fileName) const;

    // The files in one folder, in the order in which the platform lists them; none when it is missing.
    BgList ListBgFiles(int type, const std::string& prefix) const;

    // What is pending; valid until the next change of this prefix.
    const BgList& GetAddedBgList(const std::string& prefix) const;
    const BgList& GetDeletedBgList(const std::string& prefix) const;

private:
    using BgLists = std::map<std::string, BgList>;  // by prefix, never by the empty one

    std::string bgDir;         // of theme backgrounds, ends in "/"
    std::string galleryBgDir;  // of gallery backgrounds, ends in "/"
    BgLists addedBgs;
    BgLists deletedBgs;
    BgList unnamedAddedBgs;  // for the empty prefix
    BgList unnamedDeletedBgs;
};

}  // namespace WatchfaceService
