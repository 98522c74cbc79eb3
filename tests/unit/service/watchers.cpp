// What the application does when settings and setup keys change.

#include "an-application.h"

using MemoryPlatform::StoreValue;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr char kStandalone[] = "db/setup_wizard/standalone";
constexpr char kEula[] = "db/wms/gm_setupwizard_eula_finished";
constexpr char kVendor[] = "db/wms/host_status/vendor";
constexpr char kReturned[] = "db/setup_wizard/returned_from_wpc";

class ASettingsWatcher : public AnApplication {
protected:
    ASettingsWatcher()
    {
        ShipFaces();
        StartQuietly();
    }
};

class ASetupWatcher : public AnApplication {
protected:
    ASetupWatcher()
    {
        ShipFaces();
        platform.SetKey("db/setup_wizard/first_boot", true);
        StartQuietly();
    }
};

}  // namespace

// Settings

TEST_F(ASettingsWatcher, has_the_previews_captured_again_on_the_loops_next_turn_only)
{
    platform.SetLanguage("ko_KR");
    platform.RunTurn();
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("setting get language",
                    "log I SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE changed [en_GB] -> [ko_KR]", "job start"));
    platform.RunTurn();
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(ASettingsWatcher, tells_of_a_change_of_the_country)
{
    platform.SetCountry("de_DE");
    platform.RunTurn();
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("setting get country",
                    "log I SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY changed [en_GB] -> [de_DE]", "job start"));
    platform.RunTurn();
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(ASettingsWatcher, tells_of_a_change_of_the_hour_mode)
{
    platform.Set24HourMode(false);
    platform.RunTurn();
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("setting get 24-hour",
                    "log I SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR changed [1] -> [0]", "job start"));
    platform.RunTurn();
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(ASettingsWatcher, is_silent_when_a_setting_is_set_to_what_it_is)
{
    platform.SetLanguage("en_GB");
    platform.SetCountry("en_GB");
    platform.Set24HourMode(true);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("setting get language", "setting get country", "setting get 24-hour"));
}

TEST_F(ASettingsWatcher, compares_with_what_was_set_last)
{
    for (const char* language : {"ko_KR", "ko_KR", "en_GB"}) {
        platform.SetLanguage(language);
        platform.RunUntilIdle();
    }
    for (const char* country : {"ko_KR", "ko_KR", "en_GB"}) {
        platform.SetCountry(country);
        platform.RunUntilIdle();
    }
    for (const bool is24Hour : {false, false, true}) {
        platform.Set24HourMode(is24Hour);
        platform.RunUntilIdle();
    }
    MemoryPlatform::Strings changes = platform.Infos();
    std::erase_if(changes, [](const std::string& line) { return !line.starts_with("SYSTEM"); });
    EXPECT_THAT(changes, ElementsAre("SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE changed [en_GB] -> [ko_KR]",
                                     "SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE changed [ko_KR] -> [en_GB]",
                                     "SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY changed [en_GB] -> [ko_KR]",
                                     "SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY changed [ko_KR] -> [en_GB]",
                                     "SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR changed [1] -> [0]",
                                     "SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR changed [0] -> [1]"));
    EXPECT_THAT(Captured(), SizeIs(6 * 2));
}

TEST_F(ASettingsWatcher, keeps_language_and_country_apart)
{
    platform.SetLanguage("ko_KR");
    platform.RunUntilIdle();
    platform.SetCountry("ko_KR");
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Infos(), Contains("SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE changed [en_GB] -> [ko_KR]"));
    EXPECT_THAT(platform.Infos(), Contains("SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY changed [en_GB] -> [ko_KR]"));
}

TEST_F(ASettingsWatcher, tells_languages_that_differ_in_case_apart)
{
    platform.SetLanguage("en_gb");
    platform.RunUntilIdle();
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(ASettingsWatcher, has_the_previews_captured_once_for_several_changes_before_the_next_turn)
{
    platform.SetLanguage("ko_KR");
    platform.SetCountry("ko_KR");
    platform.Set24HourMode(false);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"job start"}), SizeIs(3));
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(ASettingsWatcher, has_the_previews_captured_again_for_a_setting_and_nothing_reset)
{
    platform.SetLanguage("ko_KR");
    platform.RunUntilIdle();
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
    EXPECT_THAT(platform.Calls({"recursive_rm", "key set", "pref set", "inner"}), IsEmpty());
}

TEST_F(ASettingsWatcher, leaves_the_previews_alone_when_the_time_zone_changes)
{
    platform.SetTimezone("Asia/Seoul");
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

// Setup keys

TEST_F(ASetupWatcher, checks_complications_on_the_next_turn_when_the_watch_was_set_up_standalone)
{
    platform.SetKey(kStandalone, 1);
    platform.RunTurn();
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I key[db/setup_wizard/standalone]",
                                                 "log I check limited complication!!", "job start"));
    platform.RunTurn();
    EXPECT_THAT(platform.Calls({"inner"}), ElementsAre("inner CheckComplications 2"));
}

