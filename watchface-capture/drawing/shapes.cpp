// Shapes: outlines, fills (plain or with a gradient) and strokes.

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "gradients.h"
#include "ink.h"
#include "painter.h"

namespace Drawing {
namespace {

constexpr double kPi = std::numbers::pi;

void TraceRect(cairo_t* cr, const Element& e)
{
    const double x = e.Number("x"), y = e.Number("y"), w = e.Number("width"), h = e.Number("height");
    const double r = std::min({e.Number("radius"), w / 2, h / 2});
    if (r <= 0) {
        cairo_rectangle(cr, x, y, w, h);
        return;
    }
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - r, y + r, r, -kPi / 2, 0);
    cairo_arc(cr, x + w - r, y + h - r, r, 0, kPi / 2);
    cairo_arc(cr, x + r, y + h - r, r, kPi / 2, kPi);
    cairo_arc(cr, x + r, y + r, r, kPi, 1.5 * kPi);
    cairo_close_path(cr);
}

void TraceCircle(cairo_t* cr, const Element& e)
{
    cairo_new_sub_path(cr);
    cairo_arc(cr, e.Number("cx"), e.Number("cy"), e.Number("r"), 0, 2 * kPi);
    cairo_close_path(cr);
}

void TracePolygon(cairo_t* cr, const Element& e)
{
    for (const std::string_view pair : DataUtil::SplitAtSpaces(e.Text("points"))) {
        const size_t comma = pair.find(',');
        cairo_line_to(cr, DataUtil::ParseThousandths(pair.substr(0, comma)).value_or(0) / 1000.0,
                      DataUtil::ParseThousandths(pair.substr(comma + 1)).value_or(0) / 1000.0);
    }
    cairo_close_path(cr);
}

void TraceLine(cairo_t* cr, const Element& e)
{
    cairo_move_to(cr, e.Number("x1"), e.Number("y1"));
    cairo_line_to(cr, e.Number("x2"), e.Number("y2"));
}

void TraceArc(cairo_t* cr, const Element& e)
{
    const double start = e.Number("start"), sweep = e.Number("sweep");
    const auto along = sweep < 0 ? cairo_arc_negative : cairo_arc;
    cairo_new_sub_path(cr);
    along(cr, e.Number("cx"), e.Number("cy"), e.Number("r"), CairoAngle(start), CairoAngle(start + sweep));
    if (std::abs(sweep) >= 360) cairo_close_path(cr);
}

// A hand's bar, from the tip clockwise round. Its ends are at -length and at the tail; where the tail is
// behind the pivot, the bar has its `width` at the pivot between them.
void TraceBar(cairo_t* cr, const Element& e)
{
    const double width = e.Number("width"), tip = e.NumberOr("tip-width", width) / 2;
    const double length = e.Number("length"), tail = e.Number("tail");
    const double end = tail > 0 ? e.NumberOr("tail-width", width) / 2 : width / 2;
    cairo_new_sub_path(cr);
    if (e.Is("cap", "round")) {
        cairo_arc(cr, 0, -length, tip, kPi, 2 * kPi);
        if (tail > 0) cairo_line_to(cr, width / 2, 0);
        cairo_arc(cr, 0, tail, end, 0, kPi);
    } else {
        cairo_move_to(cr, -tip, -length);
        cairo_line_to(cr, tip, -length);
        if (tail > 0) cairo_line_to(cr, width / 2, 0);
        cairo_line_to(cr, end, tail);
        cairo_line_to(cr, -end, tail);
    }
    if (tail > 0) cairo_line_to(cr, -width / 2, 0);
    cairo_close_path(cr);
}

struct Outline {
    DataUtil::Element element;
    void (*trace)(cairo_t*, const Element&);
};

constexpr Outline kOutlines[] = {
    {DataUtil::Element::kRect,    TraceRect   },
    {DataUtil::Element::kCircle,  TraceCircle },
    {DataUtil::Element::kPolygon, TracePolygon},
    {DataUtil::Element::kLine,    TraceLine   },
    {DataUtil::Element::kArc,     TraceArc    },
    {DataUtil::Element::kBar,     TraceBar    },
};

void Fill(Painter& painter, const Element& shape)
{
    const std::vector<Element> gradient = shape.Children(painter.warnings);
    if (!gradient.empty()) {
        const PixelBox box = PixelsOfPath(painter, 0);
        painter.budget.Charge(shape, 2 * box.Area());
        if (!SetGradientSource(painter, gradient.front(), box)) return;
    } else if (const auto fill = shape.Paint("fill")) {
        SetSource(painter.cr, *fill);
    } else {
        return;
    }
    TellShape(painter, 0);
    cairo_fill_preserve(painter.cr);
}

}  // namespace

PixelBox PixelsOfPath(const Painter& painter, double margin)
{
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    cairo_save(painter.cr);
    cairo_identity_matrix(painter.cr);
    cairo_path_extents(painter.cr, &x1, &y1, &x2, &y2);
    cairo_restore(painter.cr);
    const auto clamp = [](double value, int most) {
        return static_cast<int>(std::clamp<double>(value, 0, most));
    };
    margin = margin * painter.scale + 1;
    return {clamp(std::floor(x1 - margin), painter.width), clamp(std::floor(y1 - margin), painter.height),
            clamp(std::ceil(x2 + margin), painter.width), clamp(std::ceil(y2 + margin), painter.height)};
}

void TraceShape(cairo_t* cr, const Element& shape)
{
    cairo_new_path(cr);
    for (const Outline& outline : kOutlines) {
        if (outline.element == shape.Kind()) outline.trace(cr, shape);
    }
}

void SetStroke(cairo_t* cr, const Element& shape)
{
    cairo_set_line_width(cr, shape.Number("stroke-width"));
    cairo_set_line_cap(cr, shape.Is("cap", "round") ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_MITER);
}

void PaintShape(Painter& painter, const Element& shape)
{
    TraceShape(painter.cr, shape);
    const auto stroke = shape.Paint("stroke");
    // The edges of a polygon may cross each other in every row of pixels.
    const std::string_view points = shape.Text("points");
    const double edges = 1 + static_cast<double>(std::count(points.begin(), points.end(), ',')) / 8;
    const double margin = stroke ? shape.Number("stroke-width") : 0;
    painter.budget.Charge(shape, 256 + edges * PixelsOfPath(painter, margin).Area());
    Fill(painter, shape);
    if (stroke) {
        SetSource(painter.cr, *stroke);
        SetStroke(painter.cr, shape);
        TellShape(painter, shape.Number("stroke-width") / 2);
        cairo_stroke(painter.cr);
    }
    cairo_new_path(painter.cr);
}

}  // namespace Drawing
