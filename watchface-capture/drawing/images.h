// Image assets: PNG files in a face's folder.

#pragma once

#include <cairo.h>

#include <map>
#include <string>

#include "painter.h"

namespace Drawing {

// The size that a PNG file's header claims; {0, 0} when the bytes are no PNG or the size is not allowed.
// Nothing is decoded, so a file that claims to be huge costs nothing.
struct ImageSize {
    int width = 0, height = 0;
};
ImageSize PngSize(std::string_view bytes);

// The images of one drawing; each is decoded once.
class Images {
public:
    // The picture that `src` names, from the first folder that has it; null, with a warning, when there is
    // none that can be drawn. It is good until the next call.
    cairo_surface_t* Load(Painter& painter, const Element& image);

private:
    static constexpr double kMostKept = 64e6;  // bytes of pixels

    std::map<std::string, SurfacePtr, std::less<>> mDecoded;
    double mKept = 0;
};

}  // namespace Drawing
