#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "file-replacement-posix.h"
#include "files.h"
#include "platform-log.h"
#include "trace-event-json.h"

namespace {

using Platform::TraceSpan;
using Platform::UniqueFd;

constexpr off_t kLongestFile = off_t{32} << 20;  // that is copied or read
constexpr int kDeepestRemoval = 64;
constexpr int kMostRemovalPasses = 100;  // over one folder

struct DirCloser {
    void operator()(DIR* d) const { closedir(d); }
};
using DirPtr = std::unique_ptr<DIR, DirCloser>;

struct TextFreer {
    void operator()(char* text) const { free(text); }
};
using TextPtr = std::unique_ptr<char, TextFreer>;

bool IsDots(const char* name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// What is not there is nobody's fault.
void LogUnlessMissing(const char* operation, const char* path)
{
    if (errno != ENOENT && errno != ENOTDIR)
        PLATFORM_FAULT("could not %s [%s]: %s", operation, path, std::strerror(errno));
}

// What could be read of them; errno says why that is not all, else 0.
std::vector<TextPtr> NamesIn(DIR* dir)
{
    std::vector<TextPtr> names;
    errno = 0;
    while (const dirent* entry = readdir(dir)) {
        if (IsDots(entry->d_name)) continue;
        TextPtr name(strdup(entry->d_name));
        if (!name) break;
        names.push_back(std::move(name));
        errno = 0;
    }
    return names;
}

bool RemoveTree(int parent, const char* name, int depth);

// Removes what `dir` holds. What is gone by the time it comes to it counts as removed.
bool RemoveEntries(DIR* dir, int depth)
{
    bool all = true;
    rewinddir(dir);
    for (const TextPtr& name : NamesIn(dir)) {
        all = (RemoveTree(dirfd(dir), name.get(), depth) || errno == ENOENT) && all;
    }
    return all;
}

// Removes `name` below `parent` with all it holds; links are removed, never followed. On failure errno says
// why.
bool RemoveTree(int parent, const char* name, int depth)
{
    if (unlinkat(parent, name, 0) == 0) return true;
    if (errno != EISDIR && errno != EPERM) return false;
    UniqueFd fd(openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd || depth == 0) return false;
    const DirPtr dir(fdopendir(fd.Get()));
    if (!dir) return false;
    fd.Release();  // now the DIR's
    for (int pass = 0; pass < kMostRemovalPasses; ++pass) {
        const bool all = RemoveEntries(dir.get(), depth - 1);
        if (unlinkat(parent, name, AT_REMOVEDIR) == 0) return true;
        // Not empty although everything went: another program has put something in meanwhile.
        if (!all || errno != ENOTEMPTY) return false;
    }
    return false;
}

// As read(), past interruptions.
ssize_t ReadSome(int fd, char* buffer, std::size_t size)
{
    for (;;) {
        const ssize_t n = read(fd, buffer, size);
        if (n >= 0 || errno != EINTR) return n;
    }
}

bool CopyBytes(int from, Platform::FileReplacement& to)
{
    if (ioctl(to.Fd(), FICLONE, from) == 0) return true;
    off_t copied = 0;
    while (copied <= kLongestFile) {
        // Whatever stops it, an end that the kernel only believes in included, reading finds out and says.
        const ssize_t n = copy_file_range(from, nullptr, to.Fd(), nullptr, 1 << 20, 0);
        if (n <= 0) break;
        copied += n;
    }
    if (copied > kLongestFile) return false;
    char buffer[1 << 16];
    for (;;) {
        const ssize_t n = ReadSome(from, buffer, sizeof buffer);
        if (n < 0) PLATFORM_FAULT("could not read what is to be copied: %s", std::strerror(errno));
        if (n <= 0) return n == 0;
        copied += n;
        if (copied > kLongestFile || !to.Write({buffer, static_cast<std::size_t>(n)})) return false;
    }
}

std::string_view Shown(const char* path)
{
    return path ? path : "";
}

UniqueFd OpenRegular(const std::string& path)
{
    UniqueFd fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info {};
    if (!fd || fstat(fd.Get(), &info) != 0) {
        LogUnlessMissing("open", path.c_str());
        return {};
    }
    return S_ISREG(info.st_mode) && info.st_size <= kLongestFile ? std::move(fd) : UniqueFd();
}

}  // namespace

Eina_Bool ecore_file_mkpath(const char* path)
{
    const TraceSpan span("file", "make folder", {"path", Shown(path)});
    const auto split =
        Platform::SplitWritable(path ? path : "", Platform::PathRule::kFolder, "making a folder");
    if (!split) return 0;
    UniqueFd at = Platform::MakeArea(*split);
    for (const std::string& part : split->components) {
        if (!at) return 0;
        at = Platform::MakeFolderBeneath(at.Get(), part);
        if (at) continue;
        if (errno == EXDEV)
            Platform::RefuseEscape("making a folder", path);
        else
            LogUnlessMissing("make", path);
    }
    return static_cast<bool>(at);
}

Eina_Bool ecore_file_recursive_rm(const char* path)
{
    const TraceSpan span("file", "remove folder", {"path", Shown(path)});
    const auto target =
        Platform::OpenWritable(path ? path : "", Platform::PathRule::kRecursive, "recursive removal");
    if (!target) return 0;
    if (RemoveTree(target->parent.Get(), target->name.c_str(), kDeepestRemoval)) return 1;
    LogUnlessMissing("remove", path);
    return 0;
}

Eina_Bool ecore_file_remove(const char* path)
{
    const TraceSpan span("file", "remove", {"path", Shown(path)});
    const auto target = Platform::OpenWritable(path ? path : "", Platform::PathRule::kFile, "removal");
    if (!target) return 0;
    if (unlinkat(target->parent.Get(), target->name.c_str(), 0) == 0) return 1;
    LogUnlessMissing("remove", path);
    return 0;
}

Eina_Bool ecore_file_exists(const char* path)
{
    if (!path) return 0;
    if (access(path, F_OK) == 0) return 1;
    LogUnlessMissing("look for", path);
    return 0;
}

Eina_Bool ecore_file_is_dir(const char* path)
{
    struct stat info {};
    return path && stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

Eina_List* ecore_file_ls(const char* directory)
{
    const TraceSpan span("file", "list", {"path", Shown(directory)});
    if (!directory) return nullptr;
    const DirPtr dir(opendir(directory));
    std::vector<TextPtr> names;
    if (dir) names = NamesIn(dir.get());
    if (!dir || errno != 0) LogUnlessMissing("list", directory);
    std::erase_if(names, [](const TextPtr& name) {
        return std::string_view(name.get()).starts_with(Platform::kUnfinishedPrefix);
    });
    std::sort(names.begin(), names.end(),
              [](const TextPtr& a, const TextPtr& b) { return std::strcmp(a.get(), b.get()) > 0; });
    Eina_List* list = nullptr;  // built from the back, so that the greatest name is the first to be put in
    for (TextPtr& name : names) {
        auto* node = static_cast<Eina_List*>(malloc(sizeof(Eina_List)));
        if (!node) break;
        *node = {name.release(), list};
        list = node;
    }
    return list;
}

const char* ecore_file_file_get(const char* path)
{
    if (!path) return nullptr;
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

bool CommonUtilFile::Exists(const std::string& path)
{
    return ecore_file_exists(path.c_str());
}

bool CommonUtilFile::Copy(const std::string& from, const std::string& to)
{
    const TraceSpan span("file", "copy", {"from", from}, {"to", to});
    const UniqueFd source = OpenRegular(from);
    if (!source) return false;
    auto replacement = Platform::FileReplacement::Begin(to, "copying");
    return replacement && CopyBytes(source.Get(), *replacement) && replacement->Commit();
}

std::string ReadWholeFile(const std::string& path)
{
    const TraceSpan span("file", "read", {"path", path});
    const UniqueFd file = OpenRegular(path);
    std::string bytes;
    char buffer[1 << 16];
    // A file that grows meanwhile ends at the limit as well.
    while (file && bytes.size() <= static_cast<std::size_t>(kLongestFile)) {
        const ssize_t n = ReadSome(file.Get(), buffer, sizeof buffer);
        if (n < 0) PLATFORM_FAULT("could not read %s: %s", path.c_str(), std::strerror(errno));
        if (n <= 0) break;
        bytes.append(buffer, static_cast<std::size_t>(n));
    }
    return bytes;
}
