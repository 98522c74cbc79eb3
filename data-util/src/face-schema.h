// The structure of a result XML, as tables: which elements there are, where each may stand, and its
// attributes.
//
// The reader, the checks and the flat document's order of attributes all follow these tables; a new element
// or attribute is a new row.

#pragma once

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
