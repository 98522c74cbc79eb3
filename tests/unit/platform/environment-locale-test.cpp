#include "environment-locale.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace {

// Gives the environment back as it was.
class AnEnvironment : public testing::Test {
protected:
    AnEnvironment()
    {
        for (const char* name : {"LC_ALL", "LC_TIME", "LANG", "TZ"}) {
            const char* value = std::getenv(name);
            mBefore[name] = value ? std::optional<std::string>(value) : std::nullopt;
            unsetenv(name);
        }
    }
    ~AnEnvironment() override
    {
        for (const auto& [name, value] : mBefore) {
            if (value)
                setenv(name.c_str(), value->c_str(), 1);
            else
                unsetenv(name.c_str());
        }
    }
    void Set(const char* name, const char* value) { setenv(name, value, 1); }

private:
    std::map<std::string, std::optional<std::string>> mBefore;
};

TEST_F(AnEnvironment, without_a_locale_is_en_US)
{
    EXPECT_EQ(Platform::EnvironmentLocale(), "en_US");
}

TEST_F(AnEnvironment, of_C_or_POSIX_is_en_US)
{
    Set("LANG", "C.UTF-8");
    EXPECT_EQ(Platform::EnvironmentLocale(), "en_US");
    Set("LANG", "POSIX");
    EXPECT_EQ(Platform::EnvironmentLocale(), "en_US");
}

TEST_F(AnEnvironment, gives_the_locale_without_encoding_and_modifier)
{
    Set("LANG", "ko_KR.UTF-8");
    EXPECT_EQ(Platform::EnvironmentLocale(), "ko_KR");
    Set("LANG", "de_DE@euro");
    EXPECT_EQ(Platform::EnvironmentLocale(), "de_DE");
}

TEST_F(AnEnvironment, prefers_LC_ALL_to_LC_TIME_to_LANG)
{
    Set("LANG", "de_DE.UTF-8");
    Set("LC_TIME", "fr_FR.UTF-8");
    EXPECT_EQ(Platform::EnvironmentLocale(), "fr_FR");
    Set("LC_ALL", "en_GB.UTF-8");
    EXPECT_EQ(Platform::EnvironmentLocale(), "en_GB");
    Set("LC_ALL", "");
    EXPECT_EQ(Platform::EnvironmentLocale(), "fr_FR");
}

TEST_F(AnEnvironment, names_the_time_zone_of_TZ_without_its_colon)
{
    Set("TZ", ":Asia/Seoul");
    EXPECT_EQ(Platform::EnvironmentTimezone(), "Asia/Seoul");
    Set("TZ", "Europe/Berlin");
    EXPECT_EQ(Platform::EnvironmentTimezone(), "Europe/Berlin");
}

TEST(AHourCycle, is_the_locales_own)
{
    EXPECT_FALSE(Platform::Uses24Hours("en_US"));
    EXPECT_FALSE(Platform::Uses24Hours("ko_KR"));
    EXPECT_FALSE(Platform::Uses24Hours("en_AU"));
    EXPECT_TRUE(Platform::Uses24Hours("en_GB"));
    EXPECT_TRUE(Platform::Uses24Hours("de_DE"));
    EXPECT_TRUE(Platform::Uses24Hours("ja_JP"));
}

TEST(AHourCycle, of_a_language_unusual_for_its_region_is_the_regions)
{
    EXPECT_FALSE(Platform::Uses24Hours("sv_US"));
    EXPECT_TRUE(Platform::Uses24Hours("ko_DE"));
}

}  // namespace
