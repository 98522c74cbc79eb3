#include <cstdlib>
#include <map>

#include "contract-test.h"

namespace Contract {
namespace {

constexpr auto kLanguage = SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE;
constexpr auto kCountry = SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY;
constexpr auto kHourMode = SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR;
constexpr auto kTimezone = SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE;

using Settings = CommonUtilSystemSettings;

class ASystemSetting : public ContractTest {
protected:
    ASystemSetting()
    {
        for (const char* name : {"LC_ALL", "LC_TIME", "LANG", "TZ"}) {
            const char* value = std::getenv(name);
            mBefore[name] = value ? std::optional<std::string>(value) : std::nullopt;
            unsetenv(name);
        }
    }
    ~ASystemSetting() override
    {
        for (const auto& [name, value] : mBefore) {
            if (value) {
                setenv(name.c_str(), value->c_str(), 1);
            } else {
                unsetenv(name.c_str());
            }
        }
    }
    std::function<void(system_settings_key_e)> Into(std::vector<system_settings_key_e>& list)
    {
        return [&list](system_settings_key_e key) { list.push_back(key); };
    }
    std::vector<system_settings_key_e> told;

private:
    std::map<std::string, std::optional<std::string>> mBefore;
};

TEST_F(ASystemSetting, has_the_value_that_was_set)
{
    harness->SetSetting(kLanguage, "ko_KR");
    harness->SetSetting(kCountry, "de_DE");
    harness->SetSetting(kTimezone, "Asia/Seoul");
    harness->SetSetting(kHourMode, "true");
    EXPECT_EQ(Settings::GetString(kLanguage), "ko_KR");
    EXPECT_EQ(Settings::GetLanguage(), "ko_KR");
    EXPECT_EQ(Settings::GetString(kCountry), "de_DE");
    EXPECT_EQ(Settings::GetString(kTimezone), "Asia/Seoul");
    EXPECT_THAT(Settings::GetTimezonePath(), testing::EndsWith("Asia/Seoul"));
    EXPECT_TRUE(Settings::Get24HourMode());
    harness->SetSetting(kHourMode, "false");
    EXPECT_FALSE(Settings::Get24HourMode());
}

TEST_F(ASystemSetting, of_the_hour_mode_has_no_text)
{
    harness->SetSetting(kHourMode, "true");
    EXPECT_EQ(Settings::GetString(kHourMode), "");
}

TEST_F(ASystemSetting, follows_the_environment_while_it_is_unset)
{
    setenv("LANG", "fr_FR.UTF-8", 1);
    EXPECT_EQ(Settings::GetString(kLanguage), "fr_FR");
    EXPECT_EQ(Settings::GetString(kCountry), "fr_FR");
    setenv("LC_TIME", "de_DE.UTF-8", 1);
    EXPECT_EQ(Settings::GetLanguage(), "de_DE");
    setenv("LC_ALL", "en_GB.UTF-8", 1);
    EXPECT_EQ(Settings::GetLanguage(), "en_GB");
    setenv("LC_ALL", "", 1);
    EXPECT_EQ(Settings::GetLanguage(), "de_DE");
}

TEST_F(ASystemSetting, takes_a_missing_or_neutral_locale_as_american_english)
{
    EXPECT_EQ(Settings::GetLanguage(), "en_US");
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EQ(Settings::GetLanguage(), "en_US");
    setenv("LC_ALL", "POSIX", 1);
    EXPECT_EQ(Settings::GetString(kCountry), "en_US");
}

TEST_F(ASystemSetting, of_the_hour_mode_follows_the_locale_while_it_is_unset)
{
    setenv("LC_ALL", "en_US.UTF-8", 1);
    EXPECT_FALSE(Settings::Get24HourMode());
    setenv("LC_ALL", "en_GB.UTF-8", 1);
    EXPECT_TRUE(Settings::Get24HourMode());
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_TRUE(Settings::Get24HourMode());
}

TEST_F(ASystemSetting, of_the_time_zone_follows_the_environment_while_it_is_unset)
{
    setenv("TZ", "Europe/Berlin", 1);
    EXPECT_EQ(Settings::GetString(kTimezone), "Europe/Berlin");
    EXPECT_THAT(Settings::GetTimezonePath(), testing::EndsWith("Europe/Berlin"));
}

TEST_F(ASystemSetting, of_the_time_zone_is_that_of_the_machine_where_the_environment_only_points_there)
{
    const std::string machines = Settings::GetTimezonePath();
    setenv("TZ", ":/etc/localtime", 1);
    EXPECT_EQ(Settings::GetTimezonePath(), machines);
    setenv("TZ", "/etc/localtime", 1);
    EXPECT_EQ(Settings::GetTimezonePath(), machines);
}

TEST_F(ASystemSetting, wins_over_the_environment_once_it_is_set)
{
    setenv("LC_ALL", "en_US.UTF-8", 1);
    harness->SetSetting(kHourMode, "true");
    harness->SetSetting(kLanguage, "ko_KR");
    EXPECT_TRUE(Settings::Get24HourMode());
    EXPECT_EQ(Settings::GetLanguage(), "ko_KR");
    EXPECT_EQ(Settings::GetString(kCountry), "en_US");
}

TEST_F(ASystemSetting, tells_its_watchers_on_the_main_loop_also_when_it_is_unchanged)
{
    const CommonUtilSystemSettingsCallback watcher(kLanguage, Into(told));
    harness->WaitTurn();
    harness->SetSetting(kLanguage, "ko_KR");
    EXPECT_THAT(told, testing::IsEmpty());
    ASSERT_TRUE(harness->RunUntil([&] { return told.size() == 1; }));
    harness->SetSetting(kLanguage, "ko_KR");
    ASSERT_TRUE(harness->RunUntil([&] { return told.size() == 2; }));
    EXPECT_THAT(told, testing::Each(kLanguage));
}

TEST_F(ASystemSetting, tells_only_those_who_watch_it)
{
    const CommonUtilSystemSettingsCallback hourMode(kHourMode, Into(told));
    const CommonUtilSystemSettingsCallback country(kCountry, Into(told));
    auto gone = std::make_unique<CommonUtilSystemSettingsCallback>(kLanguage, Into(told));
    harness->WaitTurn();
    gone.reset();
    harness->SetSetting(kLanguage, "ko_KR");
    harness->SetSetting(kTimezone, "Asia/Seoul");
    harness->SetSetting(kHourMode, "false");
    ASSERT_TRUE(harness->RunUntil([&] { return !told.empty(); }));
    harness->WaitTurn();
    EXPECT_THAT(told, testing::ElementsAre(kHourMode));
}

}  // namespace
}  // namespace Contract
