#include "schema.h"

#include <algorithm>

namespace DataUtil {

namespace {

constexpr AttributeRule kWhen = {"when", ValueKind::kCondition};

}  // namespace

const ElementRule* Schema::ChildRuleOf(const ElementRule& parent, std::string_view name) const
{
    for (const ChildRule& child : parent.children) {
        const ElementRule& rule = RuleOf(child.element);
        if (name == rule.name) return &rule;
    }
    return nullptr;
}

std::vector<std::string_view> Schema::ChildNames(const ElementRule& parent) const
{
    std::vector<std::string_view> names;
    names.reserve(parent.children.size());
    for (const ChildRule& child : parent.children) names.emplace_back(RuleOf(child.element).name);
    return names;
}

std::vector<std::string_view> Schema::ParentNames(std::string_view name) const
{
    std::vector<std::string_view> names;
    for (const ElementRule& parent : mRules) {
        const bool takes = ChildRuleOf(parent, name) != nullptr;
        if (takes && std::find(names.begin(), names.end(), parent.name) == names.end())
            names.emplace_back(parent.name);
    }
    return names;
}

const AttributeRule* AttributeRuleOf(const ElementRule& element, std::string_view name)
{
    if (element.Is(kTakesWhen) && name == kWhen.name) return &kWhen;
    const auto at = std::find_if(element.attributes.begin(), element.attributes.end(),
                                 [&](const AttributeRule& rule) { return name == rule.name; });
    return at == element.attributes.end() ? nullptr : &*at;
}

std::vector<std::string_view> AttributeNames(const ElementRule& element)
{
    std::vector<std::string_view> names;
    for (const AttributeRule& attribute : element.attributes) names.emplace_back(attribute.name);
    if (element.Is(kTakesWhen)) names.emplace_back(kWhen.name);
    return names;
}

}  // namespace DataUtil
