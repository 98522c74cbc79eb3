#include "character-count.h"

#include "utf8.h"

namespace DataUtil {

namespace {

// Of one character: C0 and C1, delete, and the two that no text may have.
bool IsRefused(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character.front());
    if (character.size() == 1) return first < 0x20 || first == 0x7F;
    if (character.size() == 2) return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    return character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
}

}  // namespace

std::optional<std::size_t> CountCharacters(std::string_view text)
{
    std::size_t count = 0;
    while (!text.empty()) {
        const std::size_t length = Platform::Utf8SequenceLength(text);
        if (length == 0 || IsRefused(text.substr(0, length))) return std::nullopt;
        text.remove_prefix(length);
        ++count;
    }
    return count;
}

}  // namespace DataUtil
