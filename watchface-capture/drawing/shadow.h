// The soft shadow of a hand.

#pragma once

#include <cstdint>
#include <vector>

#include "painter.h"

namespace Drawing {

// Paints the shadow of the silhouette of all `parts`, which stand in the current coordinate system, with the
// hand's colour, offset and blur. Only the pixels that it can touch are worked on.
void PaintShadow(Painter& painter, const Element& hand, const std::vector<Element>& parts);

// Softens 8-bit coverage in place so that an edge becomes about `edge` pixels wide.
void Blur(uint8_t* pixels, int width, int height, int stride, double edge);

}  // namespace Drawing
