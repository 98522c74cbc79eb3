#include "reading-files.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "exit-status.h"
#include "hint.h"

namespace Wfctl {

namespace {

constexpr std::size_t kMostFileBytes = std::size_t{32} << 20;  // of a picture, the largest

// With the reason from errno.
std::string CannotRead(const std::string& path)
{
    return "the file [" + path + "] cannot be read: " + std::strerror(errno ? errno : EIO);
}

// As many as anybody takes, and one more, so that whoever takes fewer refuses what does not end.
std::string ReadBytes(std::istream& stream)
{
    std::string bytes;
    std::array<char, 65536> block;
    while (stream && bytes.size() <= kMostFileBytes) {
        const std::size_t wanted = std::min(block.size(), kMostFileBytes + 1 - bytes.size());
        stream.read(block.data(), static_cast<std::streamsize>(wanted));
        bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    }
    return bytes;
}

std::string ReadBytes(std::istream& stream, const std::string& path)
{
    std::string bytes = ReadBytes(stream);
    if (stream.bad()) throw Stop(Exit::kError, CannotRead(path));
    return bytes;
}

}  // namespace

std::string ReadNamedFile(const std::string& path)
{
    if (path == "-") return ReadBytes(std::cin, path);
    struct stat info {};
    errno = stat(path.c_str(), &info) != 0 ? errno : S_ISDIR(info.st_mode) ? EISDIR : 0;
    std::ifstream file;
    if (errno == 0) file.open(path, std::ios::binary);
    if (errno == EISDIR) throw Stop(Exit::kError, "[" + path + "] is a folder; name a file in it");
    if (!file.is_open()) {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        const std::string why = CannotRead(path);
        if (isMissing) throw Stop(Exit::kNotFound, why + OrMeantFile(path));
        throw Stop(Exit::kError, why);
    }
    return ReadBytes(file, path);
}

std::string BytesOfFile(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) ? ReadNamedFile(path) : "";
}

std::string ReadableBytes(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return {};
    std::ifstream file(path, std::ios::binary);
    std::string bytes = ReadBytes(file);
    return file.bad() ? std::string() : bytes;
}

}  // namespace Wfctl
