// Layers: parts of a drawing that are laid over it as one picture, or that show the time of another place.

#include "dates.h"
#include "painter.h"

namespace Drawing {
namespace {

void PaintAsOne(Painter& painter, const Element& layer, double opacity)
{
    painter.budget.Charge(layer, 3.0 * painter.width * painter.height);
    cairo_push_group(painter.cr);
    PaintChildren(painter, layer);
    cairo_pop_group_to_source(painter.cr);
    cairo_paint_with_alpha(painter.cr, opacity);
}

}  // namespace

Moment MomentOf(Painter& painter, const Element& e)
{
    for (const char* zone : {"timezone-path", "timezone"}) {
        if (!e.Has(zone)) continue;
        if (const auto moment = painter.dates.SeenIn(painter.watchMoment, e.Text(zone))) return *moment;
    }
    painter.warnings.push_back(e.At("its time zone is not known; the watch's own is shown"));
    return painter.watchMoment;
}

void PaintLayer(Painter& painter, const Element& layer)
{
    if (++painter.layers > Limits::kLayerDepth) layer.Fail("layers are nested too deeply");
    const Moment outside = painter.moment;
    if (layer.Has("timezone") || layer.Has("timezone-path")) painter.moment = MomentOf(painter, layer);
    const double opacity = layer.Number("opacity");
    if (opacity < 1) {
        PaintAsOne(painter, layer, opacity);
    } else {
        PaintChildren(painter, layer);
    }
    painter.moment = outside;
    --painter.layers;
}

}  // namespace Drawing
