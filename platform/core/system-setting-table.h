// The system settings and the platform keys that hold them. A setting whose key is unset follows the
// environment.

#pragma once

#include <string_view>

#include "common-util-system-settings.h"

namespace Platform {

struct SystemSetting {
    std::string_view name;  // as people call it
    std::string_view key;
    system_settings_key_e id;
    bool isBool;
};

// clang-format off
inline constexpr SystemSetting kSystemSettings[] = {
    {"language", "db/system/language", SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE,          false},
    {"country",  "db/system/country",  SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY,           false},
    {"24-hour",  "db/system/24-hour",  SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR, true},
    {"timezone", "db/system/timezone", SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE,          false},
};
// clang-format on

constexpr const SystemSetting* FindSystemSetting(std::string_view name)
{
    for (const SystemSetting& setting : kSystemSettings) {
        if (setting.name == name) return &setting;
    }
    return nullptr;
}

constexpr const SystemSetting* FindSystemSetting(system_settings_key_e id)
{
    for (const SystemSetting& setting : kSystemSettings) {
        if (setting.id == id) return &setting;
    }
    return nullptr;
}

}  // namespace Platform
