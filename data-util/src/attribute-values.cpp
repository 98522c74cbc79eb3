#include "attribute-values.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "character-count.h"
#include "color-names.h"
#include "nearest-name.h"

namespace DataUtil {

namespace {

using Value = std::optional<std::string>;

constexpr std::size_t kLongestSlug = 32;
constexpr std::size_t kLongestKey = 64;
constexpr std::size_t kLongestPath = 255;
constexpr std::size_t kLongestFaceId = 128;
constexpr std::size_t kLongestLabel = 32;
constexpr std::size_t kLongestShortText = 64;
constexpr std::string_view kZoneFolder = "/zoneinfo/";
constexpr const char* kShortTextWords = "1 to 64 characters, none of them a control character";
constexpr const char* kShortTextPattern = ".{1,64}";

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool IsLower(char c)
{
    return c >= 'a' && c <= 'z';
}
bool IsUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}
bool IsLetter(char c)
{
    return IsLower(c) || IsUpper(c);
}
bool IsLetterOrDigit(char c)
{
    return IsLetter(c) || IsDigit(c);
}
bool IsCapitalOrDigit(char c)
{
    return IsUpper(c) || IsDigit(c);
}
bool IsHexDigit(char c)
{
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool ConsistsOf(std::string_view text, bool (*accepts)(char))
{
    return std::all_of(text.begin(), text.end(), accepts);
}

// 1 to `most` characters of a kind.
bool IsWord(std::string_view text, std::size_t most, bool (*accepts)(char))
{
    return !text.empty() && text.size() <= most && ConsistsOf(text, accepts);
}

std::string FormatThousandths(int value)
{
    const int magnitude = std::abs(value);
    std::string text = (value < 0 ? "-" : "") + std::to_string(magnitude / 1000);
    if (magnitude % 1000 != 0) {
        std::string decimals = std::to_string(1000 + magnitude % 1000).substr(1);
        decimals.erase(decimals.find_last_not_of('0') + 1);
        text += "." + decimals;
    }
    return text;
}

// One row per kind of number, in the order of the kinds: the least and the most in thousandths, the step, and
// the words for a message.
struct NumberRange {
    ValueKind kind;
    int least, most, step;
    const char* expected;
};
constexpr NumberRange kNumberRanges[] = {
    {ValueKind::kFormat,     1000,     99999000, 1000,   "a whole number from 1"                              },
    {ValueKind::kVersion,    1000,     99999000, 1000,   "a whole number from 1 to 99999"                     },
    {ValueKind::kCanvas,     16000,    4096000,  1000,   "a whole number from 16 to 4096"                     },
    {ValueKind::kCoordinate, -8192000, 8192000,  1,      "a number from -8192 to 8192 with at most 3 decimals"},
    {ValueKind::kLength,     0,        8192000,  1,      "a number from 0 to 8192 with at most 3 decimals"    },
    {ValueKind::kDegrees,    -360000,  360000,   1,      "degrees from -360 to 360 with at most 3 decimals"   },
    {ValueKind::kShare,      0,        1000,     1,      "a number from 0 to 1 with at most 3 decimals"       },
    {ValueKind::kFontSize,   4000,     512000,   1,      "a number from 4 to 512 with at most 3 decimals"     },
    {ValueKind::kWeight,     100000,   900000,   100000, "a weight from 100 to 900 in hundreds"               },
    {ValueKind::kBlur,       0,        32000,    1,      "a number from 0 to 32 with at most 3 decimals"      },
    {ValueKind::kCount,      1000,     360000,   1000,   "a whole number from 1 to 360"                       },
    {ValueKind::kSkip,       0,        360000,   1000,   "a whole number from 0 to 360"                       },
};

Value Number(const NumberRange& range, std::string_view raw)
{
    const auto value = ParseThousandths(raw);
    if (value && *value >= range.least && *value <= range.most && *value % range.step == 0) {
        return FormatThousandths(*value);
    }
    return std::nullopt;
}

bool IsSlugOf(std::string_view text, std::size_t longest, bool dots)
{
    if (text.empty() || text.size() > longest || !IsLower(text.front())) return false;
    return std::all_of(text.begin(), text.end(),
                       [dots](char c) { return IsLower(c) || IsDigit(c) || c == '-' || (dots && c == '.'); });
}

bool IsSlug(std::string_view raw)
{
    return IsSlugOf(raw, kLongestSlug, false);
}

bool IsRoleName(std::string_view raw)
{
    return raw != "none" && IsSlug(raw);
}

bool IsKey(std::string_view raw)
{
    return IsSlugOf(raw, kLongestKey, true);
}

bool IsLanguage(std::string_view raw)
{
    if (raw.size() > 35) return false;
    std::size_t begin = 0;
    for (std::size_t part = 0; begin <= raw.size(); ++part) {
        const std::size_t end = std::min(raw.find('-', begin), raw.size());
        const std::string_view subtag = raw.substr(begin, end - begin);
        if (subtag.size() < 2 || subtag.size() > (part == 0 ? 3U : 8U)) return false;
        if (part == 0 && !ConsistsOf(subtag, IsLower)) return false;
        if (!ConsistsOf(subtag, IsLetterOrDigit)) return false;
        begin = end + 1;
    }
    return true;
}

bool IsFaceId(std::string_view raw)
{
    if (raw.empty() || raw.size() > kLongestFaceId || !IsLower(raw.front())) return false;
    if (raw.ends_with('.') || raw.find("..") != std::string_view::npos) return false;
    return ConsistsOf(raw, [](char c) { return IsLower(c) || IsDigit(c) || c == '-' || c == '.'; });
}

bool IsTime(std::string_view raw)
{
    if (raw.size() != 8 || raw[2] != ':' || raw[5] != ':') return false;
    for (const std::size_t i : {0U, 1U, 3U, 4U, 6U, 7U}) {
        if (!IsDigit(raw[i])) return false;
    }
    return raw.substr(0, 2) < "24" && raw.substr(3, 2) < "60" && raw.substr(6, 2) < "60";
}

bool IsSkeleton(std::string_view raw)
{
    return IsWord(raw, 16, [](char c) {
        return std::string_view("GyMLdEcDwaBhHjJms").find(c) != std::string_view::npos;
    });
}

bool IsAsset(std::string_view raw)
{
    if (raw.empty() || raw.size() > kLongestPath || raw.find('\\') != std::string_view::npos) return false;
    for (std::size_t begin = 0; begin <= raw.size();) {
        const std::size_t end = std::min(raw.find('/', begin), raw.size());
        const std::string_view part = raw.substr(begin, end - begin);
        if (part.empty() || part == "." || part == "..") return false;
        begin = end + 1;
    }
    return CountCharacters(raw).has_value();
}

bool IsFileName(std::string_view raw)
{
    return !raw.empty() && raw.size() <= kLongestPath && raw != "." && raw != ".." &&
           raw.find('/') == std::string_view::npos && CountCharacters(raw).has_value();
}

bool IsShortText(std::string_view raw)
{
    const auto count = CountCharacters(raw);
    return count && *count > 0 && *count <= kLongestShortText;
}

// Parts of letters, digits and "_+-", with "/" between them.
bool IsZoneId(std::string_view raw)
{
    return !raw.empty() && raw.front() != '/' && raw.back() != '/' &&
           raw.find("//") == std::string_view::npos && ConsistsOf(raw, [](char c) {
               return IsLetterOrDigit(c) || c == '_' || c == '+' || c == '-' || c == '/';
           });
}

bool IsZonePath(std::string_view raw)
{
    if (raw.size() > kLongestPath) return false;
    if (!raw.starts_with('/')) return IsZoneId(raw);
    const std::size_t folder = raw.find(kZoneFolder);
    return folder != std::string_view::npos && folder + kZoneFolder.size() < raw.size() &&
           IsZoneId(raw.substr(1));
}

bool IsUsage(std::string_view raw)
{
    return IsWord(raw, 16, IsLetterOrDigit);
}

bool IsPrefix(std::string_view raw)
{
    return IsWord(raw, 8, IsCapitalOrDigit);
}

bool IsPickedName(std::string_view raw)
{
    return raw.size() <= 64;
}

template <bool (*accepts)(std::string_view)>
Value Unchanged(std::string_view raw)
{
    return accepts(raw) ? Value(raw) : std::nullopt;
}

// Capitals, and no alpha that is opaque.
Value Hexadecimal(std::string_view raw)
{
    const bool good = (raw.size() == 7 || raw.size() == 9) && raw.front() == '#';
    if (!good || !ConsistsOf(raw.substr(1), IsHexDigit)) return std::nullopt;
    std::string value(raw);
    for (char& c : value) c = IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
    if (value.size() == 9 && value.ends_with("FF")) value.resize(7);
    return value;
}

Value Paint(std::string_view raw)
{
    return raw == "none" ? Value(raw) : Hexadecimal(raw);
}

Value PaintOrRole(std::string_view raw)
{
    return IsSlug(raw) ? Value(raw) : Hexadecimal(raw);
}

Value Points(std::string_view raw)
{
    const NumberRange& range = kNumberRanges[static_cast<std::size_t>(ValueKind::kCoordinate)];
    const auto pairs = SplitAtSpaces(raw);
    std::string value;
    if (pairs.size() < 3 || pairs.size() > 128) return std::nullopt;
    for (const std::string_view pair : pairs) {
        const std::size_t comma = pair.find(',');
        if (comma == std::string_view::npos) return std::nullopt;
        const Value x = Number(range, pair.substr(0, comma));
        const Value y = Number(range, pair.substr(comma + 1));
        if (!x || !y) return std::nullopt;
        value += (value.empty() ? "" : " ") + *x + "," + *y;
    }
    return value;
}

Value List(std::string_view raw, std::size_t most, bool (*accepts)(std::string_view))
{
    const auto parts = SplitAtSpaces(raw);
    if (parts.empty() || parts.size() > most || !std::all_of(parts.begin(), parts.end(), accepts))
        return std::nullopt;
    std::string value;
    for (const std::string_view part : parts) value += (value.empty() ? "" : " ") + std::string(part);
    return value;
}

Value Labels(std::string_view raw)
{
    return List(raw, 60,
                [](std::string_view part) { return part.size() <= kLongestLabel && CountCharacters(part); });
}

Value Indices(std::string_view raw)
{
    return List(raw, 360, [](std::string_view part) {
        return IsWord(part, 3, IsDigit) && (part.size() == 1 || part.front() != '0');
    });
}

Value Condition(std::string_view raw)
{
    const auto terms = ParseCondition(raw);
    if (!terms) return std::nullopt;
    std::string value;
    for (const Term& term : *terms) {
        value += (value.empty() ? "" : " ") + term.subject + (term.negated ? "!=" : "=") + term.value;
    }
    return value;
}

// The language tag that is written with underscores here, as locales are, or an empty text.
std::string WithHyphens(std::string_view raw)
{
    std::string tag(raw);
    std::replace(tag.begin(), tag.end(), '_', '-');
    return IsLanguage(tag) ? tag : "";
}

// One row per kind of text: its canonical form, the words for a message, and as much of it as a pattern can
// say.
struct TextSyntax {
    ValueKind kind;
    Value (*canonical)(std::string_view);
    const char* expected;
    const char* pattern;
};
// clang-format off
constexpr TextSyntax kTextSyntaxes[] = {
    {ValueKind::kColor, PaintOrRole, "a colour as #RRGGBB, #RRGGBBAA, none or a palette role",
     "#[0-9A-Fa-f]{6}([0-9A-Fa-f]{2})?|[a-z][a-z0-9\\-]{0,31}"},
    {ValueKind::kPaint, Paint, "a colour as #RRGGBB, #RRGGBBAA or none",
     "#[0-9A-Fa-f]{6}([0-9A-Fa-f]{2})?|none"},
    {ValueKind::kLiteralColor, Hexadecimal, "a colour as #RRGGBB or #RRGGBBAA",
     "#[0-9A-Fa-f]{6}([0-9A-Fa-f]{2})?"},
    {ValueKind::kSlug, Unchanged<IsSlug>, "a small letter, then up to 31 small letters, digits and hyphens",
     "[a-z][a-z0-9\\-]{0,31}"},
    {ValueKind::kRoleName, Unchanged<IsRoleName>,
     "a small letter, then up to 31 small letters, digits and hyphens, and not \"none\"",
     "[a-z][a-z0-9\\-]{0,31}"},
    {ValueKind::kStringKey, Unchanged<IsKey>,
     "a small letter, then up to 63 small letters, digits, hyphens and dots", "[a-z][a-z0-9.\\-]{0,63}"},
    {ValueKind::kLanguage, Unchanged<IsLanguage>, "a BCP 47 language tag with hyphens, as \"pt-BR\"",
     "[a-z]{2,3}(-[A-Za-z0-9]{2,8})*"},
    {ValueKind::kFaceId, Unchanged<IsFaceId>, "small letters, digits, hyphens and dots, at most 128",
     "[a-z][a-z0-9\\-]*(\\.[a-z0-9\\-]+)*"},
    {ValueKind::kTime, Unchanged<IsTime>, "a time of day as HH:MM:SS",
     "([01][0-9]|2[0-3]):[0-5][0-9]:[0-5][0-9]"},
    {ValueKind::kSkeleton, Unchanged<IsSkeleton>,
     "1 to 16 skeleton letters out of G y M L d E c D w a B h H j J m s", "[GyMLdEcDwaBhHjJms]{1,16}"},
    {ValueKind::kAsset, Unchanged<IsAsset>,
     "a path inside the face's folder of at most 255 bytes, with \"/\" between parts that are not empty, \".\" or "
     "\"..\"",
     "[^/\\\\]+(/[^/\\\\]+)*"},
    {ValueKind::kCondition, Condition,
     "conditions as \"group=option\" or \"group!=option\", separated by spaces",
     " *[a-z][a-z0-9\\-]{0,31}!?=[a-z][a-z0-9\\-]{0,31}( +[a-z][a-z0-9\\-]{0,31}!?=[a-z][a-z0-9\\-]{0,31}){0,15} *"},
    {ValueKind::kPoints, Points, "3 to 128 points as \"x,y x,y x,y\"",
     " *[0-9.\\-]+,[0-9.\\-]+( +[0-9.\\-]+,[0-9.\\-]+){2,127} *"},
    {ValueKind::kLabels, Labels, "1 to 60 labels of at most 32 bytes, separated by spaces",
     " *[^ ]+( +[^ ]+){0,59} *"},
    {ValueKind::kIndices, Indices, "indices of marks, separated by spaces", " *[0-9]{1,3}( +[0-9]{1,3})* *"},
    {ValueKind::kPickedName, Unchanged<IsPickedName>, "at most 64 bytes", ".{1,64}"},
    {ValueKind::kUsage, Unchanged<IsUsage>, "1 to 16 letters and digits", "[A-Za-z0-9]{1,16}"},
    {ValueKind::kPrefix, Unchanged<IsPrefix>, "1 to 8 capital letters and digits", "[A-Z0-9]{1,8}"},
    {ValueKind::kFileName, Unchanged<IsFileName>,
     "a bare file name of at most 255 bytes, without \"/\" and control characters", "[^/]{1,255}"},
    {ValueKind::kShortText, Unchanged<IsShortText>, kShortTextWords, kShortTextPattern},
    {ValueKind::kZoneName, Unchanged<IsShortText>, kShortTextWords, kShortTextPattern},
    {ValueKind::kCountry, Unchanged<IsShortText>, kShortTextWords, kShortTextPattern},
    {ValueKind::kZonePath, Unchanged<IsZonePath>,
     "a time zone as \"Asia/Tokyo\" or as a path that has it behind \"/zoneinfo/\"",
     "(/([A-Za-z0-9_+\\-]+/)*zoneinfo/)?[A-Za-z0-9_+\\-]+(/[A-Za-z0-9_+\\-]+)*"},
};
// clang-format on

// The table's row of that kind, or null.
template <typename Row, std::size_t Count>
const Row* RowOf(const Row (&rows)[Count], ValueKind kind)
{
    const auto at =
        std::find_if(std::begin(rows), std::end(rows), [kind](const Row& row) { return row.kind == kind; });
    return at == std::end(rows) ? nullptr : at;
}

// What is neither a number nor a text of a form is one of some names.
std::vector<std::string_view> NamesOf(const AttributeRule& rule)
{
    if (rule.kind == ValueKind::kChoice) return SplitAtSpaces(rule.choices);
    std::vector<std::string_view> names;
    names.reserve(kSources.size() + 1);
    for (const Source& source : kSources) names.emplace_back(source.name);
    if (rule.kind == ValueKind::kSourceOrEmpty) names.emplace_back(kEmptySource);
    return names;
}

}  // namespace

std::optional<int> ParseThousandths(std::string_view text)
{
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::string_view whole = text.substr(0, point);
    std::string_view decimals = text.substr(point);
    if (!decimals.empty()) {
        decimals.remove_prefix(1);
        if (decimals.empty()) return std::nullopt;
    }
    if (whole.empty() || whole.size() > 5 || decimals.size() > 3) return std::nullopt;
    if (!ConsistsOf(whole, IsDigit) || !ConsistsOf(decimals, IsDigit)) return std::nullopt;
    int value = 0;
    for (const char c : whole) value = value * 10 + (c - '0');
    for (std::size_t i = 0; i < 3; ++i) value = value * 10 + (i < decimals.size() ? decimals[i] - '0' : 0);
    return negative ? -value : value;
}

std::vector<std::string_view> SplitAtSpaces(std::string_view text)
{
    std::vector<std::string_view> parts;
    std::size_t begin = 0;
    while ((begin = text.find_first_not_of(' ', begin)) != std::string_view::npos) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return parts;
}

std::optional<std::vector<Term>> ParseCondition(std::string_view text)
{
    std::vector<Term> terms;
    for (const std::string_view part : SplitAtSpaces(text)) {
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos) return std::nullopt;
        std::string_view subject = part.substr(0, equals);
        const bool negated = subject.ends_with('!');
        if (negated) subject.remove_suffix(1);
        const std::string_view value = part.substr(equals + 1);
        if (!IsSlug(subject) || !IsSlug(value)) return std::nullopt;
        terms.push_back({std::string(subject), std::string(value), negated});
    }
    if (terms.empty() || terms.size() > 16) return std::nullopt;
    return terms;
}

