// The few functions of cairo that look at a picture, opened when the first picture is looked at.

#include <cairo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "late-library.h"
#include "unique-fd.h"

namespace {

Platform::LateLibrary& Cairo()
{
    static Platform::LateLibrary library("libcairo.so.2");
    return library;
}

}  // namespace

#define FORWARD(name, otherwise, ...)                                             \
    static const Platform::LateFunction<decltype(name)> function(Cairo(), #name); \
    if (!function) return otherwise;                                              \
    return function(__VA_ARGS__)

namespace {

using Platform::UniqueFd;

constexpr uint32_t kLongestSide = 4096;

// The picture at `path`, at its start; invalid for what is no regular file or no PNG, or claims to be larger.
// A file of a megabyte may claim a picture of gigabytes, which would be allocated before its first line is
// read.
UniqueFd OpenPicture(const char* path)
{
    UniqueFd file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info {};
    uint8_t head[24];  // signature, length and type of the first chunk, width, height
    if (!file || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    if (pread(file.Get(), head, sizeof head, 0) != sizeof head) return {};
    if (std::memcmp(head, "\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) != 0) return {};
    for (const int at : {16, 20}) {
        const uint32_t side = uint32_t{head[at]} << 24 | uint32_t{head[at + 1]} << 16 |
                              uint32_t{head[at + 2]} << 8 | uint32_t{head[at + 3]};
        if (side == 0 || side > kLongestSide) return {};
    }
    return file;
}

cairo_status_t ReadPicture(void* file, unsigned char* data, unsigned int length)
{
    while (length > 0) {
        const ssize_t n = read(static_cast<UniqueFd*>(file)->Get(), data, length);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return CAIRO_STATUS_READ_ERROR;
        data += n;
        length -= static_cast<unsigned int>(n);
    }
    return CAIRO_STATUS_SUCCESS;
}

cairo_surface_t* PictureFrom(UniqueFd* file)
{
    FORWARD(cairo_image_surface_create_from_png_stream, nullptr, ReadPicture, file);
}

}  // namespace

cairo_status_t cairo_surface_status(cairo_surface_t* surface)
{
    FORWARD(cairo_surface_status, CAIRO_STATUS_NULL_POINTER, surface);
}

int cairo_image_surface_get_width(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_width, 0, surface);
}
int cairo_image_surface_get_height(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_height, 0, surface);
}
int cairo_image_surface_get_stride(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_stride, 0, surface);
}

unsigned char* cairo_image_surface_get_data(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_data, nullptr, surface);
}

void cairo_surface_destroy(cairo_surface_t* surface)
{
    FORWARD(cairo_surface_destroy, , surface);
}

namespace {

// Who looks at a pixel may count on four bytes each, as cairo has always given of a PNG.
bool IsNarrow(cairo_surface_t* surface)
{
    constexpr int kBytesAPixel = 4;
    return cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS &&
           (!cairo_image_surface_get_data(surface) ||
            cairo_image_surface_get_stride(surface) / kBytesAPixel < cairo_image_surface_get_width(surface));
}

}  // namespace

cairo_surface_t* cairo_image_surface_create_from_png(const char* path)
{
    UniqueFd file = OpenPicture(path);
    cairo_surface_t* surface = PictureFrom(&file);  // of an invalid file: cairo's own surface that says so
    if (!IsNarrow(surface)) return surface;
    cairo_surface_destroy(surface);
    file = UniqueFd();
    return PictureFrom(&file);
}
