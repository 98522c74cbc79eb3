#include "log-format.h"

#include <cstdint>
#include <cstdio>

#include "utf8.h"

namespace Platform {

namespace {

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
        const std::size_t length = Utf8SequenceLength(raw.substr(at));
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
