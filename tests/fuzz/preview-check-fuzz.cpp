// The check of previews on any bytes: it decides, decides the same again, reads nothing outside of the
// picture, and takes for valid only what claims to be a picture of at most 4096 pixels a side.

#include <sys/mman.h>
#include <unistd.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "common-util-tasks.h"
#include "files.h"
#include "log.h"
#include "service-preview-check.h"
#include "service-watchface-manager.h"

// What the check links to and never calls here.

class CommonUtilIdler::Impl {};
CommonUtilIdler::CommonUtilIdler(std::function<CommonUtilTaskReturn()>) {}
CommonUtilIdler::~CommonUtilIdler() = default;
void CommonUtilIdler::Start() {}

Eina_Bool ecore_file_exists(const char*)
{
    return 1;
}
int __dlog_print(log_id_t, int, const char*, const char*, ...)
{
    return 0;
}

namespace WatchfaceService {

std::string WatchfaceManager::GeneratePath(bool, int, const std::string&)
{
    return {};
}
void WatchfaceManager::RequestPreviewCapture(const std::string&) {}

}  // namespace WatchfaceService

namespace {

constexpr std::size_t kSignature = 8;
constexpr std::size_t kHead = 24;      // signature, length and kind of the first chunk, width, height
constexpr std::size_t kOverhead = 12;  // of a chunk: length, kind, checksum

uint32_t Number(const uint8_t* at)
{
    return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | uint32_t{at[3]};
}

bool MayBeValid(const uint8_t* data, std::size_t size)
{
    if (size < kHead || std::memcmp(data, "\x89PNG\r\n\x1a\n", kSignature) != 0) return false;
    const uint32_t width = Number(data + 16);
    const uint32_t height = Number(data + 20);
    return width >= 1 && width <= 4096 && height >= 1 && height <= 4096;
}

// A file of these bytes in memory.
class File {
public:
    File(const uint8_t* data, std::size_t size) : mFd(memfd_create("preview", MFD_CLOEXEC))
    {
        if (mFd < 0 || write(mFd, data, size) != static_cast<ssize_t>(size)) std::abort();
    }
    ~File() { close(mFd); }
    std::string Path() const { return "/proc/self/fd/" + std::to_string(mFd); }

private:
    const int mFd;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const File file(data, size);
    WatchfaceService::PreviewCheck check(nullptr);
    const bool isValid = check.IsValid(file.Path());
    if (isValid && !MayBeValid(data, size)) std::abort();
    if (isValid != check.IsValid(file.Path())) std::abort();
    return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(uint8_t* data, std::size_t size, std::size_t most);

// Sets the chunks' checksums right after each change: what is behind a wrong one is never read.
extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned int)
{
    size = LLVMFuzzerMutate(data, size, most);
    for (std::size_t at = kSignature; at + kOverhead <= size;) {
        const std::size_t length = Number(data + at);
        if (length > size - at - kOverhead) break;
        const auto sum = static_cast<uint32_t>(crc32(0, data + at + 4, static_cast<uInt>(length + 4)));
        uint8_t* end = data + at + 8 + length;
        for (int i = 0; i < 4; ++i) end[i] = static_cast<uint8_t>(sum >> (24 - 8 * i));
        at += length + kOverhead;
    }
    return size;
}
