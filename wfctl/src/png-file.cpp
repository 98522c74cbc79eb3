#include "png-file.h"

#include <cairo.h>

#include <cstring>
#include <memory>

namespace Wfctl {

namespace {

// Four bytes a pixel.
bool HasOneColor(cairo_surface_t* picture, const PngFacts& facts)
{
    const unsigned char* first = cairo_image_surface_get_data(picture);
    const int stride = cairo_image_surface_get_stride(picture);
    for (int y = 0; y < facts.height; ++y) {
        const unsigned char* row = first + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < facts.width; ++x) {
            if (std::memcmp(row + static_cast<std::ptrdiff_t>(4) * x, first, 4) != 0) return false;
        }
    }
    return true;
}

}  // namespace

PngFacts LookAtPng(const std::string& path)
{
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> picture(
        cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy);
    if (cairo_surface_status(picture.get()) != CAIRO_STATUS_SUCCESS) return {};
    PngFacts facts{PngKind::kGood, cairo_image_surface_get_width(picture.get()),
                   cairo_image_surface_get_height(picture.get())};
    if (HasOneColor(picture.get(), facts)) facts.kind = PngKind::kBlank;
    return facts;
}

}  // namespace Wfctl
