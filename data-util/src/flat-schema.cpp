#include "flat-schema.h"

#include "shared-rules.h"

namespace DataUtil {

namespace {

using K = ValueKind;
using E = Element;

// clang-format off
constexpr auto kLayerAttributes = Joined(kOpacity, kZone);
constexpr auto kImageAttributes = Joined(kImageSource, kBox, kOpacity);
constexpr AttributeRule kPhotoFiles[] = {
    {"file",    K::kFileName},
    {"default", K::kAsset, kRequired},
};
constexpr auto kPhotoAttributes = Joined(kPhotoFolder, kPhotoFiles, kBox, kPhotoStyle);
constexpr AttributeRule kLiteral[] = {{"text", K::kShortText}};
constexpr auto kTextAttributes = InFlat(kTextContent, kLiteral, kTextStyle);
constexpr AttributeRule kComplicationName[] = {
    {"name",   K::kSlug,          kRequired},
    {"group",  K::kSlug,          kRequired},
    {"source", K::kSourceOrEmpty, kRequired},
};
constexpr AttributeRule kComplicationRole[] = {{"role", K::kChoice, nullptr, kRoles}};
constexpr AttributeRule kComplicationColor[] = {{"color", K::kColor}};
constexpr auto kComplicationAttributes =
    InFlat(kComplicationName, kWorldClock, kComplicationRole, kBox, kComplicationColor, kComplicationStyle);
constexpr auto kFlatRect = InFlat(kRectAttributes);
constexpr auto kFlatCircle = InFlat(kCircleAttributes);
constexpr auto kFlatPolygon = InFlat(kPolygonAttributes);
constexpr auto kFlatLine = InFlat(kLineAttributes);
constexpr auto kFlatArc = InFlat(kArcAttributes);
constexpr auto kFlatTicks = InFlat(kTicksAttributes);
constexpr auto kFlatNumerals = InFlat(kNumeralsAttributes);
constexpr auto kFlatHand = InFlat(kHandAttributes);
constexpr auto kFlatBar = InFlat(kBarAttributes);
constexpr auto kFlatStop = InFlat(kStopAttributes);

constexpr ChildRule kRootChildren[] = {
    {E::kStrings, 1, 32},
    {E::kLayer}, {E::kImage}, {E::kPhoto}, {E::kRect}, {E::kCircle}, {E::kPolygon}, {E::kLine}, {E::kArc},
    {E::kText}, {E::kTicks}, {E::kNumerals}, {E::kHand}, {E::kComplication},
};
// The same without texts.
constexpr auto kDrawingChildren = std::span(kRootChildren).subspan<1>();

constexpr const char* kLayerEffects[] = {"opacity", "timezone", "timezone-path"};
constexpr const char* kTextContents[] = {"text-key", "skeleton", "text"};

constexpr ElementRule kElements[] = {
    {E::kFace,           "watchface",       kRootAttributes,         kRootChildren},
    {E::kStrings,        "strings",         kStringsAttributes,      kStringsChildren},
    {E::kString,         "string",          kStringAttributes,       {},                   kHasText},
    {E::kLayer,          "layer",           kLayerAttributes,        kDrawingChildren,     kPlain,   {},          {kLayerEffects, false}},
    {E::kImage,          "image",           kImageAttributes,        {}},
    {E::kPhoto,          "photo",           kPhotoAttributes,        {}},
    {E::kRect,           "rect",            kFlatRect,               kClosedShapeChildren, kIsShape, kOneGradient},
    {E::kCircle,         "circle",          kFlatCircle,             kClosedShapeChildren, kIsShape, kOneGradient},
    {E::kPolygon,        "polygon",         kFlatPolygon,            kClosedShapeChildren, kIsShape, kOneGradient},
    {E::kLine,           "line",            kFlatLine,               {},                   kIsShape},
    {E::kArc,            "arc",             kFlatArc,                {},                   kIsShape},
    {E::kText,           "text",            kTextAttributes,         {},                   kPlain,   {},          {kTextContents, true}},
    {E::kTicks,          "ticks",           kFlatTicks,              {}},
    {E::kNumerals,       "numerals",        kFlatNumerals,           {}},
    {E::kHand,           "hand",            kFlatHand,               kHandChildren,        kPlain,   kSomeShape},
    {E::kBar,            "bar",             kFlatBar,                kClosedShapeChildren, kIsShape, kOneGradient},
    {E::kLinearGradient, "linear-gradient", kLinearAttributes,       kGradientChildren},
    {E::kRadialGradient, "radial-gradient", kRadialAttributes,       kGradientChildren},
    {E::kStop,           "stop",            kFlatStop,               {}},
    {E::kComplication,   "complication",    kComplicationAttributes, {}},
};
// clang-format on

constexpr Schema kSchema{kElements};

}  // namespace

const Schema& FlatSchema()
{
    return kSchema;
}

}  // namespace DataUtil
