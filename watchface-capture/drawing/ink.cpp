#include "ink.h"

#include <memory>

namespace Drawing {
namespace {

constexpr double kTolerance = 0.02;  // pixels by which a flattened curve may be off

Point OnCanvas(const Painter& painter, double x, double y)
{
    cairo_user_to_device(painter.cr, &x, &y);
    return {x / painter.scale, y / painter.scale};
}

Ink InkOf(const Painter& painter, Ink::Kind kind)
{
    Ink ink;
    ink.kind = kind;
    ink.element = painter.owner->At("");
    ink.element.text = painter.owner->Node().name();
    if (painter.owner->Kind() == DataUtil::Element::kComplication) {
        const Element& e = *painter.owner;
        ink.place = Area{e.Number("x"), e.Number("y"), e.Number("x") + e.Number("width"),
                         e.Number("y") + e.Number("height")};
    }
    return ink;
}

}  // namespace

void TellShape(const Painter& painter, double reach)
{
    if (!painter.observer) return;
    Ink ink = InkOf(painter, Ink::Kind::kShape);
    ink.reach = reach;
    const double tolerance = cairo_get_tolerance(painter.cr);
    cairo_set_tolerance(painter.cr, kTolerance);
    const std::unique_ptr<cairo_path_t, Releases<cairo_path_destroy>> path(cairo_copy_path_flat(painter.cr));
    cairo_set_tolerance(painter.cr, tolerance);
    for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
        if (path->data[i].header.type == CAIRO_PATH_CLOSE_PATH) continue;
        const auto& point = path->data[i + 1].point;
        ink.outline.push_back(OnCanvas(painter, point.x, point.y));
    }
    painter.observer(ink);
}

void TellBox(const Painter& painter, Ink::Kind kind, const Area& box, std::string_view text, double shrink)
{
    if (!painter.observer) return;
    Ink ink = InkOf(painter, kind);
    ink.text = text;
    ink.shrink = shrink;
    ink.outline = {OnCanvas(painter, box.left, box.top), OnCanvas(painter, box.right, box.top),
                   OnCanvas(painter, box.right, box.bottom), OnCanvas(painter, box.left, box.bottom)};
    painter.observer(ink);
}

}  // namespace Drawing
