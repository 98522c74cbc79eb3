#include "backup-folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string_view>

#include "area-copy.h"
#include "digest.h"
#include "exit-status.h"
#include "face-document.h"
#include "hint.h"
#include "private-watch.h"
#include "unique-fd.h"
#include "utc-time.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;
using Platform::UniqueFd;

constexpr char kManifestName[] = "/manifest.json";
constexpr std::size_t kMostManifestBytes = std::size_t{4} << 20;
constexpr uint64_t kMostPictureBytes = uint64_t{32} << 20;  // what the watch copies at most
constexpr uint64_t kMostFaceBytes = uint64_t{1} << 20;      // what a face's document may be

[[noreturn]] void Refuse(const std::string& what)
{
    throw Stop(Exit::kError, what);
}

std::string Reason()
{
    return std::strerror(errno);
}

// Of an opened regular file; stops when it is larger.
std::string ReadAll(const UniqueFd& file, uint64_t most, const std::string& title)
{
    struct stat status {};
    if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) Refuse(title + " is no regular file");
    if (static_cast<uint64_t>(status.st_size) > most) Refuse(title + " is too large");
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t at = 0;
    while (at < bytes.size()) {
        const ssize_t got = read(file.Get(), bytes.data() + at, bytes.size() - at);
        if (got <= 0) Refuse(title + " cannot be read: " + (got < 0 ? Reason() : "it became shorter"));
        at += static_cast<std::size_t>(got);
    }
    return bytes;
}

// Opens a place below a folder; no component of it may be a link.
UniqueFd OpenBelow(const std::string& folder, const std::string& place)
{
    UniqueFd at(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const fs::path path(place);
    for (const fs::path& component : path.parent_path())
        at = UniqueFd(openat(at.Get(), component.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return UniqueFd(
        openat(at.Get(), path.filename().c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
}

void Sync(int fd, const std::string& path)
{
    if (fsync(fd) != 0) Refuse("[" + path + "] could not be written: " + Reason());
}

void SyncFolder(const std::string& path)
{
    const UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Sync(folder.Get(), path);
}

void WriteSynced(const std::string& path, std::string_view bytes)
{
    const UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    std::size_t at = 0;
    while (file && at < bytes.size()) {
        const ssize_t put = write(file.Get(), bytes.data() + at, bytes.size() - at);
        if (put < 0) break;
        at += static_cast<std::size_t>(put);
    }
    if (!file || at < bytes.size()) Refuse("[" + path + "] could not be written: " + Reason());
    Sync(file.Get(), path);
}

}  // namespace

bool IsGalleryFace(const BackupItem& item)
{
    return item.IsFace() && item.name.ends_with("-u1");
}

bool IsTaken(const BackupItem& item, const std::string& bytes)
{
    if (item.IsFace())
        return bytes.size() <= kMostFaceBytes && DataUtil::ParseFace(bytes).document.has_value();
    return bytes.size() <= kMostPictureBytes && KindOfBytes(bytes) != PictureKind::kNone;
}

BackupWriter::BackupWriter(const std::string& folder)
    : mFolder(fs::absolute(folder).lexically_normal().string()), mUnfinished()
{
    if (mFolder.ends_with('/')) mFolder.pop_back();
    std::error_code error;
    if (fs::exists(mFolder, error) && !fs::is_empty(mFolder, error))
        Refuse("[" + folder + "] is there already; name a new folder for this backup");
    mUnfinished = mFolder + ".unfinished-XXXXXX";
    if (!mkdtemp(mUnfinished.data())) {
        mUnfinished.clear();
        Refuse("[" + folder + "] cannot be made: " + Reason());
    }
    Clear();
}

BackupWriter::~BackupWriter()
{
    std::error_code error;
    if (!mUnfinished.empty()) fs::remove_all(mUnfinished, error);
}

void BackupWriter::Clear()
{
    mManifest.items.clear();
    for (const char* folder : {"/faces", "/pictures"}) fs::remove_all(mUnfinished + folder);
    for (const char* folder : {"/faces", "/pictures/theme", "/pictures/u1"})
        fs::create_directories(mUnfinished + folder);
}

bool BackupWriter::Add(const std::string& name, const std::string& bgType, const std::string& bytes)
{
    BackupItem item{name, bgType, "", bytes.size(), Sha256(bytes)};
    if (!IsTaken(item, bytes)) return false;
    item.file = std::string(FolderOf(item));
    const std::string number = "item " + std::to_string(mManifest.items.size() + 1);
    item.file +=
        (IsPlainName(name) && !name.starts_with("item ") ? name : number) + (item.IsFace() ? ".xml" : "");
    WriteSynced(mUnfinished + "/" + item.file, bytes);
    mManifest.items.push_back(std::move(item));
    return true;
}

BackupManifest BackupWriter::Finish(const std::string& current)
{
    mManifest.current = current;
    mManifest.made = Platform::UtcText("%Y-%m-%dT%H:%M:%SZ", std::time(nullptr));
    WriteSynced(mUnfinished + kManifestName, ManifestText(mManifest));
    for (const char* folder : {"/faces", "/pictures/theme", "/pictures/u1", "/pictures", ""})
        SyncFolder(mUnfinished + folder);
    if (rename(mUnfinished.c_str(), mFolder.c_str()) != 0)
        Refuse("[" + mFolder + "] could not be made: " + Reason());
    mUnfinished.clear();
    SyncFolder(fs::path(mFolder).parent_path());
    return mManifest;
}

Backup::Backup(std::string folder, const std::function<void(std::size_t, std::size_t)>& onItem)
    : mFolder(std::move(folder))
{
    const UniqueFd file(
        open((mFolder + kManifestName).c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (!file && errno != ENOENT && errno != ENOTDIR)
        Refuse("[" + mFolder + kManifestName + "] cannot be read: " + Reason());
    if (!file)
        throw Stop(Exit::kNotFound,
                   "[" + mFolder + "] is no backup: it has no manifest.json" + OrMeantFile(mFolder));
    mManifest = ParseManifest(ReadAll(file, kMostManifestBytes, "the manifest"));
    const std::vector<BackupItem>& items = mManifest.items;
    if (!std::ranges::all_of(items, &BackupItem::IsFace) && std::ranges::none_of(items, IsGalleryFace))
        Refuse(
            "[" + mFolder +
            "] has pictures, but not the face that they belong to (u1), without which no watch takes them");
    for (std::size_t i = 0; i < items.size(); ++i) {
        const BackupItem& item = items[i];
        if (!IsTaken(item, Read(item)))
            Refuse(item.Title() + (item.IsFace()
                                       ? " is a document that no watch takes; type: wfctl validate " +
                                             ShellQuoted(PathOf(item))
                                       : " is neither a PNG nor a JPEG"));
        if (onItem) onItem(i + 1, items.size());
    }
}

std::string Backup::Read(const BackupItem& item) const
{
    const UniqueFd file = OpenBelow(mFolder, item.file);
    if (!file) Refuse(item.Title() + " is missing: [" + item.file + "]: " + Reason());
    const std::string bytes = ReadAll(file, item.IsFace() ? kMostFaceBytes : kMostPictureBytes, item.Title());
    if (bytes.size() != item.size || Sha256(bytes) != item.sha256)
        Refuse(item.Title() + " is damaged: [" + item.file + "] is not what was backed up");
    return bytes;
}

}  // namespace Wfctl
