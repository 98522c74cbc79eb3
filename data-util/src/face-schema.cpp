#include "face-schema.h"

#include <algorithm>
#include <cstddef>

namespace DataUtil {

namespace {

using K = ValueKind;
using E = Element;

constexpr AttributeRule kWhen = {"when", K::kCondition};

// clang-format off
constexpr AttributeRule kFaceAttributes[] = {
    {"format",           K::kFormat,       kRequired},
    {"id",               K::kFaceId,       kRequired},
    {"version",          K::kVersion,      kRequired},
    {"width",            K::kCanvas,       kRequired},
    {"height",           K::kCanvas,       kRequired},
    {"shape",            K::kChoice,       kRequired, "round square"},
    {"background",       K::kLiteralColor, "#000000"},
    {"default-language", K::kLanguage,     kRequired},
    {"preview-time",     K::kTime,         kRequired},
    {"title-key",        K::kStringKey,    kRequired},
};
constexpr AttributeRule kStringsAttributes[] = {{"language", K::kLanguage, kRequired}};
constexpr AttributeRule kStringAttributes[] = {{"key", K::kStringKey, kRequired}};
constexpr AttributeRule kGroupAttributes[] = {
    {"id",        K::kSlug,      kRequired},
    {"label-key", K::kStringKey, kRequired},
};
constexpr AttributeRule kOptionAttributes[] = {
    {"id",        K::kSlug,      kRequired},
    {"label-key", K::kStringKey, kRequired},
    {"default",   K::kChoice,    "false", "true false"},
};
constexpr AttributeRule kColorAttributes[] = {
    {"role",  K::kRoleName,     kRequired},
    {"value", K::kLiteralColor, kRequired},
};
constexpr AttributeRule kSwitchAttributes[] = {
    {"id",        K::kSlug,      kRequired},
    {"label-key", K::kStringKey, kRequired},
    {"default",   K::kChoice,    kRequired, "on off"},
};
constexpr AttributeRule kLayerAttributes[] = {{"opacity", K::kShare, "1"}};
constexpr AttributeRule kImageAttributes[] = {
    {"src",     K::kAsset,      kRequired},
    {"x",       K::kCoordinate, kRequired},
    {"y",       K::kCoordinate, kRequired},
    {"width",   K::kLength,     kRequired},
    {"height",  K::kLength,     kRequired},
    {"opacity", K::kShare,      "1"},
};
constexpr AttributeRule kRectAttributes[] = {
    {"x",            K::kCoordinate, kRequired},
    {"y",            K::kCoordinate, kRequired},
    {"width",        K::kLength,     kRequired},
    {"height",       K::kLength,     kRequired},
    {"radius",       K::kLength,     "0"},
    {"fill",         K::kColor,      "none"},
    {"stroke",       K::kColor,      "none"},
    {"stroke-width", K::kLength,     "1"},
};
constexpr AttributeRule kCircleAttributes[] = {
    {"cx",           K::kCoordinate, kRequired},
    {"cy",           K::kCoordinate, kRequired},
    {"r",            K::kLength,     kRequired},
    {"fill",         K::kColor,      "none"},
    {"stroke",       K::kColor,      "none"},
    {"stroke-width", K::kLength,     "1"},
};
constexpr AttributeRule kPolygonAttributes[] = {
    {"points",       K::kPoints, kRequired},
    {"fill",         K::kColor,  "none"},
    {"stroke",       K::kColor,  "none"},
    {"stroke-width", K::kLength, "1"},
};
constexpr AttributeRule kLineAttributes[] = {
    {"x1",           K::kCoordinate, kRequired},
    {"y1",           K::kCoordinate, kRequired},
    {"x2",           K::kCoordinate, kRequired},
    {"y2",           K::kCoordinate, kRequired},
    {"stroke",       K::kColor,      kRequired},
    {"stroke-width", K::kLength,     "1"},
    {"cap",          K::kChoice,     "butt", "butt round"},
};
constexpr AttributeRule kArcAttributes[] = {
    {"cx",           K::kCoordinate, kRequired},
    {"cy",           K::kCoordinate, kRequired},
    {"r",            K::kLength,     kRequired},
    {"start",        K::kDegrees,    kRequired},
    {"sweep",        K::kDegrees,    kRequired},
    {"stroke",       K::kColor,      kRequired},
    {"stroke-width", K::kLength,     "1"},
    {"cap",          K::kChoice,     "butt", "butt round"},
};
constexpr AttributeRule kTextAttributes[] = {
    {"text-key",  K::kStringKey},
    {"skeleton",  K::kSkeleton},
    {"x",         K::kCoordinate, kRequired},
    {"y",         K::kCoordinate, kRequired},
    {"align",     K::kChoice,     "center",   "left center right"},
    {"valign",    K::kChoice,     "baseline", "baseline middle"},
    {"font",      K::kChoice,     "sans",     "sans serif mono"},
    {"size",      K::kFontSize,   kRequired},
    {"weight",    K::kWeight,     "400"},
    {"spacing",   K::kCoordinate, "0"},
    {"case",      K::kChoice,     "as-is",    "as-is upper"},
    {"color",     K::kColor,      kRequired},
    {"max-width", K::kLength},
};
constexpr AttributeRule kTicksAttributes[] = {
    {"cx",          K::kCoordinate, kRequired},
    {"cy",          K::kCoordinate, kRequired},
    {"r",           K::kLength,     kRequired},
    {"count",       K::kCount,      kRequired},
    {"start",       K::kDegrees,    "0"},
    {"sweep",       K::kDegrees,    "360"},
    {"shape",       K::kChoice,     "bar",  "bar dot"},
    {"length",      K::kLength,     "0"},
    {"width",       K::kLength,     kRequired},
    {"inner-width", K::kLength},
    {"cap",         K::kChoice,     "butt", "butt round"},
    {"skip",        K::kSkip,       "0"},
    {"omit",        K::kIndices},
    {"color",       K::kColor,      kRequired},
};
constexpr AttributeRule kNumeralsAttributes[] = {
    {"cx",      K::kCoordinate, kRequired},
    {"cy",      K::kCoordinate, kRequired},
    {"r",       K::kLength,     kRequired},
    {"labels",  K::kLabels,     kRequired},
    {"turn",    K::kChoice,     "upright", "upright radial"},
    {"font",    K::kChoice,     "sans",    "sans serif mono"},
    {"size",    K::kFontSize,   kRequired},
    {"weight",  K::kWeight,     "400"},
    {"spacing", K::kCoordinate, "0"},
    {"color",   K::kColor,      kRequired},
};
constexpr AttributeRule kHandAttributes[] = {
    {"kind",        K::kChoice,     kRequired, "hour minute second"},
    {"cx",          K::kCoordinate, kRequired},
    {"cy",          K::kCoordinate, kRequired},
    {"shadow",      K::kColor,      "none"},
    {"shadow-x",    K::kCoordinate, "0"},
    {"shadow-y",    K::kCoordinate, "0"},
    {"shadow-blur", K::kBlur,       "0"},
};
constexpr AttributeRule kBarAttributes[] = {
    {"length",       K::kLength,     kRequired},
    {"tail",         K::kCoordinate, "0"},
    {"width",        K::kLength,     kRequired},
    {"tip-width",    K::kLength},
    {"tail-width",   K::kLength},
    {"cap",          K::kChoice,     "butt", "butt round"},
    {"fill",         K::kColor,      "none"},
    {"stroke",       K::kColor,      "none"},
    {"stroke-width", K::kLength,     "1"},
};
constexpr AttributeRule kLinearAttributes[] = {
    {"x1", K::kCoordinate, kRequired},
    {"y1", K::kCoordinate, kRequired},
    {"x2", K::kCoordinate, kRequired},
    {"y2", K::kCoordinate, kRequired},
};
constexpr AttributeRule kRadialAttributes[] = {
    {"cx", K::kCoordinate, kRequired},
    {"cy", K::kCoordinate, kRequired},
    {"r",  K::kLength,     kRequired},
};
constexpr AttributeRule kStopAttributes[] = {
    {"offset", K::kShare, kRequired},
    {"color",  K::kColor, kRequired},
};
constexpr AttributeRule kSlotPlace[] = {
    {"name",         K::kSlug,       kRequired},
    {"group",        K::kSlug,       kRequired},
    {"label-key",    K::kStringKey,  kRequired},
    {"role",         K::kChoice,     kRequired, "text icon-text gauge arc"},
    {"x",            K::kCoordinate, kRequired},
    {"y",            K::kCoordinate, kRequired},
    {"width",        K::kLength,     kRequired},
    {"height",       K::kLength,     kRequired},
    {"color",        K::kColor,      kRequired},
};
constexpr auto kSlotAttributes = Joined(kSlotPlace, kComplicationStyle);
constexpr AttributeRule kOfferAttributes[] = {{"source", K::kSource, kRequired}};
constexpr AttributeRule kFallbackAttributes[] = {{"source", K::kSourceOrEmpty, kRequired}};
constexpr AttributeRule kPickAttributes[] = {
    {"group",  K::kPickedName, kRequired},
    {"option", K::kPickedName, kRequired},
};
constexpr AttributeRule kPlaceAttributes[] = {
    {"slot",   K::kPickedName, kRequired},
    {"source", K::kPickedName, kRequired},
};

constexpr ChildRule kFaceChildren[] = {{E::kStrings, 1, 32}, {E::kOptions, 0, 1}, {E::kScene, 1, 1}, {E::kSelection, 0, 1}};
constexpr ChildRule kStringsChildren[] = {{E::kString, 1, 512}};
constexpr ChildRule kOptionsChildren[] = {{E::kStyle, 0, 16}, {E::kPalette, 0, 16}, {E::kSwitch, 0, 16}};
constexpr ChildRule kStyleChildren[] = {{E::kStyleOption, 2, 64}};
constexpr ChildRule kPaletteChildren[] = {{E::kPaletteOption, 1, 64}};
constexpr ChildRule kPaletteOptionChildren[] = {{E::kColor, 1, 32}};
constexpr ChildRule kSceneChildren[] = {
    {E::kLayer}, {E::kImage}, {E::kRect}, {E::kCircle}, {E::kPolygon}, {E::kLine}, {E::kArc},
    {E::kText}, {E::kTicks}, {E::kNumerals}, {E::kHand}, {E::kSlot},
};
constexpr ChildRule kHandChildren[] = {{E::kBar}, {E::kRect}, {E::kCircle}, {E::kPolygon}, {E::kLine}};
constexpr ChildRule kClosedShapeChildren[] = {{E::kLinearGradient}, {E::kRadialGradient}};  // one in all
constexpr ChildRule kGradientChildren[] = {{E::kStop, 2, 16}};
constexpr ChildRule kSlotChildren[] = {{E::kOffer, 1, 32}, {E::kFallback, 1, 32}};
constexpr ChildRule kSelectionChildren[] = {{E::kPick, 0, 64}, {E::kPlace, 0, 64}};

const ElementRule kElements[] = {
    {E::kFace,           "face-result",     kFaceAttributes,     kFaceChildren},
    {E::kStrings,        "strings",         kStringsAttributes,  kStringsChildren},
    {E::kString,         "string",          kStringAttributes,   {},                     false, false, true},
    {E::kOptions,        "options",         {},                  kOptionsChildren},
    {E::kStyle,          "style",           kGroupAttributes,    kStyleChildren,         true},
    {E::kStyleOption,    "option",          kOptionAttributes,   {}},
    {E::kPalette,        "palette",         kGroupAttributes,    kPaletteChildren,       true},
    {E::kPaletteOption,  "option",          kOptionAttributes,   kPaletteOptionChildren},
    {E::kColor,          "color",           kColorAttributes,    {}},
    {E::kSwitch,         "switch",          kSwitchAttributes,   {},                     true},
    {E::kScene,          "scene",           {},                  kSceneChildren},
    {E::kLayer,          "layer",           kLayerAttributes,    kSceneChildren,         true},
    {E::kImage,          "image",           kImageAttributes,    {},                     true},
    {E::kRect,           "rect",            kRectAttributes,     kClosedShapeChildren,   true,  true},
    {E::kCircle,         "circle",          kCircleAttributes,   kClosedShapeChildren,   true,  true},
    {E::kPolygon,        "polygon",         kPolygonAttributes,  kClosedShapeChildren,   true,  true},
    {E::kLine,           "line",            kLineAttributes,     {},                     true,  true},
    {E::kArc,            "arc",             kArcAttributes,      {},                     true,  true},
    {E::kText,           "text",            kTextAttributes,     {},                     true},
    {E::kTicks,          "ticks",           kTicksAttributes,    {},                     true},
    {E::kNumerals,       "numerals",        kNumeralsAttributes, {},                     true},
    {E::kHand,           "hand",            kHandAttributes,     kHandChildren,          true},
    {E::kBar,            "bar",             kBarAttributes,      kClosedShapeChildren,   true,  true},
    {E::kLinearGradient, "linear-gradient", kLinearAttributes,   kGradientChildren},
    {E::kRadialGradient, "radial-gradient", kRadialAttributes,   kGradientChildren},
    {E::kStop,           "stop",            kStopAttributes,     {}},
    {E::kSlot,           "slot",            kSlotAttributes,     kSlotChildren,          true},
    {E::kOffer,          "offer",           kOfferAttributes,    {}},
    {E::kFallback,       "fallback",        kFallbackAttributes, {}},
    {E::kSelection,      "selection",       {},                  kSelectionChildren},
    {E::kPick,           "pick",            kPickAttributes,     {}},
    {E::kPlace,          "place",           kPlaceAttributes,    {}},
};
// clang-format on

}  // namespace

const ElementRule& RuleOf(Element element)
{
    return kElements[static_cast<std::size_t>(element)];
}

const ElementRule* ChildRuleOf(const ElementRule& parent, std::string_view name)
{
    for (const ChildRule& child : parent.children) {
        const ElementRule& rule = RuleOf(child.element);
        if (name == rule.name) return &rule;
    }
    return nullptr;
}

const AttributeRule* AttributeRuleOf(const ElementRule& element, std::string_view name)
{
    if (element.takesWhen && name == kWhen.name) return &kWhen;
    const auto at = std::find_if(element.attributes.begin(), element.attributes.end(),
                                 [&](const AttributeRule& rule) { return name == rule.name; });
    return at == element.attributes.end() ? nullptr : &*at;
}

std::vector<std::string_view> ChildNames(const ElementRule& parent)
{
    std::vector<std::string_view> names;
    for (const ChildRule& child : parent.children) names.emplace_back(RuleOf(child.element).name);
    return names;
}

std::vector<std::string_view> AttributeNames(const ElementRule& element)
{
    std::vector<std::string_view> names;
    for (const AttributeRule& attribute : element.attributes) names.emplace_back(attribute.name);
    if (element.takesWhen) names.emplace_back(kWhen.name);
    return names;
}

std::vector<std::string_view> ParentNames(std::string_view name)
{
    std::vector<std::string_view> names;
    for (const ElementRule& parent : kElements) {
        const bool takes = ChildRuleOf(parent, name) != nullptr;
        if (takes && std::find(names.begin(), names.end(), parent.name) == names.end())
            names.emplace_back(parent.name);
    }
    return names;
}

}  // namespace DataUtil
