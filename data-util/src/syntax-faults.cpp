#include "syntax-faults.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "face-schema.h"
#include "flat-schema.h"
#include "nearest-name.h"
#include "utf8.h"

namespace DataUtil {

namespace {

constexpr const Schema& (*kSchemas[])() = {FaceSchema, FlatSchema};

constexpr char kNoUtf8[] = "this byte is no UTF-8; save the file as UTF-8";

struct Advice {
    XML_Error error;
    const char* text;
};
constexpr Advice kAdvice[] = {
    {XML_ERROR_INVALID_TOKEN,          "invalid token"                                  },
    {XML_ERROR_PARTIAL_CHAR,           kNoUtf8                                          },
    {XML_ERROR_JUNK_AFTER_DOC_ELEMENT, "nothing may follow the end of the root element" },
    {XML_ERROR_UNCLOSED_TOKEN,         "the text ends before what begins here does"     },
    {XML_ERROR_UNCLOSED_CDATA_SECTION, "the text ends before what begins here does"     },
    {XML_ERROR_UNDEFINED_ENTITY,
     "undefined entity; only &amp; &lt; &gt; &quot; &apos; and numeric references exist"},
};

std::string AdviceOn(XML_Error error)
{
    const auto row = std::find_if(std::begin(kAdvice), std::end(kAdvice),
                                  [&](const Advice& a) { return a.error == error; });
    return row == std::end(kAdvice) ? XML_ErrorString(error) : row->text;
}

// The name that begins at `offset`, in a start or an end tag.
std::string_view NameAt(std::string_view text, std::size_t offset)
{
    const std::string_view rest = text.substr(std::min(offset, text.size()));
    return rest.substr(0, rest.find_first_of(" \t\r\n/>"));
}

std::string Tag(const char* begin, std::string_view name)
{
    return Quoted(begin + std::string(name) + ">");
}

// That the element whose start tag begins at `tag` is open.
std::string CloseOpen(std::size_t tag, std::string_view text, const TextMap& map)
{
    const std::string_view name = NameAt(text, tag + 1);
    return " where " + Tag("<", name) + " of line " + std::to_string(map.PlaceAt(tag).line) +
           " is open; close it with " + Tag("</", name);
}

// A "&" before `offset` that is the beginning of no reference.
std::optional<std::size_t> BareAmpersand(std::string_view text, std::size_t offset)
{
    const auto continuesName = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               static_cast<unsigned char>(c) >= 0x80 ||
               std::string_view("#._-:").find(c) != std::string_view::npos;
    };
    while (offset > 0 && continuesName(text[offset - 1])) --offset;
    if (offset == 0 || text[offset - 1] != '&') return std::nullopt;
    return offset - 1;
}

// What surrounds `offset`, of the tag that begins at `tag` or behind it.
enum class Surroundings { kContent, kTag, kValue };

Surroundings SurroundingsOf(std::string_view text, std::size_t tag, std::size_t offset)
{
    char quote = '\0';
    for (const char c : text.substr(tag, offset - tag)) {
        if (quote != '\0') {
            if (c == quote) quote = '\0';
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return Surroundings::kContent;
        }
    }
    return quote != '\0' ? Surroundings::kValue : Surroundings::kTag;
}

// True for the name of an element of either document.
bool IsElement(std::string_view name)
{
    return std::any_of(std::begin(kSchemas), std::end(kSchemas), [&](const Schema& (*schema)()) {
        return name == schema().Root().name || !schema().ParentNames(name).empty();
    });
}

// True where an element of that name may stand in `parent`, or as the root when that is empty.
bool MayStandIn(std::string_view parent, std::string_view name)
{
    return std::any_of(std::begin(kSchemas), std::end(kSchemas), [&](const Schema& (*schema)()) {
        if (parent.empty()) return name == schema().Root().name;
        const auto parents = schema().ParentNames(name);
        return std::find(parents.begin(), parents.end(), parent) != parents.end();
    });
}

// Of a start tag and an end tag that do not match, true when the start tag is the one to mend.
bool IsStartMisspelled(std::string_view parent, std::string_view start, std::string_view end)
{
    if (MayStandIn(parent, end)) return !MayStandIn(parent, start);
    return !IsElement(start) && IsElement(end) && !NearestName(start, {end}).empty();
}

// The end tag whose name begins at `offset` is not that of the innermost open element.
SyntaxFault ExplainMismatch(std::size_t offset, std::string_view text, const TextMap& map,
                            std::span<const std::size_t> open)
{
    const std::string_view start = NameAt(text, open.back() + 1);
    const std::string_view end = NameAt(text, offset);
    const std::string_view parent = open.size() < 2 ? "" : NameAt(text, open[open.size() - 2] + 1);
    if (IsStartMisspelled(parent, start, end))
        return {open.back(), Tag("<", start) + ", which " + Tag("</", end) + " of line " +
                                 std::to_string(map.PlaceAt(offset).line) + " closes; open it with " +
                                 Tag("<", end)};
    // The parser points at the name, behind "</".
    return {offset - 2, Tag("</", end) + CloseOpen(open.back(), text, map)};
}

// What the first bytes say that a text is: "a PNG picture"; null for other texts.
const char* PictureKind(std::string_view text)
{
    if (text.starts_with("\x89PNG\r\n")) return "a PNG picture";
    return text.starts_with("\xFF\xD8\xFF") ? "a JPEG picture" : nullptr;
}

// What is wrong with the byte that `rest` begins with, which is no part of any document; empty for others.
std::string ByteProblem(std::string_view rest)
{
    if (rest.empty()) return {};
    if (Platform::Utf8SequenceLength(rest) == 0) return kNoUtf8;
    const auto byte = static_cast<unsigned char>(rest.front());
    constexpr char kDigits[] = "0123456789ABCDEF";
    if (byte >= ' ' || std::string_view("\t\n\r").find(rest.front()) != std::string_view::npos) return {};
    return std::string("the control character U+00") + kDigits[byte / 16] + kDigits[byte % 16] +
           "; remove it";
}

SyntaxFault ExplainToken(std::size_t offset, std::string_view text, const TextMap& map)
{
    if (const char* kind = PictureKind(text)) return {offset, std::string("this is ") + kind};
    if (std::string problem = ByteProblem(text.substr(offset)); !problem.empty())
        return {offset, std::move(problem)};
    if (const auto ampersand = BareAmpersand(text, offset))
        return {*ampersand, "a bare \"&\"; write \"&amp;\""};
    const std::string_view before = text.substr(0, offset);
    if (before.ends_with('<') && text.substr(offset).starts_with('/'))
        return {offset - 1, Tag("</", NameAt(text, offset + 1)) + " closes no element; remove it"};
    if (before.ends_with('<')) return {offset - 1, "a bare \"<\"; write \"&lt;\""};
    const std::size_t tag = before.rfind('<');
    if (tag != std::string_view::npos) {
        const Surroundings around = SurroundingsOf(text, tag, offset);
        const bool opens = text.substr(offset).starts_with('<');
        if (around == Surroundings::kValue && opens)
            return {offset,
                    "\"<\" in the value of an attribute; write \"&lt;\", or end the value with its quote"};
        if (around == Surroundings::kTag && opens)
            return {offset, "\"<\" within the tag that line " + std::to_string(map.PlaceAt(tag).line) +
                                " begins; end that with \">\""};
        const std::size_t last = before.find_last_not_of(" \t\r\n");
        if (around == Surroundings::kTag && before[last] == '=')
            return {offset, "the value of an attribute stands in quotes"};
    }
    return {offset, AdviceOn(XML_ERROR_INVALID_TOKEN)};
}

}  // namespace

SyntaxFault ExplainSyntax(XML_Error error, std::size_t offset, std::string_view text, const TextMap& map,
                          std::span<const std::size_t> open)
{
    if (error == XML_ERROR_INVALID_TOKEN) return ExplainToken(offset, text, map);
    if (open.empty()) return {offset, AdviceOn(error)};
    if (error == XML_ERROR_TAG_MISMATCH) return ExplainMismatch(offset, text, map, open);
    if (error == XML_ERROR_NO_ELEMENTS) return {offset, "the text ends" + CloseOpen(open.back(), text, map)};
    return {offset, AdviceOn(error)};
}

}  // namespace DataUtil
