// Layers: parts of a drawing that are laid over it as one picture, or that show the time of another place.

#include <cairo.h>

#include <utility>

#include "dates.h"
#include "painter.h"
#include "vector-groups.h"

namespace Drawing {
void PaintAsOne(Painter& painter, double opacity, const std::function<void()>& paint)
{
    if (painter.medium == Medium::kPixels) {
        cairo_push_group(painter.cr);
        paint();
        cairo_pop_group_to_source(painter.cr);
        cairo_paint_with_alpha(painter.cr, opacity);
        return;
    }
    // The same by hand, since the drawing library never quite frees its own groups in an SVG.
    cairo_surface_t* group = painter.groups.Add(painter.width, painter.height);
    const ContextPtr inside(cairo_create(group));
    cairo_matrix_t matrix;
    cairo_get_matrix(painter.cr, &matrix);
    cairo_set_matrix(inside.get(), &matrix);
    cairo_t* outside = std::exchange(painter.cr, inside.get());
    paint();
    painter.cr = outside;
    cairo_save(painter.cr);
    cairo_identity_matrix(painter.cr);
    cairo_set_source_surface(painter.cr, group, 0, 0);
    cairo_paint_with_alpha(painter.cr, opacity);
    cairo_restore(painter.cr);
}

Moment MomentOf(Painter& painter, const Element& e)
{
    for (const char* zone : {"timezone-path", "timezone"}) {
        if (!e.Has(zone)) continue;
        if (const auto moment = painter.dates.SeenIn(painter.watchMoment, e.Text(zone))) return *moment;
    }
    painter.warnings.push_back(painter.watchMoment.zone.empty()
                                   ? e.At("the watch's time zone is not known; its own time is shown")
                                   : e.At("its time zone is not known; the watch's own is shown"));
    return painter.watchMoment;
}

void PaintLayer(Painter& painter, const Element& layer)
{
    if (++painter.layers > Limits::kLayerDepth) layer.Fail("layers are nested too deeply");
    const Moment outside = painter.moment;
    if (layer.Has("timezone") || layer.Has("timezone-path")) painter.moment = MomentOf(painter, layer);
    const double opacity = layer.Number("opacity");
    if (opacity < 1) {
        painter.budget.Charge(layer, 3.0 * painter.width * painter.height);
        PaintAsOne(painter, opacity, [&] { PaintChildren(painter, layer); });
    } else {
        PaintChildren(painter, layer);
    }
    painter.moment = outside;
    --painter.layers;
}

}  // namespace Drawing
