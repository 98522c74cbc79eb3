#include <cairo.h>

#include <cstdint>
#include <cstring>

#include "picture-reader.h"

namespace Drawing {
namespace {

cairo_status_t Feed(void* source, unsigned char* target, unsigned length)
{
    auto* left = static_cast<std::string_view*>(source);
    if (left->size() < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(target, left->data(), length);
    left->remove_prefix(length);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

PictureSize PngSize(std::string_view bytes)
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
    return good ? PictureSize{static_cast<int>(width), static_cast<int>(height)} : PictureSize{};
}

SurfacePtr DecodePng(std::string_view bytes)
{
    SurfacePtr surface(cairo_image_surface_create_from_png_stream(Feed, &bytes));
    return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS ? std::move(surface) : nullptr;
}

}  // namespace Drawing
