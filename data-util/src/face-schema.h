// The structure of a result XML, as tables: which elements there are, where each may stand, and its
// attributes.
//
// The reader, the checks and the flat document's order of attributes all follow these tables; a new element
// or attribute is a new row.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "attribute-values.h"

namespace DataUtil {

// One row of the element table each, in its order. Elements of one name that differ by their parent have rows
// of their own.
enum class Element {
    kFace,
    kStrings,
    kString,
    kOptions,
    kStyle,
    kStyleOption,
    kPalette,
    kPaletteOption,
    kColor,
    kSwitch,
    kScene,
    kLayer,
    kImage,
    kRect,
    kCircle,
    kPolygon,
    kLine,
    kArc,
    kText,
    kTicks,
    kNumerals,
    kHand,
    kBar,
    kLinearGradient,
    kRadialGradient,
    kStop,
    kSlot,
    kOffer,
    kFallback,
    kSelection,
    kPick,
    kPlace,
};

// How often a child may stand in an element.
struct ChildRule {
    Element element;
    int least = 0;
    int most = 0;  // 0: no limit of its own
};

struct ElementRule {
    Element element;
    const char* name;
    std::span<const AttributeRule> attributes;
    std::span<const ChildRule> children;
    bool takesWhen = false;  // may have a condition
    bool isShape = false;    // takes paint; a closed shape also takes a gradient
    bool hasText = false;    // holds text instead of elements
};

// How a complication looks: what a slot of a result XML and a complication of a flat document have alike, in
// their order.
// clang-format off
inline constexpr AttributeRule kComplicationStyle[] = {
    {"icon-color",   ValueKind::kColor},
    {"accent",       ValueKind::kColor},
    {"track",        ValueKind::kColor,      "none"},
    {"font",         ValueKind::kChoice,     "sans",  "sans serif mono"},
    {"size",         ValueKind::kFontSize},
    {"weight",       ValueKind::kWeight,     "400"},
    {"case",         ValueKind::kChoice,     "as-is", "as-is upper"},
    {"skeleton",     ValueKind::kSkeleton,   "d"},
    {"start",        ValueKind::kDegrees,    "225"},
    {"sweep",        ValueKind::kDegrees,    "270"},
    {"stroke-width", ValueKind::kLength,     "4"},
    {"cap",          ValueKind::kChoice,     "round", "butt round"},
};
// clang-format on

// Two lists of attributes as one.
template <std::size_t First, std::size_t Then>
constexpr std::array<AttributeRule, First + Then> Joined(const AttributeRule (&first)[First],
                                                         const AttributeRule (&then)[Then])
{
    std::array<AttributeRule, First + Then> rules{};
    std::copy(std::begin(first), std::end(first), rules.begin());
    std::copy(std::begin(then), std::end(then), rules.begin() + First);
    return rules;
}

const ElementRule& RuleOf(Element element);
// The rule of the child `name` of `parent`, or null.
const ElementRule* ChildRuleOf(const ElementRule& parent, std::string_view name);
// The rule of the attribute `name`, `when` included, or null.
const AttributeRule* AttributeRuleOf(const ElementRule& element, std::string_view name);

std::vector<std::string_view> ChildNames(const ElementRule& parent);
std::vector<std::string_view> AttributeNames(const ElementRule& element);
// The names of the elements in which `name` may stand; empty when it may nowhere.
std::vector<std::string_view> ParentNames(std::string_view name);

}  // namespace DataUtil
