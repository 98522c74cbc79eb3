// Hands and their shadows.

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "face-schema.h"
#include "painter.h"
#include "shadow.h"

namespace Drawing {
namespace {

struct Part {
    std::string_view name;
    DataUtil::Element element;
};

constexpr Part kParts[] = {
    {"bar",     DataUtil::Element::kBar    },
    {"rect",    DataUtil::Element::kRect   },
    {"circle",  DataUtil::Element::kCircle },
    {"polygon", DataUtil::Element::kPolygon},
    {"line",    DataUtil::Element::kLine   },
};

std::vector<Element> PartsOf(Painter& painter, const Element& hand)
{
    std::vector<Element> parts;
    for (const pugi::xml_node node : hand.Node().children()) {
        if (node.type() != pugi::node_element) continue;
        const auto part = std::find_if(std::begin(kParts), std::end(kParts),
                                       [&](const Part& p) { return p.name == node.name(); });
        if (part == std::end(kParts)) {
            hand.Fail("it holds bar, rect, circle, polygon and line, not \"" + std::string(node.name()) +
                      "\"");
        }
        parts.emplace_back(painter.tree, node, DataUtil::RuleOf(part->element).attributes, painter.warnings);
    }
    return parts;
}

double AngleOf(const Element& hand, const TimeOfDay& time)
{
    if (hand.Is("kind", "hour")) return 30.0 * (time.hour % 12) + time.minute / 2.0 + time.second / 120.0;
    if (hand.Is("kind", "minute")) return 6.0 * time.minute + time.second / 10.0;
    return 6.0 * time.second;
}

}  // namespace

void PaintHand(Painter& painter, const Element& hand)
{
    const std::vector<Element> parts = PartsOf(painter, hand);
    cairo_save(painter.cr);
    cairo_translate(painter.cr, hand.Number("cx"), hand.Number("cy"));
    cairo_rotate(painter.cr, AngleOf(hand, painter.time) * kDegree);
    if (hand.Paint("shadow")) PaintShadow(painter, hand, parts);
    for (const Element& part : parts) PaintShape(painter, part);
    cairo_restore(painter.cr);
}

}  // namespace Drawing
