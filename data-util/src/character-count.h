// Characters of texts, also of those that did not come through the gate of xml-gate.h.

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace DataUtil {

// The number of characters of a UTF-8 text; nothing when it is malformed (overlong forms and surrogates
// included) or has control characters or ones that XML does not allow.
std::optional<std::size_t> CountCharacters(std::string_view text);

}  // namespace DataUtil
