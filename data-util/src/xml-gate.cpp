#include "xml-gate.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "syntax-faults.h"

namespace DataUtil {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// With its mark, or by the half of its first character that is zero. Expat takes UTF-16 for what it is,
// whatever encoding it is told.
bool IsUtf16(std::string_view text)
{
    if (text.size() < 2) return false;
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") ||
           (text[0] == '\0') != (text[1] == '\0');
}

std::string EncodingProblem(const std::string& encoding)
{
    return "encoding \"" + encoding + "\"; store it as UTF-8";
}

// What tells elements of one name apart in a path.
constexpr const char* kIdentifying[] = {"id", "name", "key", "language", "role"};
constexpr std::size_t kLongestIdentity = 64;

// One run of expat over a text. The first fault stops it.
class Gate {
public:
    explicit Gate(std::string_view text) : mParser(XML_ParserCreate("UTF-8")), mText(text)
    {
        if (mParser == nullptr) throw std::bad_alloc();
        XML_SetUserData(mParser, this);
        XML_SetElementHandler(mParser, &Gate::OnStart, &Gate::OnEnd);
        XML_SetStartDoctypeDeclHandler(mParser, &Gate::OnDoctype);
        XML_SetXmlDeclHandler(mParser, &Gate::OnDeclaration);
    }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate() { XML_ParserFree(mParser); }

    // True when the text passes; else `findings` has the reason.
    bool Run(Findings& findings)
    {
        const auto status = XML_Parse(mParser, mText.data(), static_cast<int>(mText.size()), XML_TRUE);
        if (status == XML_STATUS_OK) return true;
        const TextMap map(mText);
        if (mCode.empty()) {
            const XML_Error error = XML_GetErrorCode(mParser);
            if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
            SyntaxFault fault = ExplainSyntax(error, Here(), mText, map, {mOpen.data(), mDepth});
            mCode = "E-SYNTAX";
            mMessage = "not well-formed XML: " + std::move(fault.message);
            mOffset = fault.offset;
        }
        findings.Add(mCode, map.PlaceAt(mOffset), mMessage);
        return false;
    }

private:
    std::size_t Here() const
    {
        const XML_Index index = XML_GetCurrentByteIndex(mParser);
        return index < 0 ? 0 : std::min(static_cast<std::size_t>(index), mText.size());
    }

    void Refuse(const char* code, std::string message)
    {
        if (!mCode.empty()) return;
        mCode = code;
        mMessage = std::move(message);
        mOffset = Here();
        XML_StopParser(mParser, XML_FALSE);
    }

    static void XMLCALL OnStart(void* self, const XML_Char*, const XML_Char** attributes)
    {
        auto* gate = static_cast<Gate*>(self);
        int count = 0;
        while (attributes[2 * count] != nullptr) ++count;
        if (gate->mDepth == kMostDepth) {
            gate->Refuse("E-LIMIT-DEPTH",
                         "elements are nested deeper than " + std::to_string(kMostDepth) + " levels");
        } else if (++gate->mElements > kMostElements) {
            gate->Refuse("E-LIMIT-COUNT", "more than " + std::to_string(kMostElements) + " elements");
        } else if (count > kMostAttributes) {
            gate->Refuse("E-LIMIT-COUNT",
                         "more than " + std::to_string(kMostAttributes) + " attributes in one element");
        }
        gate->mOpen[std::min(gate->mDepth++, kMostDepth - 1)] = gate->Here();
    }

    static void XMLCALL OnEnd(void* self, const XML_Char*) { --static_cast<Gate*>(self)->mDepth; }

    static void XMLCALL OnDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int)
    {
        static_cast<Gate*>(self)->Refuse("E-DOCTYPE",
                                         "a document type is not allowed; remove <!DOCTYPE ...>");
    }

    static void XMLCALL OnDeclaration(void* self, const XML_Char*, const XML_Char* encoding, int)
    {
        if (encoding == nullptr) return;
        std::string name(encoding);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
        if (name != "UTF-8") {
            static_cast<Gate*>(self)->Refuse("E-ENCODING", EncodingProblem(encoding));
        }
    }

    XML_Parser mParser;
    std::string_view mText;
    std::string mCode;
    std::string mMessage;
    std::size_t mOffset = 0;
    // Where the start tags stand that are not closed yet. No vector: growing may throw, and not through
    // expat.
    std::array<std::size_t, kMostDepth> mOpen{};
    std::size_t mDepth = 0;
    int mElements = 0;
};

