// Telling an observer what is inked. Each call costs nothing where nobody looks on.

#pragma once

#include <string_view>

#include "painter.h"

namespace Drawing {

// The current path, which is about to be filled (`reach` 0) or stroked (half the line's width). It stays.
void TellShape(const Painter& painter, double reach);

// A box in the current coordinate system; `text` and `shrink` are those of a line of text.
void TellBox(const Painter& painter, Ink::Kind kind, const Area& box, std::string_view text = {},
             double shrink = 1);

}  // namespace Drawing
