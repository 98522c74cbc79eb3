#include "file-replacement-posix.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "folder-rights-posix.h"
#include "platform-log.h"
#include "trace-event-json.h"

namespace Platform {

namespace {

constexpr mode_t kFileMode = 0644;

std::string RandomName()
{
    uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) number = static_cast<uint64_t>(getpid());
    char name[sizeof kUnfinishedPrefix + 16];
    std::snprintf(name, sizeof name, "%s%016" PRIx64, kUnfinishedPrefix, number);
    return name;
}

}  // namespace

std::optional<FileReplacement> FileReplacement::Begin(const std::string& path, const char* operation)
{
    auto target = OpenWritable(path, PathRule::kFile, operation);
    if (!target) return std::nullopt;
    FileReplacement replacement(std::move(*target), path);
    if (!replacement.OpenUnfinished()) return std::nullopt;
    TakeRightsOf(replacement.mTarget.parent.Get(), replacement.mFile.Get(), kFileMode);
    return replacement;
}

// A file without a name leaves nothing behind when the program dies; not every file system has them.
bool FileReplacement::OpenUnfinished()
{
    const int parent = mTarget.parent.Get();
    mFile = UniqueFd(openat(parent, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, kFileMode));
    if (mFile) return true;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT && errno != EINVAL) return Fail("create");
    mUnfinishedName = RandomName();
    mFile =
        UniqueFd(openat(parent, mUnfinishedName.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kFileMode));
    if (mFile) return true;
    mUnfinishedName.clear();
    return Fail("create");
}

FileReplacement::~FileReplacement()
{
    if (mFile && !mUnfinishedName.empty()) unlinkat(mTarget.parent.Get(), mUnfinishedName.c_str(), 0);
}

bool FileReplacement::Write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(mFile.Get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return Fail("write");
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool FileReplacement::GiveName()
{
    if (!mUnfinishedName.empty()) return true;
    mUnfinishedName = RandomName();
    const std::string self = "/proc/self/fd/" + std::to_string(mFile.Get());
    if (linkat(AT_FDCWD, self.c_str(), mTarget.parent.Get(), mUnfinishedName.c_str(), AT_SYMLINK_FOLLOW) ==
        0) {
        return true;
    }
    mUnfinishedName.clear();
    return false;
}

bool FileReplacement::Commit()
{
    const TraceSpan span("file", "replace", {"path", mPath});
    const int parent = mTarget.parent.Get();
    if (fsync(mFile.Get()) != 0) return Fail("sync");
    if (!GiveName()) return Fail("link");
    if (renameat(parent, mUnfinishedName.c_str(), parent, mTarget.name.c_str()) != 0) return Fail("rename");
    mUnfinishedName.clear();
    if (fsync(parent) != 0) return Fail("sync the folder of");
    mFile.Reset();
    return true;
}

bool FileReplacement::Fail(const char* step)
{
    PLATFORM_FAULT("could not %s the new [%s]: %s", step, mPath.c_str(), std::strerror(errno));
    return false;
}

}  // namespace Platform
