// What both documents have alike: lists of attributes and of children that face-schema.cpp and
// flat-schema.cpp put together. Where the author may name a palette role, a flat document has a colour.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "schema.h"

namespace DataUtil {

// Lists of attributes as one.
template <typename... Lists>
constexpr auto Joined(const Lists&... lists)
{
    std::array<AttributeRule, ((sizeof(Lists) / sizeof(AttributeRule)) + ...)> rules{};
    auto end = rules.begin();
    ((end = std::copy(std::begin(lists), std::end(lists), end)), ...);
    return rules;
}

// Lists of attributes as one, with colours that are no roles.
template <typename... Lists>
constexpr auto InFlat(const Lists&... lists)
{
    auto rules = Joined(lists...);
    for (AttributeRule& rule : rules) {
        if (rule.kind == ValueKind::kColor) rule.kind = ValueKind::kPaint;
    }
    return rules;
}

// clang-format off
inline constexpr AttributeRule kRootAttributes[] = {
    {"format",           ValueKind::kFormat,       kRequired},
    {"id",               ValueKind::kFaceId,       kRequired},
    {"version",          ValueKind::kVersion,      kRequired},
    {"width",            ValueKind::kCanvas,       kRequired},
    {"height",           ValueKind::kCanvas,       kRequired},
    {"shape",            ValueKind::kChoice,       kRequired, "round square"},
    {"background",       ValueKind::kLiteralColor, "#000000"},
    {"default-language", ValueKind::kLanguage,     kRequired},
    {"preview-time",     ValueKind::kTime,         kRequired},
    {"title-key",        ValueKind::kStringKey,    kRequired},
};
inline constexpr AttributeRule kStringsAttributes[] = {{"language", ValueKind::kLanguage, kRequired}};
inline constexpr AttributeRule kStringAttributes[] = {{"key", ValueKind::kStringKey, kRequired}};
inline constexpr AttributeRule kBox[] = {
    {"x",      ValueKind::kCoordinate, kRequired},
    {"y",      ValueKind::kCoordinate, kRequired},
    {"width",  ValueKind::kLength,     kRequired},
    {"height", ValueKind::kLength,     kRequired},
};
inline constexpr AttributeRule kImageSource[] = {{"src", ValueKind::kAsset, kRequired}};
inline constexpr AttributeRule kOpacity[] = {{"opacity", ValueKind::kShare, "1"}};
// How a picture of the user is shown.
inline constexpr AttributeRule kPhotoStyle[] = {
    {"fit",     ValueKind::kChoice, "cover", "cover contain"},
    {"opacity", ValueKind::kShare,  "1"},
};
// Where pictures of the user lie.
inline constexpr AttributeRule kPhotoFolder[] = {
    {"background", ValueKind::kChoice, kRequired, "gallery theme"},
    {"prefix",     ValueKind::kPrefix},
};
inline constexpr AttributeRule kTextContent[] = {
    {"text-key", ValueKind::kStringKey},
    {"skeleton", ValueKind::kSkeleton},
};
inline constexpr AttributeRule kTextStyle[] = {
    {"x",         ValueKind::kCoordinate, kRequired},
    {"y",         ValueKind::kCoordinate, kRequired},
    {"align",     ValueKind::kChoice,     "center",   "left center right"},
    {"valign",    ValueKind::kChoice,     "baseline", "baseline middle"},
    {"font",      ValueKind::kChoice,     "sans",     "sans serif mono"},
    {"size",      ValueKind::kFontSize,   kRequired},
    {"weight",    ValueKind::kWeight,     "400"},
    {"spacing",   ValueKind::kCoordinate, "0"},
    {"case",      ValueKind::kChoice,     "as-is",    "as-is upper"},
    {"color",     ValueKind::kColor,      kRequired},
    {"max-width", ValueKind::kLength},
};
inline constexpr AttributeRule kRectAttributes[] = {
    {"x",            ValueKind::kCoordinate, kRequired},
    {"y",            ValueKind::kCoordinate, kRequired},
    {"width",        ValueKind::kLength,     kRequired},
    {"height",       ValueKind::kLength,     kRequired},
    {"radius",       ValueKind::kLength,     "0"},
    {"fill",         ValueKind::kColor,      "none"},
    {"stroke",       ValueKind::kColor,      "none"},
    {"stroke-width", ValueKind::kLength,     "1"},
};
inline constexpr AttributeRule kCircleAttributes[] = {
    {"cx",           ValueKind::kCoordinate, kRequired},
    {"cy",           ValueKind::kCoordinate, kRequired},
    {"r",            ValueKind::kLength,     kRequired},
    {"fill",         ValueKind::kColor,      "none"},
    {"stroke",       ValueKind::kColor,      "none"},
    {"stroke-width", ValueKind::kLength,     "1"},
};
inline constexpr AttributeRule kPolygonAttributes[] = {
    {"points",       ValueKind::kPoints, kRequired},
    {"fill",         ValueKind::kColor,  "none"},
    {"stroke",       ValueKind::kColor,  "none"},
    {"stroke-width", ValueKind::kLength, "1"},
};
inline constexpr AttributeRule kLineAttributes[] = {
    {"x1",           ValueKind::kCoordinate, kRequired},
    {"y1",           ValueKind::kCoordinate, kRequired},
    {"x2",           ValueKind::kCoordinate, kRequired},
    {"y2",           ValueKind::kCoordinate, kRequired},
    {"stroke",       ValueKind::kColor,      kRequired},
    {"stroke-width", ValueKind::kLength,     "1"},
    {"cap",          ValueKind::kChoice,     "butt", "butt round"},
};
inline constexpr AttributeRule kArcAttributes[] = {
    {"cx",           ValueKind::kCoordinate, kRequired},
    {"cy",           ValueKind::kCoordinate, kRequired},
    {"r",            ValueKind::kLength,     kRequired},
    {"start",        ValueKind::kDegrees,    kRequired},
    {"sweep",        ValueKind::kDegrees,    kRequired},
    {"stroke",       ValueKind::kColor,      kRequired},
    {"stroke-width", ValueKind::kLength,     "1"},
    {"cap",          ValueKind::kChoice,     "butt", "butt round"},
};
inline constexpr AttributeRule kTicksAttributes[] = {
    {"cx",          ValueKind::kCoordinate, kRequired},
    {"cy",          ValueKind::kCoordinate, kRequired},
    {"r",           ValueKind::kLength,     kRequired},
    {"count",       ValueKind::kCount,      kRequired},
    {"start",       ValueKind::kDegrees,    "0"},
    {"sweep",       ValueKind::kDegrees,    "360"},
    {"shape",       ValueKind::kChoice,     "bar",  "bar dot"},
    {"length",      ValueKind::kLength,     "0"},
    {"width",       ValueKind::kLength,     kRequired},
    {"inner-width", ValueKind::kLength},
    {"cap",         ValueKind::kChoice,     "butt", "butt round"},
    {"skip",        ValueKind::kSkip,       "0"},
    {"omit",        ValueKind::kIndices},
    {"color",       ValueKind::kColor,      kRequired},
};
inline constexpr AttributeRule kNumeralsAttributes[] = {
    {"cx",      ValueKind::kCoordinate, kRequired},
    {"cy",      ValueKind::kCoordinate, kRequired},
    {"r",       ValueKind::kLength,     kRequired},
    {"labels",  ValueKind::kLabels,     kRequired},
    {"turn",    ValueKind::kChoice,     "upright", "upright radial"},
    {"font",    ValueKind::kChoice,     "sans",    "sans serif mono"},
    {"size",    ValueKind::kFontSize,   kRequired},
    {"weight",  ValueKind::kWeight,     "400"},
    {"spacing", ValueKind::kCoordinate, "0"},
    {"color",   ValueKind::kColor,      kRequired},
};
inline constexpr AttributeRule kHandAttributes[] = {
    {"kind",        ValueKind::kChoice,     kRequired, "hour minute second hour24"},
    {"cx",          ValueKind::kCoordinate, kRequired},
    {"cy",          ValueKind::kCoordinate, kRequired},
    {"shadow",      ValueKind::kColor,      "none"},
    {"shadow-x",    ValueKind::kCoordinate, "0"},
    {"shadow-y",    ValueKind::kCoordinate, "0"},
    {"shadow-blur", ValueKind::kBlur,       "0"},
};
inline constexpr AttributeRule kBarAttributes[] = {
    {"length",       ValueKind::kLength,     kRequired},
    {"tail",         ValueKind::kCoordinate, "0"},
    {"width",        ValueKind::kLength,     kRequired},
    {"tip-width",    ValueKind::kLength},
    {"tail-width",   ValueKind::kLength},
    {"cap",          ValueKind::kChoice,     "butt", "butt round"},
    {"fill",         ValueKind::kColor,      "none"},
    {"stroke",       ValueKind::kColor,      "none"},
    {"stroke-width", ValueKind::kLength,     "1"},
};
inline constexpr AttributeRule kLinearAttributes[] = {
    {"x1", ValueKind::kCoordinate, kRequired},
    {"y1", ValueKind::kCoordinate, kRequired},
    {"x2", ValueKind::kCoordinate, kRequired},
    {"y2", ValueKind::kCoordinate, kRequired},
};
inline constexpr AttributeRule kRadialAttributes[] = {
    {"cx", ValueKind::kCoordinate, kRequired},
    {"cy", ValueKind::kCoordinate, kRequired},
    {"r",  ValueKind::kLength,     kRequired},
};
inline constexpr AttributeRule kStopAttributes[] = {
    {"offset", ValueKind::kShare, kRequired},
    {"color",  ValueKind::kColor, kRequired},
};
inline constexpr AttributeRule kZone[] = {
    {"timezone",      ValueKind::kZoneName},
    {"timezone-path", ValueKind::kZonePath},
};
// What a world clock shows.
inline constexpr AttributeRule kCity[] = {
    {"city",    ValueKind::kShortText},
    {"country", ValueKind::kCountry},
};
inline constexpr auto kWorldClock = Joined(kCity, kZone);
inline constexpr char kRoles[] = "text icon-text gauge arc city dial";
// How a complication looks. What its text defaults to as a skeleton depends on its source.
inline constexpr AttributeRule kComplicationStyle[] = {
    {"icon-color",   ValueKind::kColor},
    {"accent",       ValueKind::kColor},
    {"track",        ValueKind::kColor,      "none"},
    {"font",         ValueKind::kChoice,     "sans",  "sans serif mono"},
    {"size",         ValueKind::kFontSize},
    {"weight",       ValueKind::kWeight,     "400"},
    {"case",         ValueKind::kChoice,     "as-is", "as-is upper"},
    {"skeleton",     ValueKind::kSkeleton},
    {"start",        ValueKind::kDegrees,    "225"},
    {"sweep",        ValueKind::kDegrees,    "270"},
    {"stroke-width", ValueKind::kLength,     "4"},
    {"cap",          ValueKind::kChoice,     "round", "butt round"},
};

inline constexpr ChildRule kStringsChildren[] = {{Element::kString, 1, 512}};
inline constexpr ChildRule kHandChildren[] = {
    {Element::kBar}, {Element::kRect}, {Element::kCircle}, {Element::kPolygon}, {Element::kLine},
};
inline constexpr ChildRule kClosedShapeChildren[] = {{Element::kLinearGradient}, {Element::kRadialGradient}};
inline constexpr ChildRule kGradientChildren[] = {{Element::kStop, 2, 16}};
inline constexpr ChildTotal kOneGradient = {0, 1};
inline constexpr ChildTotal kSomeShape = {1, 0};
// clang-format on

}  // namespace DataUtil
