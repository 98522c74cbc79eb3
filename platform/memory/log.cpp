#include "log.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "log-format.h"
#include "platform-state.h"

namespace {

// "file: function(line) > message"; the function may have parentheses of its own.
void Split(MemoryPlatform::LogLine& line)
{
    const std::string_view text = line.text;
    line.message = text;
    const auto file = text.find(": ");
    const auto end = text.find(") > ", file);
    if (file == 0 || end == std::string_view::npos) return;
    const std::string_view place = text.substr(file + 2, end - file - 2);  // function(line
    const auto bracket = place.rfind('(');
    if (bracket == 0 || bracket == std::string_view::npos || place.find(' ') != std::string_view::npos)
        return;
    const std::string_view number = place.substr(bracket + 1);
    int parsed = 0;
    const auto [rest, error] = std::from_chars(number.data(), number.data() + number.size(), parsed);
    if (error != std::errc() || rest != number.data() + number.size()) return;
    line.file = text.substr(0, file);
    line.function = place.substr(0, bracket);
    line.line = parsed;
    line.message = text.substr(end + 4);
}

// One place in the code can be kept silent, "FILE:LINE": whoever asserts its text fails then.
bool IsMuted(const MemoryPlatform::LogLine& line)
{
    const char* muted = std::getenv("MEMORY_PLATFORM_MUTED");
    return muted && line.file + ":" + std::to_string(line.line) == muted;
}

}  // namespace

int __dlog_print(log_id_t, int priority, const char* tag, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const std::string text = Platform::FormatText(format, arguments);
    va_end(arguments);
    auto* state = MemoryPlatform::Current();
    if (!state) return 0;

    MemoryPlatform::LogLine line;
    line.priority = priority;
    line.tag = tag ? tag : "";
    line.text = text;
    Split(line);
    if (IsMuted(line)) return 0;
    if (std::getenv("MEMORY_PLATFORM_LOG")) {
        std::fprintf(stderr, "%c/%s: %s\n", Platform::PriorityLetter(priority), line.tag.c_str(),
                     text.c_str());
    }
    state->record->NoteLog(std::move(line));
    const int threshold = Platform::PriorityThreshold(state->logFilter);
    if (priority < threshold || threshold == DLOG_SILENT) return 0;
    return static_cast<int>(Platform::LogText(text).size());
}
