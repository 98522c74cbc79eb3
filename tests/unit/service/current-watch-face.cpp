// Which watch face is current: two platform keys.

#include "a-watchface-manager.h"

using MemoryPlatform::StoreValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

constexpr char kIdleClock[] = "db/wms/clocks_set_idle";
constexpr char kName[] = "file/private/com.corvane.watchface/watchface_name";
constexpr char kViewer[] = "com.corvane.watchface";

}  // namespace

TEST_F(AWatchfaceManager, writes_the_clock_key_before_the_name_key_when_forced)
{
    manager.SetWatchface("x", true);
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("log E set watchface to [x]", "key set db/wms/clocks_set_idle=com.corvane.watchface",
                    "key set file/private/com.corvane.watchface/watchface_name=x",
                    "log E idle clock set done!!"));
}

TEST_F(AWatchfaceManager, makes_a_watch_face_current_when_forced_while_another_application_is_the_clock)
{
    platform.SetKey(kIdleClock, "com.example.clock");
    manager.SetWatchface("x", true);
    EXPECT_EQ(platform.Key(kIdleClock), StoreValue(kViewer));
    EXPECT_EQ(platform.Key(kName), StoreValue("x"));
}

TEST_F(AWatchfaceManager, writes_an_empty_name_as_it_is_when_forced)
{
    platform.SetKey(kName, "y");
    manager.SetWatchface("", true);
    EXPECT_EQ(platform.Key(kName), StoreValue(""));
}

TEST_F(AWatchfaceManager, writes_both_keys_again_when_the_named_face_is_current)
{
    platform.SetKey(kIdleClock, kViewer);
    platform.SetKey(kName, "x");
    manager.SetWatchface("x", false);
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre(
            "key get db/wms/clocks_set_idle", "key get file/private/com.corvane.watchface/watchface_name",
            "log E set watchface to [x]", "key set db/wms/clocks_set_idle=com.corvane.watchface",
            "key set file/private/com.corvane.watchface/watchface_name=x", "log E idle clock set done!!"));
}

TEST_F(AWatchfaceManager, writes_and_logs_nothing_unforced_while_another_application_is_the_clock)
{
    platform.SetKey(kIdleClock, "com.example.clock");
    platform.SetKey(kName, "x");
    manager.SetWatchface("x", false);
    EXPECT_THAT(platform.Timeline(), ElementsAre("key get db/wms/clocks_set_idle"));
}

TEST_F(AWatchfaceManager, writes_and_logs_nothing_unforced_while_another_watch_face_is_current)
{
    platform.SetKey(kIdleClock, kViewer);
    platform.SetKey(kName, "y");
    manager.SetWatchface("x", false);
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("key get db/wms/clocks_set_idle",
                            "key get file/private/com.corvane.watchface/watchface_name"));
}

TEST_F(AWatchfaceManager, compares_the_whole_name_with_the_current_one)
{
    platform.SetKey(kIdleClock, kViewer);
    platform.SetKey(kName, "xy");
    manager.SetWatchface("x", false);
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
}

TEST_F(AWatchfaceManager, takes_a_missing_clock_key_for_another_application)
{
    platform.SetKey(kName, "x");
    manager.SetWatchface("x", false);
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
}

TEST_F(AWatchfaceManager, takes_a_missing_name_key_for_the_empty_name)
{
    platform.SetKey(kIdleClock, kViewer);
    manager.SetWatchface("", false);
    EXPECT_EQ(platform.Key(kName), StoreValue(""));
}

TEST_F(AWatchfaceManager, goes_on_to_the_name_key_when_the_clock_key_cannot_be_written)
{
    platform.Fail("CommonUtilVConf::Set");
    manager.SetWatchface("x", true);
    EXPECT_EQ(platform.Key(kIdleClock), std::nullopt);
    EXPECT_EQ(platform.Key(kName), StoreValue("x"));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E set watchface to [x]", "E idle clock set done!!"));
}

TEST_F(AWatchfaceManager, answers_the_viewer_and_the_name_of_the_current_watch_face)
{
    platform.SetKey(kIdleClock, kViewer);
    platform.SetKey(kName, "x");
    EXPECT_THAT(manager.GetCurrentWatchface(), Pair(kViewer, "x"));
    EXPECT_THAT(platform.Timeline(), ElementsAre("key get db/wms/clocks_set_idle",
                                                 "log E current idle clock[com.corvane.watchface]",
                                                 "key get file/private/com.corvane.watchface/watchface_name",
                                                 "log E current watch name[x]"));
}

TEST_F(AWatchfaceManager, answers_another_clock_application_with_an_empty_name_and_does_not_read_the_name)
{
    platform.SetKey(kIdleClock, "com.example.clock");
    platform.SetKey(kName, "x");
    EXPECT_THAT(manager.GetCurrentWatchface(), Pair("com.example.clock", ""));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("key get db/wms/clocks_set_idle", "log E current idle clock[com.example.clock]"));
}

TEST_F(AWatchfaceManager, answers_empty_texts_while_no_clock_is_set)
{
    EXPECT_THAT(manager.GetCurrentWatchface(), Pair("", ""));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E current idle clock[]"));
}

TEST_F(AWatchfaceManager, reads_the_current_watch_face_from_the_store_every_time)
{
    platform.SetKey(kIdleClock, kViewer);
    platform.SetKey(kName, "x");
    manager.GetCurrentWatchface();
    platform.SetKey(kName, "y");
    EXPECT_THAT(manager.GetCurrentWatchface(), Pair(kViewer, "y"));
}
