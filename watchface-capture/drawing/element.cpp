#include "element.h"

#include <algorithm>

#include "nearest-name.h"

namespace Drawing {
namespace {

using DataUtil::AttributeRule;

double ToNumber(std::string_view canonical)
{
    return DataUtil::ParseThousandths(canonical).value_or(0) / 1000.0;
}

double HexByte(std::string_view digits)
{
    return std::stoi(std::string(digits), nullptr, 16) / 255.0;
}

Finding Say(const DataUtil::Place& place, std::string_view element, std::string_view text)
{
    std::string line = "<";
    line.append(element).append(">: ").append(text);
    return {place.line, place.column, std::move(line)};
}

}  // namespace

Element::Element(const DataUtil::XmlTree& tree, pugi::xml_node node, AttributeRules rules,
                 std::vector<Finding>& warnings)
    : mTree(tree), mNode(node)
{
    mValues.reserve(rules.size());
    ReadAttributes(rules, warnings);
}

void Element::ReadAttributes(AttributeRules rules, std::vector<Finding>& warnings)
{
    for (const AttributeRule& rule : rules) {
        const pugi::xml_attribute attribute = mNode.attribute(rule.name);
        if (!attribute) {
            if (rule.fallback == DataUtil::kRequired)
                Fail("the attribute \"" + std::string(rule.name) + "\" is missing");
            if (rule.fallback) mValues.push_back({rule.name, rule.fallback});
            continue;
        }
        std::string problem;
        auto value = DataUtil::CanonicalValue(rule, attribute.value(), problem);
        const bool role =
            value && rule.kind == DataUtil::ValueKind::kColor && !value->starts_with('#') && *value != "none";
        if (role) problem = "a colour as #RRGGBB, #RRGGBBAA or none";
        if (!value || role) {
            throw DocumentError(AtAttribute(rule.name, std::string(rule.name) + "=" +
                                                           DataUtil::Quoted(attribute.value()) +
                                                           " should be " + problem));
        }
        mValues.push_back({rule.name, std::move(*value)});
    }
    for (const pugi::xml_attribute attribute : mNode.attributes()) {
        if (!Find(attribute.name())) {
            warnings.push_back(AtAttribute(
                attribute.name(),
                "the attribute " + DataUtil::Quoted(attribute.name()) + " is not known and has no effect"));
        }
    }
}

const Element::Value* Element::Find(std::string_view attribute) const
{
    const auto at =
        std::find_if(mValues.begin(), mValues.end(), [&](const Value& v) { return v.name == attribute; });
    return at == mValues.end() ? nullptr : &*at;
}

double Element::Number(std::string_view attribute) const
{
    return NumberOr(attribute, 0);
}

double Element::NumberOr(std::string_view attribute, double otherwise) const
{
    const Value* value = Find(attribute);
    return value ? ToNumber(value->text) : otherwise;
}

int Element::Integer(std::string_view attribute) const
{
    return static_cast<int>(Number(attribute));
}

std::string_view Element::Text(std::string_view attribute) const
{
    const Value* value = Find(attribute);
    return value ? std::string_view(value->text) : std::string_view();
}

std::optional<Color> Element::Paint(std::string_view attribute) const
{
    const std::string_view text = Text(attribute);
    if (!text.starts_with('#')) return std::nullopt;
    return Color{HexByte(text.substr(1, 2)), HexByte(text.substr(3, 2)), HexByte(text.substr(5, 2)),
                 text.size() == 9 ? HexByte(text.substr(7, 2)) : 1.0};
}

Color Element::PaintOr(std::string_view attribute, Color otherwise) const
{
    return Paint(attribute).value_or(otherwise);
}

Finding Element::At(std::string text) const
{
    return Say(mTree.PlaceOf(mNode, ""), mNode.name(), text);
}

Finding Element::AtAttribute(std::string_view attribute, std::string text) const
{
    return Say(mTree.PlaceOf(mNode, attribute, ""), mNode.name(), text);
}

}  // namespace Drawing
