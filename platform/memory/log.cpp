#include "log.h"

#include <cstdio>
#include <cstdlib>
#include <regex>

#include "log-format.h"
#include "platform-state.h"

namespace {

// "file: function(line) > message"
void Split(MemoryPlatform::LogLine& line)
{
    static const std::regex kPrefix(R"(^([^:/\s]+): (\S+?)\((\d+)\) > )");
    line.message = line.text;
    std::smatch match;
    if (!std::regex_search(line.text, match, kPrefix)) return;
    line.file = match[1];
    line.function = match[2];
    line.line = std::stoi(match[3]);
    line.message = match.suffix();
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
    if (std::getenv("MEMORY_PLATFORM_LOG")) {
        std::fprintf(stderr, "%c/%s: %s\n", Platform::PriorityLetter(priority), line.tag.c_str(),
                     text.c_str());
    }
    state->record->NoteLog(std::move(line));
    const int threshold = Platform::PriorityThreshold(state->logFilter);
    if (priority < threshold || threshold == DLOG_SILENT) return 0;
    return static_cast<int>(Platform::LogText(text).size());
}
