#include "service-bg-manager.h"

#include <utility>

#include "app-manager.h"
#include "files.h"
#include "folder-listing.h"
#include "handles.h"
#include "message-vocabulary.h"
#include "service-log.h"

namespace WatchfaceService {

namespace {

using BgList = BgManager::BgList;
using BgLists = std::map<std::string, BgList>;

constexpr char kThemeSubpath[] = "theme/Backgrounds/";
constexpr char kGallerySubpath[] = "theme/GalleryBackgrounds/";

const BgList kEmptyBgList;

// The viewer's shared trusted folder, ending in "/"; "/" alone, where nothing can be written, when the
// platform names none.
std::string TrustedRoot()
{
    char* path = nullptr;
    const int result = app_manager_get_shared_trusted_path(Peer::kViewer, &path);
    const CStringPtr owner(path);
    // The text names another call than the one made; what reads the log knows it by this name.
    if (result != 0) LOG_ERROR("app_manager_get_shared_resource_path returns %d(%x)", result, result);
    std::string root = path ? path : "";
    if (!root.ends_with('/')) root += '/';
    return root;
}

// The list of a prefix, made when there is none.
BgList& ListOf(BgLists& lists, BgList& unnamed, const std::string& prefix)
{
    return prefix.empty() ? unnamed : lists[prefix];
}

const BgList& KnownListOf(const BgLists& lists, const BgList& unnamed, const std::string& prefix)
{
    if (prefix.empty()) return unnamed;
    const auto list = lists.find(prefix);
    return list == lists.end() ? kEmptyBgList : list->second;
}

// Empties the list of a prefix, which stays where it is, and gives what was in it.
BgList Take(BgLists& lists, BgList& unnamed, const std::string& prefix)
{
    if (prefix.empty()) return std::exchange(unnamed, {});
    const auto list = lists.find(prefix);
    return list == lists.end() ? BgList() : std::exchange(list->second, {});
}

}  // namespace

BgManager::BgManager()
{
    const std::string root = TrustedRoot();
    bgDir = root + kThemeSubpath;
    galleryBgDir = root + kGallerySubpath;
}

bool BgManager::Add(const std::string& filePath, int type, const std::string& prefix, bool keep)
{
    if (filePath.empty()) {
        LOG_ERROR("filepath is empty!!");
        return false;
    }
    if (keep && type != kGalleryBg) {
        LOG_ERROR("not supported type[%d] to keep", type);
        keep = false;
    }
    if (!CommonUtilFile::Exists(filePath)) return false;
    const std::string fileName = ecore_file_file_get(filePath.c_str());
    // The copy fails by itself where there is no folder.
    if (!ecore_file_mkpath(BuildBgPath(type, prefix, "").c_str())) LOG_ERROR("ecore_file_mkpath failed!!");
    if (!CommonUtilFile::Copy(filePath, BuildBgPath(type, prefix, fileName))) {
        LOG_ERROR("bg image copy failed!!");
        return false;
    }
    if (keep) ListOf(addedBgs, unnamedAddedBgs, prefix).push_back(fileName);
    return true;
}

bool BgManager::Del(const BgList& files, int type, const std::string& prefix, bool keep)
{
    if (files.empty()) {
        LOG_ERROR("files is empty!!");
        return false;
    }
    if (type != kGalleryBg || !keep) return DelInternal(files, type, prefix);

    BgList& deleted = ListOf(deletedBgs, unnamedDeletedBgs, prefix);
    deleted.insert(deleted.end(), files.begin(), files.end());
    LOG_INFO("added [%d] files to delete, kept [%d] files", static_cast<int>(files.size()),
             static_cast<int>(deleted.size()));
    return true;
}

bool BgManager::DelInternal(const BgList& files, int type, const std::string& prefix)
{
    for (const std::string& file : files) {
        const std::string path = BuildBgPath(type, prefix, file);
        if (!CommonUtilFile::Exists(path)) {
            LOG_ERROR("bg image is not exist!!");
        } else if (!ecore_file_remove(path.c_str())) {
            LOG_ERROR("bg image del failed!!");
        }
    }
    return true;
}

void BgManager::ApplyChanges(const std::string& prefix)
{
    if (!Take(addedBgs, unnamedAddedBgs, prefix).empty()) LOG_INFO("apply added bg!!");

    const BgList deleted = Take(deletedBgs, unnamedDeletedBgs, prefix);
    if (deleted.empty()) return;
    LOG_INFO("apply deleted bg!!");
    DelInternal(deleted, kGalleryBg, prefix);
}

void BgManager::CancelChanges(const std::string& prefix)
{
    const BgList added = Take(addedBgs, unnamedAddedBgs, prefix);
    if (!added.empty()) {
        LOG_INFO("cancel added bg!!");
        DelInternal(added, kGalleryBg, prefix);
    }
    if (!Take(deletedBgs, unnamedDeletedBgs, prefix).empty()) LOG_INFO("cancel deleted bg!!");
}

void BgManager::DeleteAllBg(int type, const std::string& prefix)
{
    const std::string folder = BuildBgPath(type, prefix, "");
    for (const std::string& name : ListFolder(folder)) {
        const std::string path = folder + "/" + name;
        if (ecore_file_is_dir(path.c_str())) continue;
        // The text names another call than the one made; what reads the log knows it by this name.
        if (!ecore_file_remove(path.c_str())) LOG_ERROR("ecore_file_recursive_rm failed!!");
    }
}

std::string BgManager::BuildBgPath(int type, const std::string& prefix, const std::string& fileName) const
{
    if (type == kThemeBg) return bgDir + fileName;
    return galleryBgDir + (prefix.empty() ? "" : prefix + "/") + fileName;
}

BgManager::BgList BgManager::ListBgFiles(int type, const std::string& prefix) const
{
    const std::string folder = BuildBgPath(type, prefix, "");
    BgList files = ListFolder(folder);
    std::erase_if(files,
                  [&](const std::string& name) { return ecore_file_is_dir((folder + "/" + name).c_str()); });
    return files;
}

const BgManager::BgList& BgManager::GetAddedBgList(const std::string& prefix) const
{
    return KnownListOf(addedBgs, unnamedAddedBgs, prefix);
}

const BgManager::BgList& BgManager::GetDeletedBgList(const std::string& prefix) const
{
    return KnownListOf(deletedBgs, unnamedDeletedBgs, prefix);
}

}  // namespace WatchfaceService
