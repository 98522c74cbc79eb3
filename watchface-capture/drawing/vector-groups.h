// Parts of an SVG that are laid over it as one picture.

#pragma once

#include <cairo.h>

#include <vector>

#include "drawing.h"

namespace Drawing {

// To be destroyed after the SVG's surface, which keeps groups until its end and (as of cairo 1.16) forgets
// one reference of each.
class VectorGroups {
public:
    VectorGroups() = default;
    ~VectorGroups()
    {
        for (const SurfacePtr& group : mGroups) {
            while (cairo_surface_get_reference_count(group.get()) > 1) cairo_surface_destroy(group.get());
        }
    }
    VectorGroups(const VectorGroups&) = delete;
    VectorGroups& operator=(const VectorGroups&) = delete;

    // As large as the surface, in pixels: where nothing bounds a group, cairo writes numbers that nobody set.
    cairo_surface_t* Add(int width, int height)
    {
        const cairo_rectangle_t extents{0, 0, static_cast<double>(width), static_cast<double>(height)};
        mGroups.emplace_back(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents));
        return mGroups.back().get();
    }

private:
    std::vector<SurfacePtr> mGroups;
};

}  // namespace Drawing
