#pragma once

#include <cstddef>
#include <string_view>

namespace Platform {

// The length in bytes of the well-formed UTF-8 sequence at the start of `text` (not empty), or 0. Overlong
// forms, surrogates and what lies beyond U+10FFFF are not well-formed.
std::size_t Utf8SequenceLength(std::string_view text);

bool IsUtf8(std::string_view text);

// At most `most` bytes from the start of UTF-8 text, without half a character at the end.
std::string_view Utf8Prefix(std::string_view text, std::size_t most);

}  // namespace Platform
