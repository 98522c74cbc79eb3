// The icons of complications: one glyph a source, in one colour, on a grid of 24 units.

#pragma once

#include <cairo.h>

#include <string_view>

namespace Drawing {

// Adds the icon of `source` to a square of `size` units with the left top corner at (x, y), and paints it
// with the current source. Does nothing for a source without an icon.
void PaintIcon(cairo_t* cr, std::string_view source, double x, double y, double size);
bool HasIcon(std::string_view source);

}  // namespace Drawing
