// Any bytes as the text of a log line: it is one line of printable UTF-8 and bounded; what was printable
// stands as it was; and what was cut is counted.

#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "log-format.h"
#include "utf8.h"

namespace {

constexpr std::string_view kCut = "…[+", kCutEnd = " bytes]";

void Check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "log lines: %s\n", what);
    std::abort();
}

bool IsPrintable(std::string_view text)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<uint8_t>(text[at]);
        const auto next = static_cast<uint8_t>(at + 1 < text.size() ? text[at + 1] : ' ');
        if (byte < 0x20 || byte == 0x7F || (byte == 0xC2 && next < 0xA0)) return false;
    }
    return Platform::IsUtf8(text);
}

// How many bytes of the raw text the line says it leaves out.
std::size_t LeftOut(std::string_view line)
{
    const auto cut = line.rfind(kCut);
    if (cut == std::string_view::npos || !line.ends_with(kCutEnd)) return 0;
    std::size_t count = 0;
    std::from_chars(line.data() + cut + kCut.size(), line.data() + line.size(), count);
    return count;
}

std::string Formatted(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = Platform::FormatText(format, arguments);
    va_end(arguments);
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    // The first byte is how often the rest is there once more: a few bytes make a text that is too long.
    if (size < 2) return 0;
    std::string raw;
    for (int times = data[0]; times >= 0; --times) {
        raw.append(reinterpret_cast<const char*>(data) + 1, size - 1);
    }
    const std::string line = Platform::LogText(raw);
    Check(IsPrintable(line), "a line is not printable");
    Check(line.size() <= Platform::kLogLineBytes + kCut.size() + kCutEnd.size() + 20, "a line is too long");
    const bool isShort = raw.size() <= Platform::kLogLineBytes;
    if (isShort && IsPrintable(raw)) Check(line == raw, "a printable text is changed");
    if (line.size() <= Platform::kLogLineBytes)
        Check(Platform::LogText(line) == line, "a line is changed again");
    if (line.size() > Platform::kLogLineBytes + kCut.size()) {
        const std::size_t missing = LeftOut(line);
        Check(missing > 0 && missing < raw.size(), "what is missing is not counted");
        const std::string shown = Platform::LogText(std::string_view(raw).substr(0, raw.size() - missing));
        Check(line.starts_with(shown + std::string(kCut)), "it is cut elsewhere than it says");
    }
    Check(Formatted("%s|%d", raw.c_str(), 7) == std::string(raw.c_str()) + "|7",
          "printf writes another text");
    return 0;
}
