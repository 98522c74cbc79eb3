#include "picture-files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "drawing.h"

namespace Drawing {
namespace {

class Descriptor {
public:
    explicit Descriptor(int fd) : mFd(fd) {}
    ~Descriptor() { Reset(-1); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return mFd; }
    void Reset(int fd)
    {
        if (mFd >= 0) close(mFd);
        mFd = fd;
    }

private:
    int mFd;
};

FileRead Missing()
{
    return {FileRead::kMissing, {}, "is missing"};
}

FileRead Refused(const char* problem)
{
    return {FileRead::kRefused, {}, problem};
}

// After a failed open. A link is refused as ELOOP, or as ENOTDIR where a folder has to be.
FileRead NotOpened()
{
    if (errno == ELOOP || errno == ENOTDIR) return Refused("is no file");
    return errno == ENOENT ? Missing() : Refused("cannot be read");
}

}  // namespace

FileRead ReadBelow(const std::string& folder, std::string_view path)
{
    Descriptor at(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (size_t slash; at.Get() >= 0 && (slash = path.find('/')) != std::string_view::npos;
         path.remove_prefix(slash + 1)) {
        at.Reset(openat(at.Get(), std::string(path.substr(0, slash)).c_str(),
                        O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    if (at.Get() < 0) return NotOpened();
    const Descriptor file(
        openat(at.Get(), std::string(path).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file.Get() < 0) return NotOpened();
    struct stat info {};
    if (fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return Refused("is no file");
    if (info.st_size > static_cast<off_t>(Limits::kLargestImageFile)) return Refused("is larger than 32 MiB");
    std::string bytes(static_cast<size_t>(info.st_size), '\0');
    size_t have = 0;
    for (ssize_t got;
         have < bytes.size() && (got = read(file.Get(), bytes.data() + have, bytes.size() - have)) > 0;) {
        have += static_cast<size_t>(got);
    }
    bytes.resize(have);
    return {FileRead::kRead, std::move(bytes), {}};
}

}  // namespace Drawing
