#include "log-format.h"

#include <cstdint>
#include <cstdio>

namespace Platform {

namespace {

// The length of the well-formed UTF-8 sequence at the start of `text`, or 0.
std::size_t SequenceLength(std::string_view text)
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
    if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F)) return 0;  // overlong, surrogates
    if ((first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) return 0;  // out of range
    return length;
}

// U+0080 to U+009F are control characters too.
bool IsControl(std::string_view sequence)
{
    const auto first = static_cast<uint8_t>(sequence[0]);
    if (sequence.size() == 1) return first < 0x20 || first == 0x7F;
    return first == 0xC2 && static_cast<uint8_t>(sequence[1]) < 0xA0;
}

void AppendEscaped(std::string& out, std::string_view bytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        out += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    }
}

}  // namespace

std::string LogText(std::string_view raw)
{
    std::string out;
    std::size_t at = 0;
    while (at < raw.size()) {
        const std::size_t length = SequenceLength(raw.substr(at));
        const std::string_view piece = raw.substr(at, length ? length : 1);
        std::string shown;
        if (length == 0 || IsControl(piece)) {
            AppendEscaped(shown, piece);
        } else {
            shown = piece;
        }
        if (out.size() + shown.size() > kLogLineBytes) {
            return out + "…[+" + std::to_string(raw.size() - at) + " bytes]";
        }
        out += shown;
        at += piece.size();
    }
    return out;
}

std::string FormatText(const char* format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
        text.pop_back();
    }
    va_end(again);
    return text;
}

char PriorityLetter(int priority)
{
    if (priority >= DLOG_ERROR) return 'E';
    if (priority == DLOG_WARN) return 'W';
    return priority == DLOG_INFO ? 'I' : 'D';
}

int PriorityThreshold(std::string_view name)
{
    struct Row {
        std::string_view name;
        int priority;
    };
    static constexpr Row kRows[] = {
        {"debug",   DLOG_DEBUG },
        {"info",    DLOG_INFO  },
        {"warning", DLOG_WARN  },
        {"error",   DLOG_ERROR },
        {"silent",  DLOG_SILENT},
    };
    for (const Row& row : kRows) {
        if (row.name == name) return row.priority;
    }
    return DLOG_INFO;
}

}  // namespace Platform
