// What the environment says about language, hour mode and time zone: the values of settings that nobody set.
// Answers without loading a locale library.

#pragma once

#include <string>
#include <string_view>

namespace Platform {

// From LC_ALL, LC_TIME and LANG, as "en_GB": without the encoding; C and POSIX are en_US.
std::string EnvironmentLocale();

// Whether people of that locale use the 24-hour clock, from the locale data that this was built with.
bool Uses24Hours(std::string_view locale);

// From TZ, else from where /etc/localtime points, else "UTC".
std::string EnvironmentTimezone();

}  // namespace Platform
