// Which elements a drawing may hold.

#include <algorithm>

#include "face-schema.h"
#include "nearest-name.h"
#include "painter.h"

namespace Drawing {
namespace {

using DataUtil::AttributeRule;
using K = DataUtil::ValueKind;

// A slot of the result XML becomes a complication; what only choosing needs is gone from it.
// clang-format off
constexpr AttributeRule kComplicationPlace[] = {
    {"name",         K::kSlug,          DataUtil::kRequired},
    {"group",        K::kSlug,          DataUtil::kRequired},
    {"source",       K::kSourceOrEmpty, DataUtil::kRequired},
    {"role",         K::kChoice,        nullptr, "text icon-text gauge arc"},
    {"x",            K::kCoordinate,    DataUtil::kRequired},
    {"y",            K::kCoordinate,    DataUtil::kRequired},
    {"width",        K::kLength,        DataUtil::kRequired},
    {"height",       K::kLength,        DataUtil::kRequired},
    {"color",        K::kColor},
};
// clang-format on
constexpr auto kComplicationAttributes = DataUtil::Joined(kComplicationPlace, DataUtil::kComplicationStyle);

AttributeRules Of(DataUtil::Element element)
{
    return DataUtil::RuleOf(element).attributes;
}

struct Kind {
    std::string_view name;
    AttributeRules attributes;
    void (*paint)(Painter&, const Element&);
};

const Kind kKinds[] = {
    {"rect",         Of(DataUtil::Element::kRect),     PaintShape       },
    {"circle",       Of(DataUtil::Element::kCircle),   PaintShape       },
    {"polygon",      Of(DataUtil::Element::kPolygon),  PaintShape       },
    {"line",         Of(DataUtil::Element::kLine),     PaintShape       },
    {"arc",          Of(DataUtil::Element::kArc),      PaintShape       },
    {"image",        Of(DataUtil::Element::kImage),    PaintImage       },
    {"layer",        Of(DataUtil::Element::kLayer),    PaintLayer       },
    {"text",         Of(DataUtil::Element::kText),     PaintText        },
    {"ticks",        Of(DataUtil::Element::kTicks),    PaintTicks       },
    {"numerals",     Of(DataUtil::Element::kNumerals), PaintNumerals    },
    {"hand",         Of(DataUtil::Element::kHand),     PaintHand        },
    {"complication", kComplicationAttributes,          PaintComplication},
};

const Kind& KindOf(Painter& painter, pugi::xml_node node)
{
    const auto at = std::find_if(std::begin(kKinds), std::end(kKinds),
                                 [&](const Kind& kind) { return kind.name == node.name(); });
    if (at != std::end(kKinds)) return *at;
    std::vector<std::string_view> names;
    for (const Kind& kind : kKinds) names.push_back(kind.name);
    Element(painter.tree, node, {}, painter.warnings)
        .Fail("no such element can stand here" + DataUtil::Suggestion(node.name(), names));
}

}  // namespace

void SetSource(cairo_t* cr, const Color& color)
{
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
}

void PaintChildren(Painter& painter, pugi::xml_node parent)
{
    for (const pugi::xml_node node : parent.children()) {
        if (node.type() != pugi::node_element) continue;
        if (std::string_view(node.name()) == "strings" && parent == painter.tree.Root()) continue;
        const Kind& kind = KindOf(painter, node);
        kind.paint(painter, Element(painter.tree, node, kind.attributes, painter.warnings));
        cairo_new_path(painter.cr);
    }
}

}  // namespace Drawing
