// Pixels of the surface that something touches.

#pragma once

namespace Drawing {

struct Painter;

// Right and bottom exclusive.
struct PixelBox {
    int left = 0, top = 0, right = 0, bottom = 0;

    int Width() const { return right > left ? right - left : 0; }
    int Height() const { return bottom > top ? bottom - top : 0; }
    double Area() const { return static_cast<double>(Width()) * Height(); }
};

// The pixels of the surface that the current path may touch when it is widened by `margin` canvas units.
PixelBox PixelsOfPath(const Painter& painter, double margin);

}  // namespace Drawing
