// What a document may hold, as tables: which elements there are, where each may stand, and its attributes.
//
// There are two such tables, of result XMLs (face-schema.h) and of flat documents (flat-schema.h). The
// reader, the checks, the order of attributes in the flat document, the drawing and the RELAX NG schemas all
// follow them; a new element or attribute is a new row.

#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "attribute-values.h"

namespace DataUtil {

// The elements of both documents. Elements of one name that differ by their parent are told apart.
enum class Element {
    kFace,  // the root: "face-result", "watchface"
    kStrings,
    kString,
    kOptions,
    kStyle,
    kStyleOption,
    kPalette,
    kPaletteOption,
    kColor,
    kSwitch,
    kPhotos,
    kPreset,
    kPresetPick,
    kPresetPlace,
    kScene,
    kLayer,
    kImage,
    kPhoto,
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
    kComplication,
    kSelection,
    kPick,
    kPlace,
    kPickedPhoto,
};
inline constexpr std::size_t kElementCount = static_cast<std::size_t>(Element::kPickedPhoto) + 1;

// How often a child may stand in an element.
struct ChildRule {
    Element element;
    int least = 0;
    int most = 0;  // 0: no limit of its own
};

// How many children an element may have in all.
struct ChildTotal {
    int least = 0;
    int most = 0;  // 0: no limit
};

// Attributes of which one must be there: exactly one, or at least one.
struct AttributeChoice {
    std::span<const char* const> names = {};
    bool exactlyOne = true;
};

// What an element is beside its name.
enum Trait : unsigned {
    kPlain = 0,
    kTakesWhen = 1,  // may have a condition
    kIsShape = 2,    // takes paint; a closed shape also takes a gradient
    kHasText = 4,    // holds text instead of elements
};

struct ElementRule {
    Element element;
    std::string_view name;  // NUL-terminated
    std::span<const AttributeRule> attributes;
    std::span<const ChildRule> children;
    unsigned traits = kPlain;
    ChildTotal total = {};
    AttributeChoice choice = {};

    constexpr bool Is(Trait trait) const { return (traits & trait) != 0; }
};

// One of the two tables. Its first row is the root.
class Schema {
public:
    explicit constexpr Schema(std::span<const ElementRule> rules) : mRules(rules)
    {
        for (const ElementRule& rule : rules) mByElement[static_cast<std::size_t>(rule.element)] = &rule;
    }

    std::span<const ElementRule> Rules() const { return mRules; }
    const ElementRule& Root() const { return mRules.front(); }
    // The rule of an element that this schema has.
    const ElementRule& RuleOf(Element element) const
    {
        return *mByElement[static_cast<std::size_t>(element)];
    }
    // The rule of the child `name` of `parent`, or null.
    const ElementRule* ChildRuleOf(const ElementRule& parent, std::string_view name) const;

    std::vector<std::string_view> ChildNames(const ElementRule& parent) const;
    // The names of the elements in which `name` may stand; empty when it may nowhere.
    std::vector<std::string_view> ParentNames(std::string_view name) const;

private:
    std::span<const ElementRule> mRules;
    std::array<const ElementRule*, kElementCount> mByElement{};
};

// The rule of the attribute `name`, `when` included, or null.
const AttributeRule* AttributeRuleOf(const ElementRule& element, std::string_view name);
std::vector<std::string_view> AttributeNames(const ElementRule& element);

}  // namespace DataUtil
