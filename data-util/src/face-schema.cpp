#include "face-schema.h"

#include "shared-rules.h"

namespace DataUtil {

namespace {

using K = ValueKind;
using E = Element;

// clang-format off
constexpr AttributeRule kComplicationUsage[] = {{"complication-usage", K::kUsage}};
constexpr auto kFaceAttributes = Joined(kRootAttributes, kComplicationUsage);
constexpr AttributeRule kGroupAttributes[] = {
    {"id",        K::kSlug,      kRequired},
    {"label-key", K::kStringKey, kRequired},
    {"usage",     K::kUsage},
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
    {"usage",     K::kUsage},
};
constexpr AttributeRule kPhotosOffer[] = {
    {"id",        K::kSlug,      kRequired},
    {"label-key", K::kStringKey, kRequired},
    {"default",   K::kAsset,     kRequired},
};
constexpr auto kPhotosAttributes = Joined(kPhotosOffer, kPhotoFolder);
constexpr AttributeRule kPresetAttributes[] = {
    {"id",        K::kSlug,      kRequired},
    {"label-key", K::kStringKey, kRequired},
};
constexpr AttributeRule kPresetPickAttributes[] = {
    {"group",  K::kSlug, kRequired},
    {"option", K::kSlug, kRequired},
};
constexpr AttributeRule kPresetPlacement[] = {
    {"slot",   K::kSlug,          kRequired},
    {"source", K::kSourceOrEmpty, kRequired},
};
constexpr auto kPresetPlaceAttributes = Joined(kPresetPlacement, kWorldClock);
constexpr AttributeRule kClockReference[] = {{"clock", K::kSlug}};
constexpr auto kLayerAttributes = Joined(kOpacity, kClockReference, kZone);
constexpr auto kImageAttributes = Joined(kImageSource, kBox, kOpacity);
constexpr AttributeRule kPhotosReference[] = {{"photos", K::kSlug, kRequired}};
constexpr auto kPhotoAttributes = Joined(kPhotosReference, kBox, kPhotoStyle);
constexpr AttributeRule kCityReference[] = {{"city", K::kSlug}};
constexpr auto kTextAttributes = Joined(kTextContent, kCityReference, kTextStyle);
constexpr AttributeRule kSlotName[] = {
    {"name",      K::kSlug,      kRequired},
    {"group",     K::kSlug,      kRequired},
    {"label-key", K::kStringKey, kRequired},
    {"role",      K::kChoice,    kRequired, kRoles},
};
constexpr AttributeRule kSlotColor[] = {{"color", K::kColor, kRequired}};
constexpr auto kSlotAttributes = Joined(kSlotName, kBox, kSlotColor, kComplicationStyle);
constexpr AttributeRule kOffer[] = {
    {"source", K::kSource, kRequired},
    {"needs",  K::kChoice, nullptr, "phone"},
};
constexpr auto kOfferAttributes = Joined(kOffer, kWorldClock);
constexpr AttributeRule kFallbackAttributes[] = {{"source", K::kSourceOrEmpty, kRequired}};
constexpr AttributeRule kSelectionAttributes[] = {{"preset", K::kPickedName}};
constexpr AttributeRule kPickAttributes[] = {
    {"group",  K::kPickedName, kRequired},
    {"option", K::kPickedName, kRequired},
};
constexpr AttributeRule kPlacement[] = {
    {"slot",   K::kPickedName, kRequired},
    {"source", K::kPickedName, kRequired},
};
constexpr auto kPlaceAttributes = Joined(kPlacement, kWorldClock);
constexpr AttributeRule kPickedPhotoAttributes[] = {
    {"photos", K::kPickedName, kRequired},
    {"file",   K::kFileName,   kRequired},
};

constexpr ChildRule kFaceChildren[] = {{E::kStrings, 1, 32}, {E::kOptions, 0, 1}, {E::kScene, 1, 1}, {E::kSelection, 0, 1}};
constexpr ChildRule kOptionsChildren[] = {
    {E::kStyle, 0, 16}, {E::kPalette, 0, 16}, {E::kSwitch, 0, 16}, {E::kPhotos, 0, 4}, {E::kPreset, 0, 16},
};
constexpr ChildRule kStyleChildren[] = {{E::kStyleOption, 2, 64}};
constexpr ChildRule kPaletteChildren[] = {{E::kPaletteOption, 1, 64}};
constexpr ChildRule kPaletteOptionChildren[] = {{E::kColor, 1, 32}};
constexpr ChildRule kPresetChildren[] = {{E::kPresetPick, 0, 64}, {E::kPresetPlace, 0, 64}};
constexpr ChildTotal kSomeChoice = {1, 0};
constexpr ChildRule kSceneChildren[] = {
    {E::kLayer}, {E::kImage}, {E::kPhoto}, {E::kRect}, {E::kCircle}, {E::kPolygon}, {E::kLine}, {E::kArc},
    {E::kText}, {E::kTicks}, {E::kNumerals}, {E::kHand}, {E::kSlot},
};
constexpr ChildRule kSlotChildren[] = {{E::kOffer, 1, 32}, {E::kFallback, 1, 32}};
constexpr ChildRule kSelectionChildren[] = {{E::kPick, 0, 64}, {E::kPlace, 0, 64}, {E::kPickedPhoto, 0, 64}};

constexpr const char* kTextContents[] = {"text-key", "skeleton", "city"};

constexpr ElementRule kElements[] = {
    {E::kFace,           "face-result",     kFaceAttributes,        kFaceChildren},
    {E::kStrings,        "strings",         kStringsAttributes,     kStringsChildren},
    {E::kString,         "string",          kStringAttributes,      {},                    kHasText},
    {E::kOptions,        "options",         {},                     kOptionsChildren},
    {E::kStyle,          "style",           kGroupAttributes,       kStyleChildren,        kTakesWhen},
    {E::kStyleOption,    "option",          kOptionAttributes,      {}},
    {E::kPalette,        "palette",         kGroupAttributes,       kPaletteChildren,      kTakesWhen},
    {E::kPaletteOption,  "option",          kOptionAttributes,      kPaletteOptionChildren},
    {E::kColor,          "color",           kColorAttributes,       {}},
    {E::kSwitch,         "switch",          kSwitchAttributes,      {},                    kTakesWhen},
    {E::kPhotos,         "photos",          kPhotosAttributes,      {},                    kTakesWhen},
    {E::kPreset,         "preset",          kPresetAttributes,      kPresetChildren,       kPlain,                kSomeChoice},
    {E::kPresetPick,     "pick",            kPresetPickAttributes,  {}},
    {E::kPresetPlace,    "place",           kPresetPlaceAttributes, {}},
    {E::kScene,          "scene",           {},                     kSceneChildren},
    {E::kLayer,          "layer",           kLayerAttributes,       kSceneChildren,        kTakesWhen},
    {E::kImage,          "image",           kImageAttributes,       {},                    kTakesWhen},
    {E::kPhoto,          "photo",           kPhotoAttributes,       {},                    kTakesWhen},
    {E::kRect,           "rect",            kRectAttributes,        kClosedShapeChildren,  kTakesWhen | kIsShape, kOneGradient},
    {E::kCircle,         "circle",          kCircleAttributes,      kClosedShapeChildren,  kTakesWhen | kIsShape, kOneGradient},
    {E::kPolygon,        "polygon",         kPolygonAttributes,     kClosedShapeChildren,  kTakesWhen | kIsShape, kOneGradient},
    {E::kLine,           "line",            kLineAttributes,        {},                    kTakesWhen | kIsShape},
    {E::kArc,            "arc",             kArcAttributes,         {},                    kTakesWhen | kIsShape},
    {E::kText,           "text",            kTextAttributes,        {},                    kTakesWhen,            {},          {kTextContents, true}},
    {E::kTicks,          "ticks",           kTicksAttributes,       {},                    kTakesWhen},
    {E::kNumerals,       "numerals",        kNumeralsAttributes,    {},                    kTakesWhen},
    {E::kHand,           "hand",            kHandAttributes,        kHandChildren,         kTakesWhen,            kSomeShape},
    {E::kBar,            "bar",             kBarAttributes,         kClosedShapeChildren,  kTakesWhen | kIsShape, kOneGradient},
    {E::kLinearGradient, "linear-gradient", kLinearAttributes,      kGradientChildren},
    {E::kRadialGradient, "radial-gradient", kRadialAttributes,      kGradientChildren},
    {E::kStop,           "stop",            kStopAttributes,        {}},
    {E::kSlot,           "slot",            kSlotAttributes,        kSlotChildren,         kTakesWhen},
    {E::kOffer,          "offer",           kOfferAttributes,       {}},
    {E::kFallback,       "fallback",        kFallbackAttributes,    {}},
    {E::kSelection,      "selection",       kSelectionAttributes,   kSelectionChildren},
    {E::kPick,           "pick",            kPickAttributes,        {}},
    {E::kPlace,          "place",           kPlaceAttributes,       {}},
    {E::kPickedPhoto,    "photo",           kPickedPhotoAttributes, {}},
};
// clang-format on

constexpr Schema kSchema{kElements};

}  // namespace

const Schema& FaceSchema()
{
    return kSchema;
}

}  // namespace DataUtil
