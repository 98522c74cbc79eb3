#include "settings.h"

#include <cstdlib>

#include "areas.h"
#include "environment-locale.h"
#include "private-watch.h"

namespace Wfctl {

namespace {

// A private watch's programs have the environment that it was brought up in, whichever shell asks.
void TakeLocaleOfWatch()
{
    const auto state = ReadState(WatchPaths{Platform::CurrentAreas().root});
    if (!state) return;
    for (const auto& [name, value] : state->locale) {
        if (value.empty())
            unsetenv(name.c_str());
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
}

}  // namespace

Platform::StoredValue SettingFromEnvironment(const Platform::SystemSetting& setting)
{
    TakeLocaleOfWatch();
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
