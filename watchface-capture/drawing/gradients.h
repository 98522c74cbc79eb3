// Gradients as fills.

#pragma once

#include "painter.h"

namespace Drawing {

// Pixels of the surface, right and bottom exclusive.
struct PixelBox {
    int left = 0, top = 0, right = 0, bottom = 0;

    int Width() const { return right > left ? right - left : 0; }
    int Height() const { return bottom > top ? bottom - top : 0; }
    double Area() const { return static_cast<double>(Width()) * Height(); }
};

// The gradient that stands in `shape`, or nothing. A shape holds nothing else, and no more than one.
pugi::xml_node GradientOf(Painter& painter, const Element& shape);

// Makes the gradient, which is in the current coordinate system, the source for the pixels of `box`. False
// when there are no pixels.
bool SetGradientSource(Painter& painter, pugi::xml_node gradient, const PixelBox& box);

}  // namespace Drawing
