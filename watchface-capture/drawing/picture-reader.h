// Reading pictures, which are foreign: PNG and JPEG.
//
// The size is taken from the header before anything is decoded, so that a file that claims to be huge costs
// nothing. What is damaged, cut short or made to cost time is no picture.

#pragma once

#include <string_view>

#include "drawing.h"

namespace Drawing {

struct PictureSize {
    int width = 0, height = 0;
    bool IsNone() const { return width == 0; }
};

// The size that the header of a PNG file, or of a JPEG file, claims; none when the bytes are no such file or
// the size is above Limits::kLargestSide.
PictureSize PngSize(std::string_view bytes);
PictureSize JpegSize(std::string_view bytes);

// The pixels; null when the file is damaged. The size has been looked at before.
SurfacePtr DecodePng(std::string_view bytes);
// As above. `scale` is the share of its own size (above 0 to 1) in which the picture is needed: it may come
// smaller than it is, but never smaller than that, which saves time and memory.
SurfacePtr DecodeJpeg(std::string_view bytes, double scale);

}  // namespace Drawing
