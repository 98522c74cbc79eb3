// Writing XML: escaped texts, and elements one to a line.

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace DataUtil {

// `text` such that a reader gets it back unchanged. It must have only characters that XML allows.
std::string Escaped(std::string_view text, bool inAttribute);

using XmlAttributes = std::vector<std::pair<std::string_view, std::string_view>>;

// The start tag and a line feed, two spaces a level of depth; attributes without a value are left out.
void AppendStart(std::string& text, int depth, std::string_view name, const XmlAttributes& attributes);
void AppendEnd(std::string& text, int depth, std::string_view name);
// An element without content.
void AppendElement(std::string& text, int depth, std::string_view name, const XmlAttributes& attributes);

}  // namespace DataUtil
