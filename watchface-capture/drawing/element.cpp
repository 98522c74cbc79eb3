#include "element.h"

#include <algorithm>
#include <array>

#include "nearest-name.h"

namespace Drawing {
namespace {

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

Element::Element(const DataUtil::XmlTree& tree, pugi::xml_node node, const DataUtil::ElementRule& rule,
                 std::vector<Finding>& warnings)
    : mTree(tree), mNode(node), mRule(rule)
{
    mValues.reserve(rule.attributes.size());
    ReadAttributes(warnings);
    CheckChoice();
    CheckChildren();
}

void Element::ReadAttributes(std::vector<Finding>& warnings)
{
    for (const DataUtil::AttributeRule& rule : mRule.attributes) {
        const pugi::xml_attribute attribute = mNode.attribute(rule.name.data());
        if (!attribute) {
            if (rule.fallback == DataUtil::kRequired)
                Fail("the attribute " + DataUtil::Quoted(rule.name) + " is missing");
            if (rule.fallback) mValues.push_back({rule.name, rule.fallback});
            continue;
        }
        std::string problem;
        auto value = DataUtil::CanonicalValue(rule, attribute.value(), problem);
        if (!value) {
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

void Element::CheckChoice() const
{
    if (mRule.choice.names.empty()) return;
    std::string names;
    int given = 0;
    for (const char* name : mRule.choice.names) {
        given += mNode.attribute(name) ? 1 : 0;
        names.append(names.empty() ? "\"" : ", \"").append(name).append("\"");
    }
    if (given == 0 || (mRule.choice.exactlyOne && given > 1))
        Fail((mRule.choice.exactlyOne ? "exactly one of " : "at least one of ") + names + " has to be given");
}

void Element::CheckChildren() const
{
    std::array<int, DataUtil::kElementCount> counts{};
    int all = 0;
    for (const pugi::xml_node child : mNode.children()) {
        if (child.type() != pugi::node_element) continue;
        const DataUtil::ElementRule* rule = DataUtil::FlatSchema().ChildRuleOf(mRule, child.name());
        if (!rule) {
            throw DocumentError(
                Say(mTree.PlaceOf(child, ""), child.name(),
                    "no such element can stand here" +
                        DataUtil::Suggestion(child.name(), DataUtil::FlatSchema().ChildNames(mRule))));
        }
        ++counts[static_cast<size_t>(rule->element)];
        ++all;
    }
    const auto check = [this](int count, int least, int most, const std::string& what) {
        if (count < least) Fail("it has to hold at least " + std::to_string(least) + " " + what);
        if (most > 0 && count > most) Fail("it may hold at most " + std::to_string(most) + " " + what);
    };
    check(all, mRule.total.least, mRule.total.most, "in all");
    for (const DataUtil::ChildRule& child : mRule.children) {
        check(counts[static_cast<size_t>(child.element)], child.least, child.most,
              "<" + std::string(DataUtil::FlatSchema().RuleOf(child.element).name) + ">");
    }
}

std::vector<Element> Element::Children(std::vector<Finding>& warnings) const
{
    std::vector<Element> children;
    for (const pugi::xml_node child : mNode.children()) {
        if (child.type() != pugi::node_element) continue;
        children.emplace_back(mTree, child, *DataUtil::FlatSchema().ChildRuleOf(mRule, child.name()),
                              warnings);
    }
    return children;
}

bool Element::HoldsAny() const
{
    return mNode.find_child([](pugi::xml_node child) { return child.type() == pugi::node_element; });
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
