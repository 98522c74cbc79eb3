// System settings stand in the platform keys; a setting that nobody set follows the environment.

#include <utility>

#include "common-util-system-settings.h"
#include "environment-locale.h"
#include "platform-keys-sdbus.h"
#include "process.h"
#include "system-setting-table.h"

namespace {

using Platform::Process;

std::string Default(system_settings_key_e id)
{
    if (id == SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE) return Platform::EnvironmentTimezone();
    if (id == SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR) return {};
    return Platform::EnvironmentLocale();
}

std::string KeyOf(system_settings_key_e id)
{
    const Platform::SystemSetting* setting = Platform::FindSystemSetting(id);
    return setting ? std::string(setting->key) : std::string();
}

}  // namespace

bool CommonUtilSystemSettings::Get24HourMode()
{
    const std::string key = KeyOf(SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR);
    const auto set = Platform::GetAs<bool>(Process::Current().Keys(), key);
    return set ? *set : Platform::Uses24Hours(Platform::EnvironmentLocale());
}

std::string CommonUtilSystemSettings::GetString(system_settings_key_e key)
{
    const auto set = Platform::GetAs<std::string>(Process::Current().Keys(), KeyOf(key));
    return set ? *set : Default(key);
}

std::string CommonUtilSystemSettings::GetLanguage()
{
    return GetString(SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE);
}
std::string CommonUtilSystemSettings::GetTimezonePath()
{
    return GetString(SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE);
}

class CommonUtilSystemSettingsCallback::Impl {
public:
    Impl(system_settings_key_e key, std::function<void(system_settings_key_e)> handler)
        : mHandler(std::make_shared<std::function<void(system_settings_key_e)>>(std::move(handler)))
    {
        mWatch = Platform::WatchKey(Process::Current().GetBus().Get(), KeyOf(key), [this, key] {
            const auto kept = mHandler;  // the watcher may be destroyed inside its handler
            (*kept)(key);
        });
    }

private:
    std::shared_ptr<std::function<void(system_settings_key_e)>> mHandler;
    Platform::SlotPtr mWatch;
};

CommonUtilSystemSettingsCallback::CommonUtilSystemSettingsCallback(
    system_settings_key_e key, std::function<void(system_settings_key_e)> handler)
    : mImpl(std::make_unique<Impl>(key, std::move(handler)))
{
}
CommonUtilSystemSettingsCallback::~CommonUtilSystemSettingsCallback() = default;
