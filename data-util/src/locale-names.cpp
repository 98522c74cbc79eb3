#include "locale-names.h"

#include <optional>

#include "face-node.h"
#include "face-schema.h"
#include "flat-schema.h"

namespace DataUtil {

namespace {

bool NamesZone(const Node& node, const std::string& timezone)
{
    const bool isAlone = node.Is(Element::kLayer) && !node.Mentions("timezone-path");
    return isAlone || timezone.find('/') != std::string::npos;
}

std::optional<LocaleKind> KindOf(const Node& node, const Node::Attribute& attribute)
{
    if (attribute.value.empty()) return std::nullopt;  // refused
    switch (attribute.rule->kind) {
        case ValueKind::kLanguage:
            return LocaleKind::kLanguage;
        case ValueKind::kZonePath:
            return LocaleKind::kZone;
        case ValueKind::kZoneName:
            return NamesZone(node, attribute.value) ? std::optional(LocaleKind::kZone) : std::nullopt;
        case ValueKind::kCountry:
            return LocaleKind::kCountry;
        default:
            return std::nullopt;
    }
}

void Collect(const Node& node, std::vector<LocaleName>& names)
{
    for (const Node::Attribute& attribute : node.attributes) {
        const auto kind = KindOf(node, attribute);
        if (!kind) continue;
        const bool isCountry = *kind == LocaleKind::kCountry;
        names.push_back({*kind, attribute.value, isCountry ? node.Get("timezone-path") : "",
                         node.Where(attribute.rule->name)});
    }
    for (const Node& child : node.children) Collect(child, names);
}

}  // namespace

std::vector<LocaleName> LocaleNamesOf(std::string_view document)
{
    std::vector<LocaleName> names;
    Findings ignored;
    const auto tree = XmlTree::Load(document, ignored);
    if (!tree) return names;
    const bool isFlat = tree->Root().name() == std::string_view(FlatSchema().Root().name);
    Node root;
    if (ReadNodes(*tree, isFlat ? FlatSchema() : FaceSchema(), root, ignored)) Collect(root, names);
    return names;
}

}  // namespace DataUtil
