#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "draw-command.h"

namespace Capture {

bool ReadWholeFile(const std::string& path, size_t limit, std::string& bytes, std::string& problem)
{
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        problem = std::strerror(errno);
        return false;
    }
    struct stat info {};
    const bool regular = fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    const bool fits = regular && info.st_size <= static_cast<off_t>(limit);
    problem = !regular ? "not a regular file"
              : !fits  ? "larger than " + std::to_string(limit) + " bytes"
                       : "";
    bytes.assign(fits ? static_cast<size_t>(info.st_size) : 0, '\0');
    size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = read(fd, bytes.data() + have, bytes.size() - have);
        if (got < 0) problem = std::strerror(errno);
        if (got <= 0) break;
        have += static_cast<size_t>(got);
    }
    bytes.resize(have);
    close(fd);
    return problem.empty();
}

}  // namespace Capture
