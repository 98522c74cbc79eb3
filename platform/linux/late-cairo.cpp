// The few functions of cairo that look at a picture, opened when the first picture is looked at.

#include <cairo.h>

#include "late-library.h"

namespace {

Platform::LateLibrary& Cairo()
{
    static Platform::LateLibrary library("libcairo.so.2");
    return library;
}

}  // namespace

#define FORWARD(name, otherwise, ...)                                             \
    static const Platform::LateFunction<decltype(name)> function(Cairo(), #name); \
    if (!function) return otherwise;                                              \
    return function(__VA_ARGS__)

cairo_surface_t* cairo_image_surface_create_from_png(const char* path)
{
    FORWARD(cairo_image_surface_create_from_png, nullptr, path);
}

cairo_status_t cairo_surface_status(cairo_surface_t* surface)
{
    FORWARD(cairo_surface_status, CAIRO_STATUS_NULL_POINTER, surface);
}

int cairo_image_surface_get_width(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_width, 0, surface);
}
int cairo_image_surface_get_height(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_height, 0, surface);
}
int cairo_image_surface_get_stride(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_stride, 0, surface);
}

unsigned char* cairo_image_surface_get_data(cairo_surface_t* surface)
{
    FORWARD(cairo_image_surface_get_data, nullptr, surface);
}

void cairo_surface_destroy(cairo_surface_t* surface)
{
    FORWARD(cairo_surface_destroy, , surface);
}
