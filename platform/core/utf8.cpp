#include "utf8.h"

#include <cstdint>

namespace Platform {

std::size_t Utf8SequenceLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t first = byte(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    const uint8_t second = byte(1);
    if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F))
        return 0;  // overlong, surrogates
    if ((first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) return 0;  // out of range
    return length;
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = Utf8SequenceLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string_view Utf8Prefix(std::string_view text, std::size_t most)
{
    if (text.size() <= most) return text;
    while (most > 0 && (static_cast<uint8_t>(text[most]) & 0xC0) == 0x80) --most;
    return text.substr(0, most);
}

}  // namespace Platform
