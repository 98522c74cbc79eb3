// How each element of a drawing is painted.

#include <algorithm>

#include "painter.h"

namespace Drawing {
namespace {

struct Kind {
    DataUtil::Element element;
    void (*paint)(Painter&, const Element&);
};

constexpr Kind kKinds[] = {
    {DataUtil::Element::kRect,         PaintShape       },
    {DataUtil::Element::kCircle,       PaintShape       },
    {DataUtil::Element::kPolygon,      PaintShape       },
    {DataUtil::Element::kLine,         PaintShape       },
    {DataUtil::Element::kArc,          PaintShape       },
    {DataUtil::Element::kImage,        PaintImage       },
    {DataUtil::Element::kPhoto,        PaintPhoto       },
    {DataUtil::Element::kLayer,        PaintLayer       },
    {DataUtil::Element::kText,         PaintText        },
    {DataUtil::Element::kTicks,        PaintTicks       },
    {DataUtil::Element::kNumerals,     PaintNumerals    },
    {DataUtil::Element::kHand,         PaintHand        },
    {DataUtil::Element::kComplication, PaintComplication},
};

}  // namespace

void SetSource(cairo_t* cr, const Color& color)
{
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
}

void PaintChildren(Painter& painter, const Element& parent)
{
    for (const pugi::xml_node node : parent.Node().children()) {
        const DataUtil::ElementRule* rule = DataUtil::FlatSchema().ChildRuleOf(parent.Rule(), node.name());
        if (node.type() != pugi::node_element || rule->element == DataUtil::Element::kStrings) continue;
        const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                       [&](const Kind& k) { return k.element == rule->element; });
        const Element element(painter.tree, node, *rule, painter.warnings);
        painter.owner = &element;
        kind->paint(painter, element);
        cairo_new_path(painter.cr);
    }
}

}  // namespace Drawing
