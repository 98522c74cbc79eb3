// What the environment says of language and time zone, as nobody would write it: the lines of the input are
// LC_ALL, LC_TIME, LANG and TZ. Whatever they say, there is a language without encoding and modifier, which
// is the same when it is read from where it was written; there is a time zone; and both can be asked for a
// date.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "dates-icu.h"
#include "environment-locale.h"
#include "log.h"
#include "utf8.h"

int __dlog_print(log_id_t, int, const char*, const char*, ...)
{
    return 0;
}

namespace {

void Check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "locales: %s\n", what);
    std::abort();
}

void SetEnvironment(const std::array<const char*, 4>& names, const std::string& text)
{
    std::istringstream lines(text);
    for (const char* name : names) {
        std::string value;
        if (std::getline(lines, value)) {
            setenv(name, value.c_str(), 1);
        } else {
            unsetenv(name);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    SetEnvironment({"LC_ALL", "LC_TIME", "LANG", "TZ"}, {reinterpret_cast<const char*>(data), size});
    const std::string locale = Platform::EnvironmentLocale();
    const std::string zone = Platform::EnvironmentTimezone();
    const bool is24Hours = Platform::Uses24Hours(locale);
    Check(!locale.empty() && !zone.empty(), "nothing is said");
    Check(locale.find_first_of(".@") == std::string::npos, "the language has more than its name");
    Check(Platform::IsUtf8(Platform::FormatDate({"yMMMMEEEEdjm", zone, locale, true}, 0)),
          "a date is no UTF-8");

    setenv("LC_ALL", (locale + ".UTF-8@euro").c_str(), 1);
    setenv("TZ", (":" + zone).c_str(), 1);
    Check(Platform::EnvironmentLocale() == locale, "the language is another with its encoding");
    Check(Platform::EnvironmentTimezone() == zone, "the time zone is another behind a colon");
    Check(Platform::Uses24Hours(Platform::EnvironmentLocale()) == is24Hours, "the clock is another");
    return 0;
}
