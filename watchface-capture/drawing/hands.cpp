// Hands and their shadows.

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "painter.h"
#include "shadow.h"

namespace Drawing {
namespace {

// One row a kind: degrees an hour, a minute and a second. Whole turns do no harm.
struct Turn {
    std::string_view kind;
    double hour, minute, second;
};
constexpr Turn kTurns[] = {
    {"hour",   30, 1 / 2.0, 1 / 120.0},
    {"minute", 0,  6,       1 / 10.0 },
    {"second", 0,  0,       6        },
    {"hour24", 15, 1 / 4.0, 1 / 240.0},
};

double AngleOf(const Element& hand, const TimeOfDay& time)
{
    const auto turn = std::find_if(std::begin(kTurns), std::end(kTurns),
                                   [&](const Turn& t) { return hand.Is("kind", t.kind); });
    return turn->hour * time.hour + turn->minute * time.minute + turn->second * time.second;
}

}  // namespace

void PaintHand(Painter& painter, const Element& hand)
{
    const std::vector<Element> parts = hand.Children(painter.warnings);
    cairo_save(painter.cr);
    cairo_translate(painter.cr, hand.Number("cx"), hand.Number("cy"));
    cairo_rotate(painter.cr, AngleOf(hand, painter.moment.time) * kDegree);
    if (hand.Paint("shadow")) PaintShadow(painter, hand, parts);
    for (const Element& part : parts) PaintShape(painter, part);
    cairo_restore(painter.cr);
}

}  // namespace Drawing
