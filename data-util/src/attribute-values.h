// The kinds of values that attributes have: what is accepted, and the one way each value is written.
//
// Values are kept as canonical text from here on ("012.50" becomes "12.5", "#abcdef" becomes "#ABCDEF"), so
// equal documents flatten to equal bytes, whatever the locale.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sources.h"

namespace DataUtil {

enum class ValueKind {
    kFormat,      // the format's version
    kVersion,     // the author's version
    kCanvas,      // a side of the canvas
    kCoordinate,  // a place, in canvas units
    kLength,      // a length, in canvas units, from 0
    kDegrees,     // an angle, -360 to 360
    kShare,       // 0 to 1
    kFontSize,
    kWeight,
    kBlur,
    kCount,    // of ticks
    kSkip,     // of ticks
    kIndices,  // of ticks
    kColor,    // #RRGGBB, #RRGGBBAA, none or a role
    kPaint,    // #RRGGBB, #RRGGBBAA or none
    kLiteralColor,
    kChoice,  // one of the rule's choices
    kSlug,
    kRoleName,
    kStringKey,
    kLanguage,
    kFaceId,
    kTime,
    kSkeleton,
    kAsset,
    kCondition,
    kPoints,
    kLabels,
    kSource,
    kSourceOrEmpty,
    kPickedName,  // written by an editor; what it names is looked up, not required to exist
    kUsage,       // the feature of a usage record
    kPrefix,      // a folder of the user's pictures
    kFileName,    // a bare name
    kShortText,   // one line
    kZonePath,    // a time zone, by id or by path
    kZoneName,    // a time zone as its source names it, one line
    kCountry,     // a country as it is shown, one line
};

// The `fallback` of an attribute that must be there; recognised by its address.
inline constexpr char kRequired[] = "(required)";

struct AttributeRule {
    std::string_view name;  // NUL-terminated
    ValueKind kind;
    const char* fallback = nullptr;  // canonical default, kRequired, or null for none
    const char* choices = "";        // of kChoice, separated by spaces
};

// `raw` in canonical form, or nothing; then `problem` says what the value should be.
std::optional<std::string> CanonicalValue(const AttributeRule& rule, std::string_view raw,
                                          std::string& problem);

// What `raw`, which is not accepted, probably means, in canonical form: the nearest of the rule's names, the
// colour of that name, or the language tag with hyphens. An empty text when nothing is near.
std::string ProbableValue(const AttributeRule& rule, std::string_view raw);

// A decimal number in thousandths, at most five digits before and three after the point.
std::optional<int> ParseThousandths(std::string_view text);

std::vector<std::string_view> SplitAtSpaces(std::string_view text);

// One condition of a `when`: the group or slot `subject` shows (or does not show) `value`.
struct Term {
    std::string subject;
    std::string value;
    bool negated = false;
};

// The terms of a `when` in order; nothing when it is malformed.
std::optional<std::vector<Term>> ParseCondition(std::string_view text);

// What a schema of other tools says about an attribute's values: one of these.
struct ValueSyntax {
    std::vector<std::string_view> names = {};  // one of them
    const char* pattern = nullptr;             // a regular expression of XML Schema, for all of the value
    // A decimal number, in thousandths.
    int least = 0;
    int most = 0;
};
ValueSyntax SyntaxOf(const AttributeRule& rule);

}  // namespace DataUtil
