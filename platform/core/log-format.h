// How a log line looks, whoever writes it.

#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "log.h"

namespace Platform {

// Longest text of one line, in bytes; what is more is cut and counted.
inline constexpr std::size_t kLogLineBytes = 4096;

// Control characters and bytes that are no UTF-8 as `\xHH`, cut at kLogLineBytes with "…[+N bytes]", where N
// counts the bytes left out.
std::string LogText(std::string_view raw);

// printf's text, of any length.
std::string FormatText(const char* format, va_list arguments);

// 'E', 'W', 'I' or 'D'.
char PriorityLetter(int priority);

// The lowest priority to print for a value of WATCH_LOG (debug, info, warning, error, silent); info for
// anything else.
int PriorityThreshold(std::string_view name);

}  // namespace Platform
