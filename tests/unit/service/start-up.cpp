// What the application decides once, when it starts: which keys it watches, and whether all previews are
// captured again.

#include "an-application.h"

using MemoryPlatform::Failure;
using MemoryPlatform::StoreValue;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char kFirstBoot[] = "db/setup_wizard/first_boot";
constexpr char kReturned[] = "db/setup_wizard/returned_from_wpc";
constexpr char kStandaloneWatch[] = "key watch db/setup_wizard/standalone";
constexpr char kEulaWatch[] = "key watch db/wms/gm_setupwizard_eula_finished";
constexpr char kReturnedWatch[] = "key watch db/setup_wizard/returned_from_wpc";
constexpr char kRetailWatch[] = "key watch db/retailmode/enabled";

}  // namespace

// The setup wizard's keys

TEST_F(AnApplication, watches_the_setup_keys_once_the_setup_wizard_is_done)
{
    platform.SetKey(kFirstBoot, true);
    Start();
    const auto timeline = platform.Timeline();
    const auto first = std::find(timeline.begin(), timeline.end(), std::string("key get ") + kFirstBoot);
    ASSERT_NE(first, timeline.end());
    EXPECT_THAT(
        MemoryPlatform::Strings(first, timeline.end()),
        ElementsAreArray(
            {"key get db/setup_wizard/first_boot", "log I check setup wizard done",
             "key watch db/setup_wizard/standalone", "key watch db/wms/gm_setupwizard_eula_finished",
             "key get db/setup_wizard/returned_from_wpc", "key watch db/setup_wizard/returned_from_wpc",
             "key get db/retailmode/enabled", "pref get wfs/pref/initial_preview_update_done",
             "ls RW:watchlist/", "log E initial preview matched!! set initial preview update done flag",
             "pref set wfs/pref/initial_preview_update_done=true"}));
}

TEST_F(AnApplication, watches_no_setup_key_before_the_setup_wizard_is_done)
{
    platform.SetKey(kReturned, true);
    for (const StoreValue& value : {StoreValue(false), StoreValue(1), StoreValue("true")}) {
        platform.SetKey(kFirstBoot, value);
        platform.Forget();
        Start();
        EXPECT_THAT(platform.Calls({"key watch"}), ElementsAre(kRetailWatch));
        EXPECT_THAT(platform.Calls({"inner", std::string("key get ") + kReturned}), IsEmpty());
        EXPECT_THAT(platform.Infos(), Not(Contains("check setup wizard done")));
        app.reset();
    }
}

TEST_F(AnApplication, takes_keys_that_cannot_be_read_as_unset)
{
    platform.SetKey(kFirstBoot, true);
    platform.SetKey("db/retailmode/enabled", 1);
    platform.Fail("CommonUtilVConf::Get", {.times = Failure::kAlways});
    Start();
    EXPECT_THAT(platform.Calls({"key watch"}), ElementsAre(kRetailWatch));
    platform.Forget();
    const auto request = Ask({
        {"retail-mode", "init_watch"}
    });
    EXPECT_THAT(platform.Infos(), Contains("retail-mode[init_watch][0]"));
    EXPECT_THAT(platform.Errors(), IsEmpty());
}

TEST_F(AnApplication, knows_the_retail_mode_from_its_start)
{
    const std::pair<StoreValue, const char*> kRows[] = {
        {1,    "retail-mode[x][1]"},
        {-2,   "retail-mode[x][1]"},
        {0,    "retail-mode[x][0]"},
        {true, "retail-mode[x][0]"},
    };
    for (const auto& [value, log] : kRows) {
        platform.SetKey("db/retailmode/enabled", value);
        Start();
        Ask({
            {"retail-mode", "x"}
        });
        EXPECT_EQ(platform.Infos().back(), log);
        app.reset();
    }
}

TEST_F(AnApplication, tells_the_product_while_it_starts_that_the_setup_wizard_has_returned)
{
    platform.SetKey(kFirstBoot, true);
    platform.SetKey(kReturned, true);
    Start();
    EXPECT_THAT(platform.Calls({"key watch", "inner"}),
                ElementsAre(kRetailWatch, kStandaloneWatch, kEulaWatch, "inner OnSetupWizardReturned"));
    const auto timeline = platform.Timeline();
    const auto hook = std::find(timeline.begin(), timeline.end(), "inner OnSetupWizardReturned");
    EXPECT_EQ(*(hook - 1), "log I setup wizard returned from wpc!!");
    ASSERT_EQ(innerCalls.Managers().size(), 1U);
    EXPECT_NE(innerCalls.Managers()[0], nullptr);
}

TEST_F(AnApplication, watches_for_the_return_of_the_setup_wizard_only_where_it_has_not_returned)
{
    platform.SetKey(kFirstBoot, true);
    platform.SetKey(kReturned, false);
    Start();
    EXPECT_THAT(platform.Calls({"key watch"}),
                ElementsAre(kRetailWatch, kStandaloneWatch, kEulaWatch, kReturnedWatch));
    EXPECT_THAT(platform.Calls({"inner"}), IsEmpty());
}

// The initial previews

TEST_F(AnApplication, captures_nothing_at_first_where_the_shipped_previews_fit)
{
    ShipFaces();
    Start();
    EXPECT_EQ(platform.Pref(kInitialDone), StoreValue(true));
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"idler start", "copy", "send"}), IsEmpty());
    EXPECT_THAT(platform.Errors(),
                ElementsAre("initial preview matched!! set initial preview update done flag"));
}

