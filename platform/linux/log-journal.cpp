// The location of the line that is logged is a field of ours; the journal's header would add this file's.
#define SD_JOURNAL_SUPPRESS_LOCATION

#include <sys/stat.h>
#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "log-format.h"
#include "utc-time.h"

namespace {

enum class Target { kJournal, kFile, kStream };

// Where stderr leads. The journal says which of its sockets it gave us in JOURNAL_STREAM.
Target FindTarget()
{
    struct stat info {};
    if (fstat(STDERR_FILENO, &info) != 0) return Target::kStream;
    const char* stream = std::getenv("JOURNAL_STREAM");
    const std::string ours = std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino);
    if (stream && ours == stream) return Target::kJournal;
    return S_ISREG(info.st_mode) ? Target::kFile : Target::kStream;
}

int JournalPriority(int priority)
{
    if (priority >= DLOG_ERROR) return LOG_ERR;
    if (priority == DLOG_WARN) return LOG_WARNING;
    return priority == DLOG_INFO ? LOG_INFO : LOG_DEBUG;
}

std::string Now()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return Platform::UtcText(int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000) + " ";
}

// The service's lines begin "FILE: FUNCTION(LINE) > "; the journal has fields for these.
struct Location {
    std::string file, function, line;
    std::size_t length = 0;
};

Location FindLocation(const std::string& text)
{
    const auto colon = text.find(": ");
    const auto close = colon == std::string::npos ? colon : text.find(") > ", colon);
    const auto open = close == std::string::npos ? close : text.rfind('(', close);
    if (open == std::string::npos || open < colon + 2) return {};
    Location at{text.substr(0, colon), text.substr(colon + 2, open - colon - 2),
                text.substr(open + 1, close - open - 1), close + 4};
    const bool isPlace = at.file.find(' ') == std::string::npos && !at.line.empty() &&
                         at.line.find_first_not_of("0123456789") == std::string::npos;
    return isPlace ? at : Location{};
}

int ToJournal(int priority, const char* tag, const std::string& text)
{
    const Location at = FindLocation(text);
    const std::string fields[] = {
        "MESSAGE=" + text,
        "PRIORITY=" + std::to_string(JournalPriority(priority)),
        "SYSLOG_IDENTIFIER=" + std::string(tag),
        "CODE_FILE=" + at.file,
        "CODE_FUNC=" + at.function,
        "CODE_LINE=" + at.line,
    };
    iovec vectors[std::size(fields)];
    const int count = at.length ? std::size(fields) : 3;
    for (int i = 0; i < count; ++i) {
        vectors[i] = {const_cast<char*>(fields[i].data()), fields[i].size()};
    }
    const int code = sd_journal_sendv(vectors, count);
    return code < 0 ? code : static_cast<int>(text.size());
}

}  // namespace

int __dlog_print(log_id_t, int priority, const char* tag, const char* format, ...)
{
    const char* filter = std::getenv("WATCH_LOG");
    if (priority < Platform::PriorityThreshold(filter ? filter : "")) return 0;
    const Target target = FindTarget();
    va_list arguments;
    va_start(arguments, format);
    const std::string text = Platform::LogText(Platform::FormatText(format, arguments));
    va_end(arguments);
    if (target == Target::kJournal) return ToJournal(priority, tag, text);
    std::string line = target == Target::kFile ? Now() : std::string();
    line += Platform::PriorityLetter(priority);
    line += "/" + std::string(tag) + "(" + std::to_string(getpid()) + "): " + text + "\n";
    // One write a line, so that lines of several programs do not mix.
    return static_cast<int>(write(STDERR_FILENO, line.data(), line.size()));
}
