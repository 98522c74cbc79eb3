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

    cairo_surface_t* Add()
    {
        mGroups.emplace_back(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr));
        return mGroups.back().get();
    }

private:
    std::vector<SurfacePtr> mGroups;
};

}  // namespace Drawing
