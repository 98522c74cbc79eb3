#include "environment-locale.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "twelve-hour-locales.h"  // generated
#include "zone-id.h"

namespace Platform {

namespace {

std::string FirstSet(std::initializer_list<const char*> names)
{
    for (const char* name : names) {
        if (const char* value = std::getenv(name); value && *value) return value;
    }
    return {};
}

bool IsTwelveHour(std::string_view locale)
{
    return std::binary_search(std::begin(kTwelveHourLocales), std::end(kTwelveHourLocales), locale);
}

bool IsKnown(std::string_view locale)
{
    return std::binary_search(std::begin(kKnownLocales), std::end(kKnownLocales), locale);
}

// The part behind the last "_": the region of "en_GB".
std::string_view RegionOf(std::string_view locale)
{
    const auto at = locale.rfind('_');
    return at == std::string_view::npos ? std::string_view() : locale.substr(at + 1);
}

}  // namespace

std::string EnvironmentLocale()
{
    std::string locale = FirstSet({"LC_ALL", "LC_TIME", "LANG"});
    locale.erase(std::min(locale.find('.'), locale.size()));
    locale.erase(std::min(locale.find('@'), locale.size()));
    if (locale.empty() || locale == "C" || locale == "POSIX") return "en_US";
    return locale;
}

bool Uses24Hours(std::string_view locale)
{
    if (IsKnown(locale)) return !IsTwelveHour(locale);
    // A language that is unusual for its region keeps the region's clock.
    const std::string region = "und_" + std::string(RegionOf(locale));
    if (IsKnown(region)) return !IsTwelveHour(region);
    return !IsTwelveHour(locale.substr(0, locale.find('_')));
}

std::string EnvironmentTimezone()
{
    std::string zone = FirstSet({"TZ"});
    if (!zone.empty() && zone.front() == ':') zone.erase(0, 1);
    constexpr char kLocalTime[] = "/etc/localtime";  // also as TZ, which spares the C library questions
    if (!zone.empty() && zone != kLocalTime) return zone;
    char target[PATH_MAX];
    const ssize_t length = readlink(kLocalTime, target, sizeof target);
    const std::string path = "/" + std::string(target, length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::string_view id = ZoneIdOf(path);
    return id == path ? "UTC" : std::string(id);
}

}  // namespace Platform
