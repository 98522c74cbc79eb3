// Complications that the watch may not offer: finding and removing them.

#include "a-watchface-manager.h"

using MemoryPlatform::Strings;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char kNameKey[] = "file/private/com.corvane.watchface/watchface_name";

class ALimitedComplication : public AWatchfaceManager {
protected:
    ALimitedComplication() { platform.SetPortUp(kCapture, kCapturePort); }

    // Which result XML files hold a limited complication.
    void SetLimited(const Strings& files)
    {
        platform.Data().hasLimited = [files](const std::string& path, const char*) {
            return std::find(files.begin(), files.end(), path) != files.end();
        };
    }

    void ShipWatchface(const std::string& name)
    {
        platform.WriteFile(platform.RO("watchlist/" + name + "/" + name + "_result.xml"), "<ro/>");
        platform.WriteFile(platform.RO("watchlist/" + name + "/watchface.xml"), "<shipped/>");
    }

    void StoreWatchface(const std::string& name)
    {
        platform.WriteFile(platform.RW("watchlist/" + name + "/" + name + "_result.xml"), "<rw/>");
        platform.WriteFile(platform.RW("watchlist/" + name + "/watchface.xml"), "<stored/>");
    }

    std::optional<std::string> Definition(const std::string& name) const
    {
        return platform.ReadFile(platform.RW("watchlist/" + name + "/watchface.xml"));
    }
};

// What the three calls to the data library look like.
const std::string kHas = "data_util_resultxml_has_limited_complication_xml_file ";
const std::string kRemove = "data_util_resultxml_converter_remove_limited_complication ";

}  // namespace

// Whether there is one

TEST_F(ALimitedComplication, is_not_looked_for_without_a_name)
{
    SetLimited({platform.RW("watchlist//_result.xml")});
    EXPECT_FALSE(manager.HasLimitedComplication("", true));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName is empty!!"));
}

TEST_F(ALimitedComplication, is_looked_for_in_the_result_xml_of_the_area)
{
    SetLimited({platform.RW("watchlist/a/a_result.xml"), platform.RO("watchlist/b/b_result.xml")});
    EXPECT_TRUE(manager.HasLimitedComplication("a", true));
    EXPECT_FALSE(manager.HasLimitedComplication("a", false));
    EXPECT_TRUE(manager.HasLimitedComplication("b", false));
    EXPECT_FALSE(manager.HasLimitedComplication("b", true));
    EXPECT_THAT(platform.Timeline(), ElementsAre(kHas + "RW:watchlist/a/a_result.xml (null)",
                                                 kHas + "RO:watchlist/a/a_result.xml (null)",
                                                 kHas + "RO:watchlist/b/b_result.xml (null)",
                                                 kHas + "RW:watchlist/b/b_result.xml (null)"));
}

TEST_F(ALimitedComplication, is_looked_for_under_the_limits_as_given)
{
    manager.HasLimitedComplication("a", true, "weather calendar");
    EXPECT_THAT(platform.Calls(), ElementsAre(kHas + "RW:watchlist/a/a_result.xml weather calendar"));
}

// Removing it

TEST_F(ALimitedComplication, is_not_removed_without_a_name)
{
    EXPECT_FALSE(manager.RemoveLimitedComplication(""));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName is empty!!"));
}