std::optional<std::string> CanonicalValue(const AttributeRule& rule, std::string_view raw,
                                          std::string& problem)
{
    Value value;
    if (const NumberRange* range = RowOf(kNumberRanges, rule.kind)) {
        value = Number(*range, raw);
        if (!value) problem = range->expected;
    } else if (const TextSyntax* syntax = RowOf(kTextSyntaxes, rule.kind)) {
        value = syntax->canonical(raw);
        if (value) return value;
        problem = syntax->expected;
        const std::string meant = ProbableValue(rule, raw);
        if (!meant.empty()) problem += OrMeant(meant);
    } else {
        const auto names = NamesOf(rule);
        if (std::find(names.begin(), names.end(), raw) != names.end()) value = raw;
        if (!value) problem = "one of the known names" + Suggestion(raw, names);
    }
    return value;
}

std::string ProbableValue(const AttributeRule& rule, std::string_view raw)
{
    switch (rule.kind) {
        case ValueKind::kLanguage:
            return WithHyphens(raw);
        case ValueKind::kLiteralColor:
        case ValueKind::kPaint:
            return std::string(ValueOfColor(raw));
        case ValueKind::kChoice:
        case ValueKind::kSource:
        case ValueKind::kSourceOrEmpty:
            return std::string(NearestName(raw, NamesOf(rule)));
        default:
            return "";
    }
}

ValueSyntax SyntaxOf(const AttributeRule& rule)
{
    if (const NumberRange* range = RowOf(kNumberRanges, rule.kind))
        return {.least = range->least, .most = range->most};
    if (const TextSyntax* syntax = RowOf(kTextSyntaxes, rule.kind)) return {.pattern = syntax->pattern};
    return {.names = NamesOf(rule)};
}

}  // namespace DataUtil
