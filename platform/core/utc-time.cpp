#include "utc-time.h"

#include <cstdio>

namespace Platform {

static_assert(sizeof(std::time_t) >= sizeof(int64_t), "a clock of 32 bits ends in 2038");

std::string UtcText(const char* format, std::time_t seconds)
{
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64];
    return {text, std::strftime(text, sizeof text, format, &parts)};
}

std::string UtcText(int64_t milliseconds)
{
    // Downwards, so that what lies before 1970 has its milliseconds after the second too.
    const auto rest = static_cast<int>(milliseconds % 1000);
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000 - (rest < 0));
    char fraction[16];
    std::snprintf(fraction, sizeof fraction, ".%03dZ", rest < 0 ? rest + 1000 : rest);
    return UtcText("%Y-%m-%dT%H:%M:%S", seconds) + fraction;
}

}  // namespace Platform
