#include "images.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>

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

// The regular file `path` (checked: no empty, "." or ".." parts) below `folder`, without following links.
std::optional<std::string> ReadBelow(const std::string& folder, std::string_view path, std::string& problem)
{
    Descriptor at(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (size_t slash; at.Get() >= 0 && (slash = path.find('/')) != std::string_view::npos;
         path.remove_prefix(slash + 1)) {
        at.Reset(openat(at.Get(), std::string(path.substr(0, slash)).c_str(),
                        O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    if (at.Get() < 0) return std::nullopt;
    const Descriptor file(
        openat(at.Get(), std::string(path).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file.Get() < 0) return std::nullopt;
    struct stat info {};
    if (fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        problem = "is no file";
        return std::nullopt;
    }
    if (info.st_size > static_cast<off_t>(Limits::kLargestImageFile)) {
        problem = "is larger than 32 MiB";
        return std::nullopt;
    }
    std::string bytes(static_cast<size_t>(info.st_size), '\0');
    size_t have = 0;
    for (ssize_t got;
         have < bytes.size() && (got = read(file.Get(), bytes.data() + have, bytes.size() - have)) > 0;) {
        have += static_cast<size_t>(got);
    }
    bytes.resize(have);
    return bytes;
}

cairo_status_t Feed(void* source, unsigned char* target, unsigned length)
{
    auto* left = static_cast<std::string_view*>(source);
    if (left->size() < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(target, left->data(), length);
    left->remove_prefix(length);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

ImageSize PngSize(std::string_view bytes)
{
    constexpr std::string_view kStart("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    if (bytes.size() < 33 || !bytes.starts_with(kStart)) return {};
    const auto number = [&](size_t at) {
        uint32_t value = 0;
        for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
        return value;
    };
    const uint32_t width = number(16), height = number(20);
    const bool good =
        width >= 1 && height >= 1 && width <= Limits::kLargestSide && height <= Limits::kLargestSide;
    return good ? ImageSize{static_cast<int>(width), static_cast<int>(height)} : ImageSize{};
}

cairo_surface_t* Images::Load(Painter& painter, const Element& image)
{
    const std::string src(image.Text("src"));
    const auto warn = [&](const std::string& why) -> cairo_surface_t* {
        painter.warnings.push_back(image.At("the image \"" + src + "\" " + why));
        return nullptr;
    };
    if (const auto known = mDecoded.find(src); known != mDecoded.end()) return known->second.get();

    std::optional<std::string> bytes;
    std::string problem = "is missing";
    for (const std::string& folder : painter.settings.assetFolders) {
        if ((bytes = ReadBelow(folder, src, problem))) break;
    }
    if (!bytes) return warn(problem);
    const ImageSize size = PngSize(*bytes);
    if (size.width == 0) return warn("is no PNG of at most 4096x4096 pixels");
    const double area = static_cast<double>(size.width) * size.height;
    painter.budget.Charge(image, 4 * area + static_cast<double>(bytes->size()));

    if (mKept + 4 * area > kMostKept) {
        mDecoded.clear();
        mKept = 0;
    }
    std::string_view left = *bytes;
    SurfacePtr surface(cairo_image_surface_create_from_png_stream(Feed, &left));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return warn("is damaged");
    mKept += 4 * area;
    return (mDecoded[src] = std::move(surface)).get();
}

}  // namespace Drawing