bool IsXmlSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The offset at which the attribute `wanted` begins in the start tag whose name begins at `offset`. The text
// has passed the gate, so the tag is complete; without such an attribute it is `offset` itself.
std::size_t AttributeOffset(std::string_view text, std::size_t offset, std::string_view wanted)
{
    std::size_t i = offset;
    const auto skipTo = [&](auto isEnd) {
        while (i < text.size() && !isEnd(text[i])) ++i;
    };
    const auto endsName = [](char c) { return IsXmlSpace(c) || c == '=' || c == '/' || c == '>'; };
    skipTo(endsName);
    while (true) {
        skipTo([](char c) { return !IsXmlSpace(c); });
        const std::size_t begin = i;
        skipTo(endsName);
        if (i == begin) return offset;
        if (text.substr(begin, i - begin) == wanted) return begin;
        skipTo([](char c) { return c == '"' || c == '\''; });
        if (i >= text.size()) return offset;
        const char quote = text[i++];
        skipTo([quote](char c) { return c == quote; });
        ++i;
    }
}

}  // namespace

TextMap::TextMap(std::string_view text) : mText(text), mLineStarts{0}
{
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % kStep == 0) mCharactersBefore.push_back(characters);
        // Continuation bytes of UTF-8 are no characters of their own.
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) ++characters;
        if (text[i] == '\n') mLineStarts.push_back(i + 1);
    }
    mCharactersBefore.push_back(characters);
}

std::size_t TextMap::CharactersBefore(std::size_t offset) const
{
    const std::size_t step = offset / kStep;
    std::size_t characters = mCharactersBefore[step];
    for (std::size_t i = step * kStep; i < offset; ++i) {
        if ((static_cast<unsigned char>(mText[i]) & 0xC0) != 0x80) ++characters;
    }
    return characters;
}

Place TextMap::PlaceAt(std::size_t offset) const
{
    offset = std::min(offset, mText.size());
    const auto next = std::upper_bound(mLineStarts.begin(), mLineStarts.end(), offset);
    const std::size_t column = CharactersBefore(offset) - CharactersBefore(*std::prev(next)) + 1;
    return {static_cast<int>(next - mLineStarts.begin()), static_cast<int>(column), ""};
}

XmlTree::XmlTree(std::string_view text) : mText(text) {}

std::unique_ptr<XmlTree> XmlTree::Load(std::string_view text, Findings& findings)
{
    const Place beginning{1, 1, ""};
    if (text.size() > kMostBytes) {
        findings.Add(
            "E-LIMIT-SIZE", beginning,
            "the document has more than the " + std::to_string(kMostBytes) + " bytes that are allowed");
        return nullptr;
    }
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    if (IsUtf16(text)) {
        findings.Add("E-ENCODING", beginning, EncodingProblem("UTF-16"));
        return nullptr;
    }
    if (!Gate(text).Run(findings)) return nullptr;

    std::unique_ptr<XmlTree> tree(new XmlTree(text));
    const auto parsed = tree->mDocument.load_buffer(tree->mText.data(), tree->mText.size(),
                                                    pugi::parse_default, pugi::encoding_utf8);
    if (parsed.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!parsed) {
        const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(parsed.offset, 0));
        findings.Add("E-SYNTAX", tree->PlaceAt(offset, ""),
                     std::string("not well-formed XML: ") + parsed.description());
        return nullptr;
    }
    return tree;
}

Place XmlTree::PlaceAt(std::size_t offset, std::string path) const
{
    if (!mMap) mMap.emplace(mText);
    Place place = mMap->PlaceAt(offset);
    place.path = std::move(path);
    return place;
}

Place XmlTree::PlaceOf(const pugi::xml_node& node, std::string path) const
{
    // The tree counts from the name; an element begins with the "<" before it.
    const std::ptrdiff_t name = node.offset_debug();
    return PlaceAt(name > 0 ? static_cast<std::size_t>(name - 1) : 0, std::move(path));
}

Place XmlTree::PlaceOf(const pugi::xml_node& node, std::string_view attribute, std::string path) const
{
    const std::ptrdiff_t name = node.offset_debug();
    if (name <= 0) return PlaceAt(0, std::move(path));
    return PlaceAt(AttributeOffset(mText, static_cast<std::size_t>(name), attribute), std::move(path));
}

std::string PathOf(const pugi::xml_node& node)
{
    const std::string_view name = node.name();
    if (node.parent().type() == pugi::node_document) return "/" + std::string(name);
    std::string path = PathOf(node.parent()) + "/" + std::string(name);
    for (const char* attribute : kIdentifying) {
        const std::string_view value = node.attribute(attribute).value();
        if (!value.empty() && value.size() <= kLongestIdentity) return path + "[" + std::string(value) + "]";
    }
    int index = 1;
    pugi::xml_node before = node;
    while ((before = before.previous_sibling(node.name()))) ++index;
    return path + "[" + std::to_string(index) + "]";
}

Place Origin::Where() const
{
    return mTree == nullptr ? Place() : mTree->PlaceOf(mNode, PathOf(mNode));
}

Place Origin::Where(std::string_view attribute) const
{
    if (mTree == nullptr || !mNode.attribute(std::string(attribute).c_str())) return Where();
    return mTree->PlaceOf(mNode, attribute, PathOf(mNode) + "/@" + std::string(attribute));
}

}  // namespace DataUtil
