// Gradients as fills.

#pragma once

#include "painter.h"
#include "pixel-box.h"

namespace Drawing {

// Makes the gradient, which is in the current coordinate system, the source for the pixels of `box`. False
// when there are no pixels.
bool SetGradientSource(Painter& painter, const Element& gradient, const PixelBox& box);

}  // namespace Drawing
