// System settings: language, country, hour mode and time zone of the watch.

#pragma once

#include <functional>
#include <memory>
#include <string>

enum system_settings_key_e {
    SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY,
    SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE,
    SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR,
    SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE,
};

class CommonUtilSystemSettings {
public:
    static bool Get24HourMode();
    // Language and country as "en_GB"; the time zone as a zoneinfo id. Empty for the hour mode.
    static std::string GetString(system_settings_key_e key);
    static std::string GetLanguage();
    static std::string GetTimezonePath();  // a zoneinfo path or id
};

// Watches one setting while it lives; the handler runs on the main loop.
class CommonUtilSystemSettingsCallback {
public:
    CommonUtilSystemSettingsCallback(system_settings_key_e key,
                                     std::function<void(system_settings_key_e)> handler);
    ~CommonUtilSystemSettingsCallback();
    CommonUtilSystemSettingsCallback(const CommonUtilSystemSettingsCallback&) = delete;
    CommonUtilSystemSettingsCallback& operator=(const CommonUtilSystemSettingsCallback&) = delete;

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};
