#include <unicode/dtptngen.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "common-util-system-settings.h"
#include "platform-state.h"

using namespace MemoryPlatform;

namespace {

const char* NameOf(system_settings_key_e key)
{
    switch (key) {
        case SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY:
            return "country";
        case SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE:
            return "language";
        case SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR:
            return "24-hour";
        case SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE:
            return "timezone";
    }
    return "unknown";
}

// As "en_GB", without encoding and modifier.
std::string EnvironmentLocale()
{
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(variable);
        if (!value || !*value) continue;
        const std::string name = std::string(value).substr(0, std::string(value).find_first_of(".@"));
        return name == "C" || name == "POSIX" ? "en_US" : name;
    }
    return "en_US";
}

bool EnvironmentIs24Hour()
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(icu::Locale(EnvironmentLocale().c_str()), status));
    if (U_FAILURE(status)) return false;
    const UDateFormatHourCycle cycle = patterns->getDefaultHourCycle(status);
    return U_SUCCESS(status) && (cycle == UDAT_HOUR_CYCLE_23 || cycle == UDAT_HOUR_CYCLE_24);
}

std::string EnvironmentTimezone()
{
    const std::string localTime = "/etc/localtime";
    const char* value = std::getenv("TZ");
    const std::string zone = !value ? "" : *value == ':' ? value + 1 : value;
    if (!zone.empty() && zone != localTime) return zone;
    char link[PATH_MAX];
    const ssize_t length = readlink(localTime.c_str(), link, sizeof link);
    const std::string path(link, length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::string folder = "zoneinfo/";
    const auto at = path.find(folder);
    return at == std::string::npos ? "UTC" : path.substr(at + folder.size());
}

std::string Value(system_settings_key_e key)
{
    const Settings& settings = Current()->settings;
    switch (key) {
        case SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY:
            return settings.country ? *settings.country : EnvironmentLocale();
        case SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE:
            return settings.language ? *settings.language : EnvironmentLocale();
        case SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE:
            return settings.timezone ? *settings.timezone : EnvironmentTimezone();
        case SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR:
            break;
    }
    return "";
}

void Announce(State& state, system_settings_key_e key)
{
    state.loop.Post([key] {
        ForEachRegistered(Current()->settingWatchers, NameOf(key),
                          [&](const auto& watcher) { watcher.handler(key); });
    });
}

}  // namespace

bool CommonUtilSystemSettings::Get24HourMode()
{
    Note("setting get 24-hour");
    const Settings& settings = Current()->settings;
    return settings.is24Hour ? *settings.is24Hour : EnvironmentIs24Hour();
}

std::string CommonUtilSystemSettings::GetString(system_settings_key_e key)
{
    Note(std::string("setting get ") + NameOf(key));
    return Value(key);
}

std::string CommonUtilSystemSettings::GetLanguage()
{
    return GetString(SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE);
}

std::string CommonUtilSystemSettings::GetTimezonePath()
{
    Note("setting get timezone-path");
    return Value(SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE);
}

class CommonUtilSystemSettingsCallback::Impl {
public:
    std::shared_ptr<Registration<SettingHandler>> watcher;
};

CommonUtilSystemSettingsCallback::CommonUtilSystemSettingsCallback(
    system_settings_key_e key, std::function<void(system_settings_key_e)> handler)
    : mImpl(std::make_unique<Impl>())
{
    Note(std::string("setting watch ") + NameOf(key));
    mImpl->watcher = Register(Current()->settingWatchers, NameOf(key), std::move(handler));
}

CommonUtilSystemSettingsCallback::~CommonUtilSystemSettingsCallback()
{
    Note("setting unwatch " + mImpl->watcher->name);
    if (State* state = Current()) Unregister(state->settingWatchers, mImpl->watcher);
}

namespace MemoryPlatform {

void Platform::SetLanguage(const std::string& language)
{
    mState->settings.language = language;
    Announce(*mState, SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE);
}

void Platform::SetCountry(const std::string& country)
{
    mState->settings.country = country;
    Announce(*mState, SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY);
}

void Platform::Set24HourMode(bool on)
{
    mState->settings.is24Hour = on;
    Announce(*mState, SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR);
}

void Platform::SetTimezone(const std::string& timezone)
{
    mState->settings.timezone = timezone;
    Announce(*mState, SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE);
}

void Platform::UnsetSettings()
{
    mState->settings = {};
}

}  // namespace MemoryPlatform
