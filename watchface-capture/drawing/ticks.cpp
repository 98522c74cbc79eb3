// Ticks: marks spread evenly on a circle.

#include <algorithm>
#include <vector>

#include "ink.h"
#include "painter.h"

namespace Drawing {
namespace {

constexpr double kPi = std::numbers::pi;

struct Mark {
    double r, length, outer, inner;  // the widths of the ends, halved
    bool dot, round;
};

// One mark at 12 o'clock around the origin.
void TraceMark(cairo_t* cr, const Mark& mark)
{
    cairo_new_sub_path(cr);
    if (mark.dot) {
        cairo_arc(cr, 0, -mark.r, mark.outer, 0, 2 * kPi);
    } else if (mark.round) {
        cairo_arc(cr, 0, -mark.r, mark.outer, kPi, 2 * kPi);
        cairo_arc(cr, 0, -mark.r + mark.length, mark.inner, 0, kPi);
    } else {
        cairo_move_to(cr, -mark.outer, -mark.r);
        cairo_line_to(cr, mark.outer, -mark.r);
        cairo_line_to(cr, mark.inner, -mark.r + mark.length);
        cairo_line_to(cr, -mark.inner, -mark.r + mark.length);
    }
    cairo_close_path(cr);
}

}  // namespace

void PaintTicks(Painter& painter, const Element& e)
{
    const int count = e.Integer("count"), skip = e.Integer("skip");
    const bool dot = e.Is("shape", "dot");
    const Mark mark{e.Number("r"),
                    e.Number("length"),
                    e.Number("width") / 2,
                    e.NumberOr("inner-width", e.Number("width")) / 2,
                    dot,
                    e.Is("cap", "round")};
    if (!dot && mark.length <= 0) e.Fail("bars need a length above 0");
    const auto omitted = DataUtil::SplitAtSpaces(e.Text("omit"));
    const auto color = e.Paint("color");
    if (!color) return;
    const double reach = painter.scale * (mark.length + mark.outer + mark.inner);
    const double breadth = 2 * painter.scale * std::max(mark.outer, mark.inner);
    painter.budget.Charge(
        e, count * (256 + std::min(reach * (64 + breadth), 1.0 * painter.width * painter.height)));

    cairo_new_path(painter.cr);
    for (int i = 0; i < count; ++i) {
        if (skip > 0 && i % skip == 0) continue;
        if (std::find(omitted.begin(), omitted.end(), std::to_string(i)) != omitted.end()) continue;
        cairo_save(painter.cr);
        cairo_translate(painter.cr, e.Number("cx"), e.Number("cy"));
        cairo_rotate(painter.cr, (e.Number("start") + i * e.Number("sweep") / count) * kDegree);
        TraceMark(painter.cr, mark);
        cairo_restore(painter.cr);
    }
    SetSource(painter.cr, *color);
    TellShape(painter, 0);
    cairo_fill(painter.cr);
}

}  // namespace Drawing
