// Whether two pictures look alike.
//
// Builds of the font and drawing libraries differ in where within a pixel they put a glyph and in how they
// blend edges. Both pictures are softened a little; then every pixel of one has to lie within what the other
// has there and around it, give or take a tolerance that grows with the contrast, and the other way round. So
// an edge may move by less than a pixel. A few pixels here and there may still fail; where they crowd,
// something is missing, added, moved or of another colour.

#pragma once

#include <cairo.h>

#include "drawing.h"

struct PictureComparison {
    bool sameSize = false;
    int outliers = 0;                // pixels that fail
    int crowd = 0;                   // the most of them in any square of kCrowd pixels a side
    Drawing::SurfacePtr difference;  // these in red over the dimmed expected picture; null for other sizes

    bool LooksAlike() const { return sameSize && crowd <= kMostInCrowd; }

    static constexpr int kTolerance = 6;  // of 255
    static constexpr int kCrowd = 9;
    static constexpr int kMostInCrowd = 9;
};

// Both 32-bit ARGB.
PictureComparison Compare(cairo_surface_t* actual, cairo_surface_t* expected);
