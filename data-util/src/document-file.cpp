#include "document-file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "xml-gate.h"

namespace DataUtil {

namespace {

class File {
public:
    explicit File(const std::string& path) : mFile(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File()
    {
        if (mFile >= 0) close(mFile);
    }

    bool IsOpen() const { return mFile >= 0; }
    bool IsRegular() const
    {
        struct stat status = {};
        return fstat(mFile, &status) == 0 && S_ISREG(status.st_mode);
    }

    // Up to the end, or one byte more than a document may have. False with errno on a failure.
    bool Read(std::string& text) const
    {
        text.resize(kMostBytes + 1);
        std::size_t size = 0;
        while (size < text.size()) {
            const ssize_t count = read(mFile, text.data() + size, text.size() - size);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return false;
            if (count == 0) break;
            size += static_cast<std::size_t>(count);
        }
        text.resize(size);
        return true;
    }

private:
    int mFile;
};

}  // namespace

std::optional<std::string> ReadDocumentFile(const std::string& path, std::string& problem)
{
    const File file(path);
    std::string text;
    if (!file.IsOpen()) {
        problem = std::strerror(errno);
    } else if (!file.IsRegular()) {
        problem = "not a regular file";
    } else if (!file.Read(text)) {
        problem = std::strerror(errno);
    } else if (text.size() > kMostBytes) {
        problem = "more than " + std::to_string(kMostBytes) + " bytes";
    } else {
        return text;
    }
    return std::nullopt;
}

}  // namespace DataUtil
