// One file holds the locks of all paths: the lock of a path is one byte of it, at an offset made from the
// path. Replacing or removing the locked file changes nothing, and no lock file is ever left behind. Open
// file description locks belong to this object alone, unlike POSIX locks, which any close() in the process
// drops.

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <thread>

#include "areas.h"
#include "files.h"
#include "folder-rights-posix.h"
#include "platform-log.h"
#include "trace-event-json.h"
#include "unique-fd.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kLongestWait = 2s;
constexpr auto kPause = 5ms;
constexpr mode_t kMode = 0660;

// FNV-1a, kept positive as an offset.
off_t OffsetOf(const std::string& path)
{
    uint64_t hash = 0xcbf29ce484222325;
    for (const char c : std::filesystem::path(path).lexically_normal().string()) {
        hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001b3;
    }
    return static_cast<off_t>(hash & 0x3fffffffffffffff);
}

}  // namespace

class CommonUtilFileLock::Impl {
public:
    Impl(const std::string& path, int mode)
    {
        const Platform::TraceSpan span("file", "lock", {"path", path});
        const std::string common = Platform::CurrentAreas().Common();
        std::error_code error;
        std::filesystem::create_directories(common, error);
        mFile = Platform::UniqueFd(open((common + "locks").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kMode));
        if (mFile) Platform::TakeRightsOf(common, mFile.Get(), kMode);
        struct flock lock {};
        lock.l_type = (mode & kWrite) ? F_WRLCK : F_RDLCK;
        lock.l_whence = SEEK_SET;
        lock.l_start = OffsetOf(path);
        lock.l_len = 1;
        const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
        while (mFile && fcntl(mFile.Get(), F_OFD_SETLK, &lock) != 0) {
            const bool held = errno == EAGAIN || errno == EACCES;
            if (held && std::chrono::steady_clock::now() < deadline) {
                std::this_thread::sleep_for(kPause);
                continue;
            }
            PLATFORM_FAULT("going on without the lock of [%s]: %s", path.c_str(),
                           held ? "another program does not give it up" : std::strerror(errno));
            return;
        }
        if (!mFile)
            PLATFORM_FAULT("going on without the lock of [%s]: %s", path.c_str(), std::strerror(errno));
    }

private:
    Platform::UniqueFd mFile;
};

CommonUtilFileLock::CommonUtilFileLock(const std::string& path, int mode)
    : mImpl(std::make_unique<Impl>(path, mode))
{
}

CommonUtilFileLock::~CommonUtilFileLock() = default;
