// Pictures that faces and users bring: what has a size is decoded to that size or refused, and nothing else
// is.
//
// The first seeds are golden pictures and photos.

#include <cairo.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "picture-reader.h"

namespace {

// What is larger costs no more than its limits, which unit tests hold; here it would only cost runs.
constexpr int kLargestDecoded = 1 << 18;  // pixels

void Expect(bool condition)
{
    if (!condition) std::abort();
}

void CheckSize(const Drawing::PictureSize& size)
{
    Expect(size.width >= 0 && size.width <= Drawing::Limits::kLargestSide && size.height >= 0 &&
           size.height <= Drawing::Limits::kLargestSide);
    Expect((size.width == 0) == (size.height == 0));
}

void CheckSurface(const Drawing::SurfacePtr& surface, int width, int height)
{
    if (!surface) return;
    Expect(cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS);
    Expect(cairo_image_surface_get_width(surface.get()) == width);
    Expect(cairo_image_surface_get_height(surface.get()) == height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const Drawing::PictureSize png = Drawing::PngSize(bytes), jpeg = Drawing::JpegSize(bytes);
    CheckSize(png);
    CheckSize(jpeg);
    Expect(png.IsNone() || jpeg.IsNone());
    if (!png.IsNone() && png.width * png.height <= kLargestDecoded)
        CheckSurface(Drawing::DecodePng(bytes), png.width, png.height);
    if (!jpeg.IsNone() && jpeg.width * jpeg.height <= kLargestDecoded) {
        CheckSurface(Drawing::DecodeJpeg(bytes, 1), jpeg.width, jpeg.height);
        CheckSurface(Drawing::DecodeJpeg(bytes, 0.2), (jpeg.width + 3) / 4, (jpeg.height + 3) / 4);
    }
    return 0;
}
