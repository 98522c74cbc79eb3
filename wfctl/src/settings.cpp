#include "settings.h"

#include "environment-locale.h"

namespace Wfctl {

Platform::StoredValue SettingFromEnvironment(const Platform::SystemSetting& setting)
{
    if (setting.isBool) return Platform::Uses24Hours(Platform::EnvironmentLocale());
    return setting.id == SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE ? Platform::EnvironmentTimezone()
                                                             : Platform::EnvironmentLocale();
}

Platform::StoredValue SettingValue(Platform::ValueStore& keys, const Platform::SystemSetting& setting)
{
    const std::string key(setting.key);
    if (setting.isBool) {
        if (const auto set = Platform::GetAs<bool>(keys, key)) return *set;
    } else if (const auto set = Platform::GetAs<std::string>(keys, key)) {
        return *set;
    }
    return SettingFromEnvironment(setting);
}

}  // namespace Wfctl
