// Pictures are looked at as by the product; here it is recorded and made to fail. A library of its own, since
// a program that draws has the whole of cairo.

#include <cairo.h>

#include "platform-state.h"

using MemoryPlatform::Note;
using MemoryPlatform::Shown;
using MemoryPlatform::Use;

extern "C" {

cairo_surface_t* __real_cairo_image_surface_create_from_png(const char* path);
void __real_cairo_surface_destroy(cairo_surface_t* surface);

cairo_surface_t* __wrap_cairo_image_surface_create_from_png(const char* path)
{
    Note("png " + Shown(path));
    // Nothing is a picture without a path.
    return __real_cairo_image_surface_create_from_png(Use("cairo_image_surface_create_from_png") ? "" : path);
}

void __wrap_cairo_surface_destroy(cairo_surface_t* surface)
{
    Note("png released");
    __real_cairo_surface_destroy(surface);
}

}  // extern "C"
