#include "document-file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "file-descriptor.h"
#include "xml-gate.h"

namespace DataUtil {

namespace {

bool IsRegular(const FileDescriptor& file)
{
    struct stat status = {};
    return fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

// Up to the end, or one byte more than a document may have. False with errno on a failure.
bool Read(const FileDescriptor& file, std::string& text)
{
    text.resize(kMostBytes + 1);
    std::size_t size = 0;
    while (size < text.size()) {
        const ssize_t count = read(file.Get(), text.data() + size, text.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    text.resize(size);
    return true;
}

}  // namespace

std::optional<std::string> ReadDocumentFile(const std::string& path, std::string& problem)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    std::string text;
    if (!file.IsOpen()) {
        problem = std::strerror(errno);
    } else if (!IsRegular(file)) {
        problem = "not a regular file";
    } else if (!Read(file, text)) {
        problem = std::strerror(errno);
    } else if (text.size() > kMostBytes) {
        problem = "more than " + std::to_string(kMostBytes) + " bytes";
    } else {
        return text;
    }
    return std::nullopt;
}

}  // namespace DataUtil
