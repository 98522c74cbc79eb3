#include "log-capture.h"

#include <cstdarg>
#include <cstdio>

// A module that is opened while testing finds the call in this executable.
#pragma GCC visibility push(default)
#include "log.h"
#pragma GCC visibility pop

namespace LogCapture {

namespace {

std::vector<Line>& Kept()
{
    static std::vector<Line> lines;
    return lines;
}

}  // namespace

const std::vector<Line>& Lines()
{
    return Kept();
}

void Clear()
{
    Kept().clear();
}

}  // namespace LogCapture

int __dlog_print(log_id_t, int priority, const char* tag, const char* format, ...)
{
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    LogCapture::Kept().push_back({priority, tag, text});
    return length;
}
