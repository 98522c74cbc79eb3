#include "attribute-values.h"

#include <algorithm>
#include <cstddef>

#include "nearest-name.h"
#include "utf8.h"

namespace DataUtil {

namespace {

constexpr Source kSourceTable[] = {
    {"date",         false, false, "d"    },
    {"battery",      true,  false, nullptr},
    {"pedometer",    true,  false, nullptr},
    {"heartrate",    true,  false, nullptr},
    {"water",        true,  false, nullptr},
    {"caffeine",     true,  false, nullptr},
    {"weather",      false, true,  nullptr},
    {"calendar",     false, true,  nullptr},
    {"alarm",        false, false, nullptr},
    {"d-day",        false, false, nullptr},
    {"notification", false, true,  nullptr},
    {"shortcut",     false, false, nullptr},
    {"moonphase",    false, false, nullptr},
    {"worldclock",   false, false, "Jmm"  },
};

}  // namespace

constexpr std::span<const Source> kSources = kSourceTable;

const Source* FindSource(std::string_view name)
{
    const auto at =
        std::find_if(kSources.begin(), kSources.end(), [&](const Source& s) { return name == s.name; });
    return at == kSources.end() ? nullptr : &*at;
}

namespace {

using Value = std::optional<std::string>;

constexpr std::string_view kSkeletonLetters = "GyMLdEcDwaBhHjJms";
constexpr std::size_t kLongestSkeleton = 16;
constexpr std::size_t kLongestPath = 255;
constexpr std::size_t kLongestFaceId = 128;
constexpr std::size_t kLongestLabel = 32;
constexpr std::size_t kLongestShortText = 64;
constexpr std::string_view kZoneFolder = "/zoneinfo/";

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

bool ConsistsOf(std::string_view text, bool (*accepts)(char))
{
    return std::all_of(text.begin(), text.end(), accepts);
}

bool IsSlug(std::string_view text, std::size_t longest, bool dots)
{
    if (text.empty() || text.size() > longest || !IsLower(text.front())) return false;
    return std::all_of(text.begin(), text.end(),
                       [dots](char c) { return IsLower(c) || IsDigit(c) || c == '-' || (dots && c == '.'); });
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

Value Number(const NumberRange& range, std::string_view raw, std::string& problem)
{
    const auto value = ParseThousandths(raw);
    if (value && *value >= range.least && *value <= range.most && *value % range.step == 0) {
        return FormatThousandths(*value);
    }
    problem = range.expected;
    return std::nullopt;
}

Value Checked(bool good, std::string_view raw, const char* expected, std::string& problem)
{
    if (good) return std::string(raw);
    problem = expected;
    return std::nullopt;
}

Value Color(std::string_view raw, ValueKind kind, std::string& problem)
{
    if (raw == "none" && kind != ValueKind::kLiteralColor) return std::string(raw);
    if (raw.starts_with('#')) {
        const bool hex = (raw.size() == 7 || raw.size() == 9) && ConsistsOf(raw.substr(1), [](char c) {
                             return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
                         });
        if (hex) {
            std::string value(raw);
            for (char& c : value) c = IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
            if (value.size() == 9 && value.ends_with("FF")) value.resize(7);
            return value;
        }
    } else if (kind == ValueKind::kColor && IsSlug(raw, 32, false)) {
        return std::string(raw);
    }
    problem = kind == ValueKind::kLiteralColor ? "a colour as #RRGGBB or #RRGGBBAA"
              : kind == ValueKind::kPaint      ? "a colour as #RRGGBB, #RRGGBBAA or none"
                                               : "a colour as #RRGGBB, #RRGGBBAA, none or a palette role";
    return std::nullopt;
}

Value OneOf(std::string_view raw, const std::vector<std::string_view>& names, std::string& problem)
{
    if (std::find(names.begin(), names.end(), raw) != names.end()) return std::string(raw);
    problem = "one of the known names" + Suggestion(raw, names);
    return std::nullopt;
}

Value SourceName(std::string_view raw, bool emptyToo, std::string& problem)
{
    std::vector<std::string_view> names;
    names.reserve(std::size(kSources) + 1);
    for (const Source& source : kSources) names.emplace_back(source.name);
    if (emptyToo) names.emplace_back("empty");
    return OneOf(raw, names, problem);
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
        if (!ConsistsOf(subtag, [](char c) { return IsLower(c) || IsUpper(c) || IsDigit(c); })) return false;
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
    return !raw.empty() && raw.size() <= kLongestSkeleton &&
           ConsistsOf(raw, [](char c) { return kSkeletonLetters.find(c) != std::string_view::npos; });
}

// Says for the first bad part of a path why it is refused, or nothing.
const char* AssetProblem(std::string_view raw)
{
    if (raw.empty() || raw.size() > kLongestPath) return "a path of 1 to 255 bytes";
    if (raw.front() == '/') return "a path relative to the face's folder, without a leading \"/\"";
    if (raw.find('\\') != std::string_view::npos)
        return "a path with \"/\" between its parts, without \"\\\"";
    for (std::size_t begin = 0; begin <= raw.size();) {
        const std::size_t end = std::min(raw.find('/', begin), raw.size());
        const std::string_view part = raw.substr(begin, end - begin);
        if (part.empty()) return "a path without empty parts";
        if (part == "." || part == "..") return "a path inside the face's folder, without \".\" and \"..\"";
        begin = end + 1;
    }
    const bool control =
        !ConsistsOf(raw, [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7f; });
    return control ? "a path without control characters" : nullptr;
}

bool IsLetter(char c)
{
    return IsLower(c) || IsUpper(c);
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
               return IsLetter(c) || IsDigit(c) || c == '_' || c == '+' || c == '-' || c == '/';
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

Value Points(std::string_view raw, std::string& problem)
{
    const NumberRange& range = kNumberRanges[static_cast<std::size_t>(ValueKind::kCoordinate)];
    const auto pairs = SplitAtSpaces(raw);
    std::string value;
    problem = "3 to 128 points as \"x,y x,y x,y\"";
    if (pairs.size() < 3 || pairs.size() > 128) return std::nullopt;
    for (const std::string_view pair : pairs) {
        const std::size_t comma = pair.find(',');
        if (comma == std::string_view::npos) return std::nullopt;
        std::string unused;
        const Value x = Number(range, pair.substr(0, comma), unused);
        const Value y = Number(range, pair.substr(comma + 1), unused);
        if (!x || !y) return std::nullopt;
        value += (value.empty() ? "" : " ") + *x + "," + *y;
    }
    return value;
}

Value Joined(std::string_view raw, std::size_t most, bool (*accepts)(std::string_view), const char* expected,
             std::string& problem)
{
    const auto parts = SplitAtSpaces(raw);
    const bool good =
        !parts.empty() && parts.size() <= most && std::all_of(parts.begin(), parts.end(), accepts);
    std::string value;
    for (const std::string_view part : parts) value += (value.empty() ? "" : " ") + std::string(part);
    return Checked(good, value, expected, problem);
}

bool IsIndex(std::string_view part)
{
    return part.size() <= 3 && ConsistsOf(part, IsDigit) && (part.size() == 1 || part.front() != '0');
}

Value Condition(std::string_view raw, std::string& problem)
{
    const auto terms = ParseCondition(raw);
    if (!terms) {
        problem = "conditions as \"group=option\" or \"group!=option\", separated by spaces";
        return std::nullopt;
    }
    std::string value;
    for (const Term& term : *terms) {
        value += (value.empty() ? "" : " ") + term.subject + (term.negated ? "!=" : "=") + term.value;
    }
    return value;
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
        if (!IsSlug(subject, 32, false) || !IsSlug(value, 32, false)) return std::nullopt;
        terms.push_back({std::string(subject), std::string(value), negated});
    }
    if (terms.empty() || terms.size() > 16) return std::nullopt;
    return terms;
}

std::optional<std::string> CanonicalValue(const AttributeRule& rule, std::string_view raw,
                                          std::string& problem)
{
    for (const NumberRange& range : kNumberRanges) {
        if (range.kind == rule.kind) return Number(range, raw, problem);
    }
    constexpr const char* slugExpected = "a small letter, then up to 31 small letters, digits and hyphens";
    switch (rule.kind) {
        case ValueKind::kColor:
        case ValueKind::kPaint:
        case ValueKind::kLiteralColor:
            return Color(raw, rule.kind, problem);
        case ValueKind::kChoice:
            return OneOf(raw, SplitAtSpaces(rule.choices), problem);
        case ValueKind::kSlug:
            return Checked(IsSlug(raw, 32, false), raw, slugExpected, problem);
        case ValueKind::kRoleName:
            return Checked(raw != "none" && IsSlug(raw, 32, false), raw, slugExpected, problem);
        case ValueKind::kStringKey:
            return Checked(IsSlug(raw, 64, true), raw,
                           "a small letter, then up to 63 small letters, digits, hyphens and dots", problem);
        case ValueKind::kLanguage:
            return Checked(IsLanguage(raw), raw, "a BCP 47 language tag with hyphens, as \"pt-BR\"", problem);
        case ValueKind::kFaceId:
            return Checked(IsFaceId(raw), raw, "small letters, digits, hyphens and dots, at most 128",
                           problem);
        case ValueKind::kTime:
            return Checked(IsTime(raw), raw, "a time of day as HH:MM:SS", problem);
        case ValueKind::kSkeleton:
            return Checked(IsSkeleton(raw), raw,
                           "1 to 16 skeleton letters out of G y M L d E c D w a B h H j J m s", problem);
        case ValueKind::kAsset: {
            const char* expected = AssetProblem(raw);
            return Checked(expected == nullptr, raw, expected, problem);
        }
        case ValueKind::kCondition:
            return Condition(raw, problem);
        case ValueKind::kPoints:
            return Points(raw, problem);
        case ValueKind::kLabels:
            return Joined(
                raw, 60,
                [](std::string_view part) { return part.size() <= kLongestLabel && CountCharacters(part); },
                "1 to 60 labels of at most 32 bytes, separated by spaces", problem);
        case ValueKind::kIndices:
            return Joined(raw, 360, IsIndex, "indices of marks, separated by spaces", problem);
        case ValueKind::kUsage:
            return Checked(!raw.empty() && raw.size() <= 16 &&
                               ConsistsOf(raw, [](char c) { return IsLetter(c) || IsDigit(c); }),
                           raw, "1 to 16 letters and digits", problem);
        case ValueKind::kPrefix:
            return Checked(!raw.empty() && raw.size() <= 8 &&
                               ConsistsOf(raw, [](char c) { return IsUpper(c) || IsDigit(c); }),
                           raw, "1 to 8 capital letters and digits", problem);
        case ValueKind::kFileName:
            return Checked(IsFileName(raw), raw,
                           "a bare file name of at most 255 bytes, without \"/\" and control characters",
                           problem);
        case ValueKind::kShortText:
            return Checked(IsShortText(raw), raw, "1 to 64 characters, none of them a control character",
                           problem);
        case ValueKind::kZonePath:
            return Checked(IsZonePath(raw), raw,
                           "a time zone as \"Asia/Tokyo\" or as a path that has it behind \"/zoneinfo/\"",
                           problem);
        case ValueKind::kSource:
        case ValueKind::kSourceOrEmpty:
            return SourceName(raw, rule.kind == ValueKind::kSourceOrEmpty, problem);
        default:
            return Checked(raw.size() <= 64, raw, "at most 64 bytes", problem);
    }
}

}  // namespace DataUtil
