// Why a text is not well-formed XML, in the words of its author rather than the parser's.

#pragma once

#include <expat.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "xml-gate.h"

namespace DataUtil {

struct SyntaxFault {
    std::size_t offset = 0;
    std::string message;  // what is wrong and what to write instead
};

// What `error`, which the parser met at `offset` of the text that `map` knows, comes from. `open` has the
// offsets of the start tags that are not closed yet, the innermost last.
SyntaxFault ExplainSyntax(XML_Error error, std::size_t offset, std::string_view text, const TextMap& map,
                          std::span<const std::size_t> open);

}  // namespace DataUtil