TEST_F(ASetupWatcher, checks_complications_when_the_agreement_with_a_limiting_phone_is_made)
{
    platform.SetKey(kVendor, "LO");
    platform.SetKey(kEula, true);
    platform.RunTurn();
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I key[db/wms/gm_setupwizard_eula_finished]",
                                                 "key get db/wms/host_status/vendor",
                                                 "log I check limited complication!!", "job start"));
    platform.RunTurn();
    EXPECT_THAT(platform.Calls({"inner"}), ElementsAre("inner CheckComplications 1"));
}

TEST_F(ASetupWatcher, checks_no_complications_with_a_phone_of_another_vendor)
{
    for (const StoreValue& vendor :
         {StoreValue("lo"), StoreValue("LOX"), StoreValue(""), StoreValue(1), StoreValue(true)}) {
        platform.SetKey(kVendor, vendor);
        platform.SetKey(kEula, true);
        platform.RunUntilIdle();
    }
    platform.UnsetKey(kVendor);
    platform.SetKey(kEula, true);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.LogTexts(), Each("I key[db/wms/gm_setupwizard_eula_finished]"));
    EXPECT_THAT(platform.Calls({"job start", "inner"}), IsEmpty());
}

TEST_F(ASetupWatcher, checks_no_complications_without_the_agreement)
{
    platform.SetKey(kVendor, "LO");
    for (const StoreValue& agreed : {StoreValue(false), StoreValue(1)}) {
        platform.SetKey(kEula, agreed);
        platform.RunUntilIdle();
    }
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("log I key[db/wms/gm_setupwizard_eula_finished]", "key get db/wms/host_status/vendor",
                    "log I key[db/wms/gm_setupwizard_eula_finished]", "key get db/wms/host_status/vendor"));
}

TEST_F(ASetupWatcher, checks_no_complications_of_a_watch_that_was_not_set_up_standalone)
{
    platform.SetKey(kVendor, "LO");
    for (const StoreValue& standalone : {StoreValue(0), StoreValue(true)}) {
        platform.SetKey(kStandalone, standalone);
        platform.RunUntilIdle();
    }
    EXPECT_THAT(platform.LogTexts(), Each("I key[db/setup_wizard/standalone]"));
    EXPECT_THAT(platform.Calls({"key get", "job start", "inner"}), IsEmpty());
}

TEST_F(ASetupWatcher, takes_any_number_but_0_for_standalone)
{
    platform.SetKey(kStandalone, -1);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"inner"}), ElementsAre("inner CheckComplications 2"));
}

TEST_F(ASetupWatcher, checks_once_for_two_quick_notifications)
{
    platform.SetKey(kStandalone, 1);
    platform.SetKey(kStandalone, 1);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"job start"}), SizeIs(2));
    EXPECT_THAT(platform.Calls({"inner"}), ElementsAre("inner CheckComplications 2"));
}

TEST_F(ASetupWatcher, checks_for_the_later_of_two_quick_notifications)
{
    platform.SetKey(kVendor, "LO");
    platform.SetKey(kStandalone, 1);
    platform.SetKey(kEula, true);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"inner"}), ElementsAre("inner CheckComplications 1"));
}

TEST_F(ASetupWatcher, checks_again_with_each_notification)
{
    platform.SetKey(kStandalone, 1);
    platform.RunUntilIdle();
    platform.SetKey(kStandalone, 1);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"inner"}),
                ElementsAre("inner CheckComplications 2", "inner CheckComplications 2"));
}

TEST_F(ASetupWatcher, has_the_preview_of_a_cleaned_face_captured)
{
    platform.Data().hasLimited = [](const std::string& path, const char*) {
        return path.find(kSecond) != std::string::npos;
    };
    platform.SetKey(kStandalone, 1);
    platform.RunUntilIdle();
    EXPECT_THAT(Captured(), ElementsAre(kSecond));
}

TEST_F(AnApplication, takes_no_notice_of_setup_keys_before_the_setup_wizard_is_done)
{
    platform.SetKey(kVendor, "LO");
    StartQuietly();
    platform.SetKey(kStandalone, 1);
    platform.SetKey(kEula, true);
    platform.SetKey(kReturned, true);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

TEST_F(ASetupWatcher, tells_the_product_each_time_that_the_setup_wizard_returns)
{
    for (int i = 0; i < 2; ++i) {
        platform.SetKey(kReturned, true);
        platform.RunUntilIdle();
        EXPECT_THAT(platform.Timeline(),
                    ElementsAre("log I key[db/setup_wizard/returned_from_wpc]",
                                "log I setup wizard returned from wpc!!", "inner OnSetupWizardReturned"));
        platform.Forget();
    }
    ASSERT_THAT(innerCalls.Managers(), SizeIs(2));
    EXPECT_THAT(innerCalls.Managers(), Each(innerCalls.Managers()[0]));
    EXPECT_NE(innerCalls.Managers()[0], nullptr);
}

TEST_F(ASetupWatcher, tells_the_product_nothing_while_the_setup_wizard_has_not_returned)
{
    for (const StoreValue& value : {StoreValue(false), StoreValue(1), StoreValue("true")}) {
        platform.SetKey(kReturned, value);
        platform.RunUntilIdle();
    }
    EXPECT_THAT(platform.LogTexts(), Each("I key[db/setup_wizard/returned_from_wpc]"));
    EXPECT_THAT(platform.Calls({"inner"}), IsEmpty());
}
