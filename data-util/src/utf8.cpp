#include "utf8.h"

#include <cstdint>

namespace DataUtil {

namespace {

// Takes the first character off a text that is not empty; nothing when it is malformed.
std::optional<uint32_t> TakeCharacter(std::string_view& text)
{
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (first < 0x80) return first;
    const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    constexpr uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    if (first < 0xC2 || first > 0xF4 || text.size() < more) return std::nullopt;
    uint32_t character = first & (0x3FU >> more);
    for (std::size_t i = 0; i < more; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        character = character << 6 | (next & 0x3FU);
    }
    text.remove_prefix(more);
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kLeast[more] || character > 0x10FFFF || surrogate) return std::nullopt;
    return character;
}

bool IsControl(uint32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

}  // namespace

std::optional<std::size_t> CountCharacters(std::string_view text)
{
    std::size_t count = 0;
    while (!text.empty()) {
        const auto character = TakeCharacter(text);
        if (!character || IsControl(*character) || *character == 0xFFFE || *character == 0xFFFF)
            return std::nullopt;
        ++count;
    }
    return count;
}

}  // namespace DataUtil
