// Images and photos.

#include "images.h"
#include "painter.h"
#include "pixel-box.h"

namespace Drawing {
namespace {

struct Box {
    double x, y, width, height;
};

Box BoxOf(const Element& e)
{
    return {e.Number("x"), e.Number("y"), e.Number("width"), e.Number("height")};
}

// Paints `pixels` stretched to `place`, of which only the part in `box` is seen, as the element says.
void PaintPixels(Painter& painter, const Element& e, cairo_surface_t* pixels, const Box& place,
                 const Box& box)
{
    const double width = cairo_image_surface_get_width(pixels),
                 height = cairo_image_surface_get_height(pixels);
    painter.budget.Charge(e, width * height / 8);  // shrinking looks at all of them
    cairo_save(painter.cr);
    cairo_rectangle(painter.cr, box.x, box.y, box.width, box.height);
    cairo_clip(painter.cr);
    cairo_rectangle(painter.cr, place.x, place.y, place.width, place.height);
    cairo_clip(painter.cr);
    cairo_translate(painter.cr, place.x, place.y);
    cairo_scale(painter.cr, place.width / width, place.height / height);
    cairo_set_source_surface(painter.cr, pixels, 0, 0);
    // The edge's pixels continue outwards, so that stretching does not fade the border. SVG has no such
    // thing.
    if (painter.medium == Medium::kPixels)
        cairo_pattern_set_extend(cairo_get_source(painter.cr), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(painter.cr), CAIRO_FILTER_GOOD);
    cairo_paint_with_alpha(painter.cr, e.Number("opacity"));
    cairo_restore(painter.cr);
}

// Whether there is anything to paint in the box.
bool Charge(Painter& painter, const Element& e, const Box& box)
{
    if (box.width <= 0 || box.height <= 0) return false;
    cairo_new_path(painter.cr);
    cairo_rectangle(painter.cr, box.x, box.y, box.width, box.height);
    painter.budget.Charge(e, 256 + 8 * PixelsOfPath(painter, 0).Area());
    cairo_new_path(painter.cr);
    return true;
}

}  // namespace

void PaintImage(Painter& painter, const Element& image)
{
    const Box box = BoxOf(image);
    if (!Charge(painter, image, box)) return;
    if (cairo_surface_t* pixels = painter.images.Asset(painter, image, image.Text("src")))
        PaintPixels(painter, image, pixels, box, box);
}

void PaintPhoto(Painter& painter, const Element& photo)
{
    const Box box = BoxOf(photo);
    if (!Charge(painter, photo, box)) return;
    cairo_surface_t* pixels = painter.images.Photo(painter, photo);
    if (!pixels) return;
    const double width = cairo_image_surface_get_width(pixels),
                 height = cairo_image_surface_get_height(pixels);
    const double fit = FitOf(photo, width, height);
    const Box place{box.x + (box.width - fit * width) / 2, box.y + (box.height - fit * height) / 2,
                    fit * width, fit * height};
    PaintPixels(painter, photo, pixels, place, box);
}

}  // namespace Drawing