TEST_F(ALimitedComplication, is_not_removed_where_the_folder_cannot_be_made)
{
    StoreWatchface("a");
    platform.Fail("ecore_file_mkpath");
    EXPECT_FALSE(manager.RemoveLimitedComplication("a"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("mkpath RW:watchlist/a/", "log E ecore_file_mkpath failed!!"));
    EXPECT_EQ(Definition("a"), "<stored/>");
}

TEST_F(ALimitedComplication, is_removed_into_the_definition_without_the_file_lock)
{
    StoreWatchface("a");
    EXPECT_TRUE(manager.RemoveLimitedComplication("a"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("mkpath RW:watchlist/a/", kRemove + "RW:watchlist/a/a_result.xml (null)",
                            "open RW:watchlist/a/watchface.xml", "close RW:watchlist/a/watchface.xml"));
    EXPECT_EQ(Definition("a"), "<watchface><rw/></watchface>");
}

TEST_F(ALimitedComplication, stays_in_the_result_xml_when_it_is_removed)
{
    StoreWatchface("a");
    EXPECT_TRUE(manager.RemoveLimitedComplication("a"));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<rw/>");
    EXPECT_THAT(platform.Tree(platform.RW("watchlist/a")), ElementsAre("a_result.xml", "watchface.xml"));
}

TEST_F(ALimitedComplication, is_removed_under_the_limits_as_given)
{
    manager.RemoveLimitedComplication("a", "weather");
    EXPECT_THAT(platform.Calls({"data_util"}), ElementsAre(kRemove + "RW:watchlist/a/a_result.xml weather"));
}

TEST_F(ALimitedComplication, is_not_removed_when_the_data_library_gives_nothing)
{
    StoreWatchface("a");
    platform.Data().removeLimited = [](const std::string&, const char*) { return std::nullopt; };
    EXPECT_FALSE(manager.RemoveLimitedComplication("a"));
    // The text of the other converter, on purpose.
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E data_util_resultxml_memory_converter is failed"));
    EXPECT_THAT(platform.Calls({"open"}), IsEmpty());
    EXPECT_EQ(Definition("a"), "<stored/>");
}

TEST_F(ALimitedComplication, is_not_removed_when_the_data_library_gives_an_empty_text)
{
    StoreWatchface("a");
    platform.Data().removeLimited = [](const std::string&, const char*) { return std::string(); };
    EXPECT_FALSE(manager.RemoveLimitedComplication("a"));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E data_util_resultxml_memory_converter is failed"));
    EXPECT_EQ(Definition("a"), "<stored/>");
}

TEST_F(ALimitedComplication, leaves_the_new_folder_of_a_watch_face_that_the_data_library_cannot_read)
{
    EXPECT_FALSE(manager.RemoveLimitedComplication("a"));
    EXPECT_THAT(platform.Tree(platform.RW("watchlist")), ElementsAre("a/"));
}

TEST_F(ALimitedComplication, is_removed_without_a_word_when_the_definition_cannot_be_written)
{
    StoreWatchface("a");
    platform.Fail("FileOutputStream");
    EXPECT_TRUE(manager.RemoveLimitedComplication("a"));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

// Looking for it and removing it

TEST_F(ALimitedComplication, is_not_checked_without_a_name)
{
    EXPECT_FALSE(manager.CheckAndRemoveLimitedComplication("", true));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName is empty!!"));
}

TEST_F(ALimitedComplication, that_is_not_there_changes_nothing)
{
    StoreWatchface("a");
    EXPECT_FALSE(manager.CheckAndRemoveLimitedComplication("a", true));
    EXPECT_THAT(platform.Timeline(), ElementsAre(kHas + "RW:watchlist/a/a_result.xml (null)"));
    EXPECT_EQ(Definition("a"), "<stored/>");
}

TEST_F(ALimitedComplication, of_the_read_write_area_is_removed_there_before_a_preview_is_asked_for)
{
    StoreWatchface("a");
    SetLimited({platform.RW("watchlist/a/a_result.xml")});
    EXPECT_TRUE(manager.CheckAndRemoveLimitedComplication("a", true));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre(kHas + "RW:watchlist/a/a_result.xml (null)", "mkpath RW:watchlist/a/",
                            kRemove + "RW:watchlist/a/a_result.xml (null)",
                            "open RW:watchlist/a/watchface.xml", "close RW:watchlist/a/watchface.xml",
                            StartsWith("port check " + std::string(kCapture)), "log E port is already exist",
                            StartsWith("send com.corvane.watchface-capture watchface-capture::localport "
                                       "{\"pkgName\": \"a\"}"),
                            "timer stop", "timer start 0.5", "log I mCaptureProcessingWatchfaces[1]"));
}

TEST_F(ALimitedComplication, of_the_read_only_area_is_removed_from_a_copy)
{
    ShipWatchface("a");
    SetLimited({platform.RO("watchlist/a/a_result.xml")});
    EXPECT_TRUE(manager.CheckAndRemoveLimitedComplication("a", false));
    EXPECT_THAT(platform.Calls({"data_util", "copy", "open", "send"}),
                ElementsAre(kHas + "RO:watchlist/a/a_result.xml (null)",
                            "copy RO:watchlist/a/a_result.xml -> RW:watchlist/a/a_result.xml",
                            "copy RO:watchlist/a/watchface.xml -> RW:watchlist/a/watchface.xml",
                            "copy RO:watchlist/a/a.png -> RW:watchlist/a/a.png",
                            kRemove + "RW:watchlist/a/a_result.xml (null)",
                            "open RW:watchlist/a/watchface.xml", StartsWith("send")));
    EXPECT_EQ(Definition("a"), "<watchface><ro/></watchface>");
    EXPECT_EQ(platform.ReadFile(platform.RO("watchlist/a/watchface.xml")), "<shipped/>");
}

TEST_F(ALimitedComplication, of_the_read_write_area_is_removed_without_a_copy)
{
    ShipWatchface("a");
    StoreWatchface("a");
    SetLimited({platform.RW("watchlist/a/a_result.xml")});
    EXPECT_TRUE(manager.CheckAndRemoveLimitedComplication("a", true));
    EXPECT_THAT(platform.Calls({"copy"}), IsEmpty());
}

TEST_F(ALimitedComplication, counts_as_removed_also_when_the_copy_fails)
{
    ShipWatchface("a");
    SetLimited({platform.RO("watchlist/a/a_result.xml")});
    platform.Fail("CommonUtilFile::Copy");
    EXPECT_TRUE(manager.CheckAndRemoveLimitedComplication("a", false));
    EXPECT_THAT(platform.Calls({kRemove, "send"}),
                ElementsAre(kRemove + "RW:watchlist/a/a_result.xml (null)", StartsWith("send")));
}

TEST_F(ALimitedComplication, counts_as_removed_also_when_the_removal_fails)
{
    StoreWatchface("a");
    SetLimited({platform.RW("watchlist/a/a_result.xml")});
    platform.Fail(std::string(kRemove, 0, kRemove.size() - 1));
    EXPECT_TRUE(manager.CheckAndRemoveLimitedComplication("a", true));
    EXPECT_THAT(platform.Errors(),
                ElementsAre("data_util_resultxml_memory_converter is failed", "port is already exist"));
    EXPECT_THAT(platform.SentTo(kCapture), testing::SizeIs(1));
}

TEST_F(ALimitedComplication, is_looked_for_and_removed_under_the_same_limits)
{
    StoreWatchface("a");
    platform.Data().hasLimited = [](const std::string&, const char*) { return true; };
    EXPECT_TRUE(manager.CheckAndRemoveLimitedComplication("a", true, "steps"));
    EXPECT_THAT(platform.Calls({"data_util"}), ElementsAre(kHas + "RW:watchlist/a/a_result.xml steps",
                                                           kRemove + "RW:watchlist/a/a_result.xml steps"));
}

// All watch faces

TEST_F(AWatchfaceManager, checks_no_complications_in_another_mode_than_1_and_2)
{
    platform.WriteFile(platform.RW("watchlist/a/a_result.xml"), "<a/>");
    for (const int mode : {0, 3, -1, 12}) {
        platform.Forget();
        manager.CheckComplications(mode);
        EXPECT_THAT(platform.Timeline(), ElementsAre("log E not standalone neither LO")) << mode;
    }
}

TEST_F(AWatchfaceManager, checks_complications_in_the_modes_1_and_2_without_limits_of_its_own)
{
    platform.WriteFile(platform.RW("watchlist/a/a_result.xml"), "<a/>");
    for (const int mode : {1, 2}) {
        platform.Forget();
        manager.CheckComplications(mode);
        EXPECT_THAT(platform.Calls({"data_util"}), ElementsAre(kHas + "RW:watchlist/a/a_result.xml (null)"))
            << mode;
        EXPECT_THAT(platform.LogTexts(), IsEmpty());
    }
}

TEST_F(ALimitedComplication, is_looked_for_in_both_areas_before_the_current_watch_face_is_read)
{
    manager.CheckComplications(1);
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("ls RO:watchlist/", "ls RW:watchlist/", "key get " + std::string(kNameKey)));
}

TEST_F(ALimitedComplication, is_looked_for_in_every_watch_face_in_the_order_of_their_names)
{
    ShipWatchface("b");
    ShipWatchface("B");
    StoreWatchface("a");
    StoreWatchface("c");
    manager.CheckComplications(1);
    EXPECT_THAT(platform.Calls({"data_util"}), ElementsAre(kHas + "RO:watchlist/B/B_result.xml (null)",
                                                           kHas + "RW:watchlist/a/a_result.xml (null)",
                                                           kHas + "RO:watchlist/b/b_result.xml (null)",
                                                           kHas + "RW:watchlist/c/c_result.xml (null)"));
}

TEST_F(ALimitedComplication, is_looked_for_in_the_read_write_area_alone_where_both_hold_the_watch_face)
{
    ShipWatchface("a");
    StoreWatchface("a");
    SetLimited({platform.RO("watchlist/a/a_result.xml")});
    manager.CheckComplications(1);
    EXPECT_THAT(platform.Calls({"data_util", "send"}),
                ElementsAre(kHas + "RW:watchlist/a/a_result.xml (null)"));
}

TEST_F(ALimitedComplication, of_the_current_watch_face_is_removed_before_all_others)
{
    ShipWatchface("a");
    ShipWatchface("b");
    ShipWatchface("c");
    SetLimited({platform.RO("watchlist/a/a_result.xml"), platform.RO("watchlist/b/b_result.xml")});
    platform.SetKey(kNameKey, "b");
    platform.Forget();
    manager.CheckComplications(2);
    EXPECT_THAT(
        platform.Calls({"key", "data_util", "send"}),
        ElementsAre("key get " + std::string(kNameKey), kHas + "RO:watchlist/b/b_result.xml (null)",
                    kRemove + "RW:watchlist/b/b_result.xml (null)", HasSubstr("{\"pkgName\": \"b\"}"),
                    "key set " + std::string(kNameKey) + "=b", kHas + "RO:watchlist/a/a_result.xml (null)",
                    kRemove + "RW:watchlist/a/a_result.xml (null)", HasSubstr("{\"pkgName\": \"a\"}"),
                    kHas + "RO:watchlist/c/c_result.xml (null)"));
}

TEST_F(ALimitedComplication, of_another_watch_face_leaves_the_current_ones_key_alone)
{
    StoreWatchface("a");
    StoreWatchface("b");
    SetLimited({platform.RW("watchlist/a/a_result.xml")});
    platform.SetKey(kNameKey, "b");
    platform.Forget();
    manager.CheckComplications(1);
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
    EXPECT_THAT(platform.Calls({"data_util"}), Contains(StartsWith(kRemove)));
}

TEST_F(ALimitedComplication, of_a_current_watch_face_that_is_in_no_area_is_not_looked_for)
{
    StoreWatchface("a");
    platform.SetKey(kNameKey, "gone");
    platform.Forget();
    manager.CheckComplications(1);
    EXPECT_THAT(platform.Calls({"data_util"}), ElementsAre(kHas + "RW:watchlist/a/a_result.xml (null)"));
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
}

TEST_F(ALimitedComplication, of_the_named_watch_face_is_removed_first_whatever_the_current_clock_is)
{
    StoreWatchface("a");
    StoreWatchface("b");
    platform.SetKey("db/wms/clocks_set_idle", "com.example.clock");
    platform.SetKey(kNameKey, "b");
    platform.Forget();
    manager.CheckComplications(1);
    EXPECT_EQ(platform.Calls({"data_util"})[0], kHas + "RW:watchlist/b/b_result.xml (null)");
    EXPECT_THAT(platform.Calls(), Each(Not(HasSubstr("clocks_set_idle"))));
}

TEST_F(ALimitedComplication, is_looked_for_in_every_watch_face_when_no_current_one_is_known)
{
    StoreWatchface("a");
    StoreWatchface("b");
    manager.CheckComplications(1);
    EXPECT_THAT(platform.Calls({"data_util"}), ElementsAre(kHas + "RW:watchlist/a/a_result.xml (null)",
                                                           kHas + "RW:watchlist/b/b_result.xml (null)"));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}
