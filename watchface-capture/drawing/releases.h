// Owners of the C libraries' handles, one pointer wide.

#pragma once

#include <cairo.h>

#include <memory>

namespace Drawing {

template <auto Release>
struct Releases {
    template <typename Handle>
    void operator()(Handle* handle) const
    {
        Release(handle);
    }
};

using ContextPtr = std::unique_ptr<cairo_t, Releases<cairo_destroy>>;
using PatternPtr = std::unique_ptr<cairo_pattern_t, Releases<cairo_pattern_destroy>>;

}  // namespace Drawing
