#include "xml-text.h"

#include <cstddef>

namespace DataUtil {

namespace {

// What stands for a character, or null for itself. A reader takes a carriage return for a line feed, and in
// an attribute every white space for a space.
const char* EscapeOf(char c, bool inAttribute)
{
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '\r':
            return "&#13;";
        case '"':
            return inAttribute ? "&quot;" : nullptr;
        case '\n':
            return inAttribute ? "&#10;" : nullptr;
        case '\t':
            return inAttribute ? "&#9;" : nullptr;
        default:
            return nullptr;
    }
}

void AppendTag(std::string& text, int depth, std::string_view name, const XmlAttributes& attributes,
               std::string_view end)
{
    text.append(2 * static_cast<std::size_t>(depth), ' ').append("<").append(name);
    for (const auto& [key, value] : attributes) {
        if (value.empty()) continue;
        text.append(" ").append(key).append("=\"").append(Escaped(value, true)).append("\"");
    }
    text.append(end);
}

}  // namespace

std::string Escaped(std::string_view text, bool inAttribute)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        if (const char* escape = EscapeOf(c, inAttribute)) {
            escaped += escape;
        } else {
            escaped += c;
        }
    }
    return escaped;
}

void AppendStart(std::string& text, int depth, std::string_view name, const XmlAttributes& attributes)
{
    AppendTag(text, depth, name, attributes, ">\n");
}

void AppendEnd(std::string& text, int depth, std::string_view name)
{
    text.append(2 * static_cast<std::size_t>(depth), ' ').append("</").append(name).append(">\n");
}

void AppendElement(std::string& text, int depth, std::string_view name, const XmlAttributes& attributes)
{
    AppendTag(text, depth, name, attributes, "/>\n");
}

}  // namespace DataUtil
