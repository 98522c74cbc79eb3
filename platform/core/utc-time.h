// Times of the wall clock as texts, in UTC: of records, of files' names, before lines of the log.

#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace Platform {

// By strftime's format. Any time has a text: years have as many digits as they need.
std::string UtcText(const char* format, std::time_t seconds);

// "2026-03-01T12:30:00.250Z", of milliseconds since 1970.
std::string UtcText(int64_t milliseconds);

}  // namespace Platform