TEST_F(AnApplication, captures_all_previews_at_first_where_one_of_three_settings_differs)
{
    struct Row {
        const char *language, *country;
        bool is24Hour;
    };
    constexpr Row kRows[] = {
        {"ko_KR", "en_GB", true },
        {"en_GB", "ko_KR", true },
        {"en_GB", "en_GB", false},
        {"en_gb", "en_GB", true },
        {"en_GB", "en_gb", true },
        {"",      "en_GB", true },
    };
    for (const Row& row : kRows) {
        platform.SetLanguage(row.language);
        platform.SetCountry(row.country);
        platform.Set24HourMode(row.is24Hour);
        platform.Forget();
        Start();
        EXPECT_THAT(platform.Errors(), ElementsAre(std::string("set preview update!! initial language[") +
                                                   row.language + "] country[" + row.country +
                                                   "] 24 hour mode[" + (row.is24Hour ? "1" : "0") + "]"));
        EXPECT_THAT(platform.Calls({"idler start", "pref set"}), ElementsAre("idler start"));
        app.reset();
    }
}

TEST_F(AnApplication, remembers_the_initial_capture_only_after_all_were_asked_for)
{
    ShipFaces();
    platform.Set24HourMode(false);
    Start();
    EXPECT_THAT(platform.Calls({"copy", "send", "pref set"}), IsEmpty());
    platform.RunUntilIdle();
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
    EXPECT_THAT(platform.Calls({"send", "pref set"}),
                ElementsAre(StartsWith("send"), StartsWith("send"),
                            "pref set wfs/pref/initial_preview_update_done=true"));
}

TEST_F(AnApplication, brings_its_faces_into_the_read_write_area_for_the_initial_capture)
{
    ShipFaces();
    platform.SetLanguage("ko_KR");
    Start();
    platform.RunUntilIdle();
    EXPECT_THAT(
        platform.Tree(platform.RW("watchlist")),
        IsSupersetOf({std::string(kFirst) + "/watchface.xml", std::string(kSecond) + "/watchface.xml"}));
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/com.example.face")));
}

TEST_F(AnApplication, captures_at_first_when_nothing_else_is_left_to_do)
{
    ShipFaces();
    platform.Set24HourMode(false);
    platform.RunUntilIdle();
    Start();
    int turns = 0;
    std::function<void()> work = [&] {
        EXPECT_THAT(Captured(), IsEmpty());
        if (++turns < 3) platform.Post(work);
    };
    platform.Post(work);
    platform.RunUntilIdle();
    EXPECT_EQ(turns, 3);
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
}

TEST_F(AnApplication, captures_at_first_once)
{
    ShipFaces();
    platform.Set24HourMode(false);
    Start();
    platform.RunUntilIdle();
    platform.Forget();
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), IsEmpty());
    app.reset();
    platform.Forget();
    Start();
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"idler start", "ls", "send", "pref set"}), IsEmpty());
    EXPECT_THAT(platform.Errors(), IsEmpty());
}

TEST_F(AnApplication, captures_all_previews_at_first_where_the_read_write_area_holds_anything)
{
    ShipFaces();
    platform.WriteFile(platform.RW("watchlist/anything"), "");
    Start();
    EXPECT_THAT(platform.Errors(), ElementsAre("watchfaces found in RW area!! set preview update!!"));
    EXPECT_THAT(platform.Calls({"pref set"}), IsEmpty());
    platform.RunUntilIdle();
    EXPECT_THAT(Captured(), ElementsAre(kFirst, kSecond));
    EXPECT_EQ(platform.Pref(kInitialDone), StoreValue(true));
}

TEST_F(AnApplication, says_of_faces_in_the_read_write_area_before_it_looks_at_the_settings)
{
    platform.WriteFile(platform.RW("watchlist/anything"), "");
    platform.SetLanguage("ko_KR");
    Start();
    EXPECT_THAT(platform.Errors(), ElementsAre("watchfaces found in RW area!! set preview update!!"));
    EXPECT_THAT(platform.Calls({"idler start"}), ElementsAre("idler start"));
}

TEST_F(AnApplication, looks_at_nothing_more_once_the_initial_capture_is_done)
{
    ShipFaces();
    platform.SetPref(kInitialDone, true);
    platform.WriteFile(platform.RW("watchlist/anything"), "");
    platform.SetLanguage("ko_KR");
    Start();
    EXPECT_EQ(platform.Timeline().back(), std::string("pref get ") + kInitialDone);
    platform.RunUntilIdle();
    EXPECT_THAT(Captured(), IsEmpty());
}

TEST_F(AnApplication, takes_an_initial_capture_that_is_not_known_as_not_done)
{
    for (const StoreValue& value : {StoreValue(false), StoreValue(1), StoreValue("true")}) {
        platform.SetPref(kInitialDone, value);
        Start();
        EXPECT_EQ(platform.Pref(kInitialDone), StoreValue(true));
    }
    platform.Fail("CommonUtilPref::Get");
    platform.Forget();
    Start();
    EXPECT_THAT(platform.Errors(), Contains(StartsWith("initial preview matched!!")));
}
