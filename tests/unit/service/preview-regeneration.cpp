// What is done for all watch faces: listing them, regenerating their previews, resetting a demo unit.

#include "a-watchface-manager.h"

using MemoryPlatform::StoreValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class AWatchfaceManagerWithWatchFaces : public AWatchfaceManager {
protected:
    AWatchfaceManagerWithWatchFaces() { platform.SetPortUp(kCapture, kCapturePort); }

    // The names that a capture was asked for.
    MemoryPlatform::Strings Captured() const
    {
        MemoryPlatform::Strings names;
        for (const auto& sent : platform.SentTo(kCapture)) names.push_back(sent.Text("pkgName"));
        return names;
    }

    WatchfaceService::WatchfaceManager::WatchfaceMap found;
};

// Listing

TEST_F(AWatchfaceManagerWithWatchFaces, finds_what_has_a_result_xml_or_the_marker_that_there_is_none)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "");
    platform.WriteFile(platform.RO("watchlist/b/without_result_xml"), "");
    manager.ScanWatchfaces(found, false);
    EXPECT_THAT(found, ElementsAre(Pair("a", false), Pair("b", false)));
}

TEST_F(AWatchfaceManagerWithWatchFaces, skips_folders_with_neither)
{
    platform.WriteFile(platform.RW("watchlist/a/watchface.xml"), "");
    platform.WriteFile(platform.RW("watchlist/a/b_result.xml"), "");
    platform.WriteFile(platform.RW("watchlist/a_result.xml"), "");
    manager.ScanWatchfaces(found, true);
    EXPECT_THAT(found, IsEmpty());
}

TEST_F(AWatchfaceManagerWithWatchFaces, looks_for_the_marker_only_without_a_result_xml)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "");
    platform.WriteFile(platform.RO("watchlist/b/without_result_xml"), "");
    manager.ScanWatchfaces(found, false);
    EXPECT_THAT(platform.Calls(), ElementsAre("ls RO:watchlist/", "exists RO:watchlist/a/a_result.xml",
                                              "exists RO:watchlist/b/b_result.xml",
                                              "exists RO:watchlist/b/without_result_xml"));
}

TEST_F(AWatchfaceManagerWithWatchFaces, finds_the_chosen_area_alone)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "");
    platform.WriteFile(platform.RW("watchlist/b/b_result.xml"), "");
    manager.ScanWatchfaces(found, true);
    EXPECT_THAT(found, ElementsAre(Pair("b", true)));
}

TEST_F(AWatchfaceManagerWithWatchFaces, lets_the_later_listing_win)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "");
    platform.WriteFile(platform.RO("watchlist/b/b_result.xml"), "");
    platform.WriteFile(platform.RW("watchlist/b/b_result.xml"), "");
    manager.ScanWatchfaces(found, false);
    manager.ScanWatchfaces(found, true);
    EXPECT_THAT(found, ElementsAre(Pair("a", false), Pair("b", true)));
}

TEST_F(AWatchfaceManagerWithWatchFaces, finds_nothing_in_a_missing_folder)
{
    manager.ScanWatchfaces(found, false);
    EXPECT_THAT(found, IsEmpty());
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

// Regenerating

TEST_F(AWatchfaceManagerWithWatchFaces, lists_the_read_only_area_before_the_read_write_area)
{
    manager.RegeneratePreviews();
    EXPECT_THAT(platform.Timeline(), ElementsAre("ls RO:watchlist/", "ls RW:watchlist/"));
}

TEST_F(AWatchfaceManagerWithWatchFaces, asks_for_the_previews_of_the_products_own_in_the_order_of_their_names)
{
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-b/without_result_xml"), "");
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-a/without_result_xml"), "");
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-B/without_result_xml"), "");
    manager.RegeneratePreviews();
    EXPECT_THAT(Captured(), ElementsAre("com.corvane.watchface-mirel-B", "com.corvane.watchface-mirel-a",
                                        "com.corvane.watchface-mirel-b"));
}

TEST_F(AWatchfaceManagerWithWatchFaces, leaves_the_previews_of_others_alone)
{
    platform.WriteFile(platform.RO("watchlist/com.example.face/without_result_xml"), "");
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-kelp-u1/without_result_xml"), "");
    manager.RegeneratePreviews();
    EXPECT_THAT(Captured(), IsEmpty());
    EXPECT_THAT(platform.Calls({"copy"}), IsEmpty());
}

TEST_F(AWatchfaceManagerWithWatchFaces, copies_a_read_only_one_before_it_asks_for_its_preview)
{
    platform.WriteFile(platform.RO("watchlist/com.corvane.watchface-mirel-a/without_result_xml"), "");
    platform.WriteFile(platform.RO("watchlist/com.corvane.watchface-mirel-a/watchface.xml"), "");
    manager.RegeneratePreviews();
    EXPECT_THAT(platform.Tree(platform.RW("watchlist")),
                ElementsAre("com.corvane.watchface-mirel-a/", "com.corvane.watchface-mirel-a/watchface.xml",
                            "com.corvane.watchface-mirel-a/without_result_xml"));
    EXPECT_THAT(platform.Calls({"copy", "send"}),
                ElementsAre(testing::StartsWith("copy"), testing::StartsWith("copy"),
                            testing::StartsWith("copy"), testing::StartsWith("send")));
    EXPECT_THAT(Captured(), ElementsAre("com.corvane.watchface-mirel-a"));
}

TEST_F(AWatchfaceManagerWithWatchFaces, does_not_copy_one_that_is_in_both_areas)
{
    platform.WriteFile(platform.RO("watchlist/com.corvane.watchface-mirel-a/without_result_xml"), "");
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-a/without_result_xml"), "");
    manager.RegeneratePreviews();
    EXPECT_THAT(platform.Calls({"copy", "mkpath"}), IsEmpty());
    EXPECT_THAT(Captured(), ElementsAre("com.corvane.watchface-mirel-a"));
}

TEST_F(AWatchfaceManagerWithWatchFaces, asks_for_the_preview_also_of_one_that_cannot_be_copied)
{
    platform.WriteFile(platform.RO("watchlist/com.corvane.watchface-mirel-a/a_result.xml"), "");
    platform.WriteFile(
        platform.RO("watchlist/com.corvane.watchface-mirel-a/com.corvane.watchface-mirel-a_result.xml"), "");
    platform.Fail("CommonUtilFile::Copy");
    manager.RegeneratePreviews();
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/com.corvane.watchface-mirel-a")));
    EXPECT_THAT(Captured(), ElementsAre("com.corvane.watchface-mirel-a"));
}

// Resetting

TEST_F(AWatchfaceManagerWithWatchFaces, resets_in_this_order)
{
    platform.WriteFile(platform.RW("watchlist/a/a_result.xml"), "");
    manager.ResetWatchfaces();
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre(
            "log E LIVE DEMO UNIT INIT APP START", "recursive_rm RW:watchlist/",
            "pref set service-config-set-default-watchface-done=false", "ls RO:watchlist/",
            "ls RW:watchlist/",
            "key set file/private/com.corvane.watchface/watchface_name=com.corvane.watchface-mirel-c1",
            "log E LIVE DEMO UNIT INIT APP END"));
}

TEST_F(AWatchfaceManagerWithWatchFaces, falls_back_to_the_shipped_ones_at_a_reset)
{
    platform.WriteFile(platform.RO("watchlist/com.corvane.watchface-mirel-a/without_result_xml"), "");
    platform.WriteFile(platform.RO("watchlist/com.corvane.watchface-mirel-a/watchface.xml"), "shipped");
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-a/without_result_xml"), "");
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-a/watchface.xml"), "edited");
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-added/without_result_xml"), "");
    manager.ResetWatchfaces();
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/com.corvane.watchface-mirel-a/watchface.xml")),
              "shipped");
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/com.corvane.watchface-mirel-added")));
    EXPECT_THAT(Captured(), ElementsAre("com.corvane.watchface-mirel-a"));
}

TEST_F(AWatchfaceManagerWithWatchFaces, goes_on_with_the_reset_when_nothing_can_be_removed)
{
    manager.ResetWatchfaces();
    EXPECT_THAT(platform.Errors(), ElementsAre("LIVE DEMO UNIT INIT APP START",
                                               "ecore_file_recursive_rm(watchlist_path) failed!!",
                                               "LIVE DEMO UNIT INIT APP END"));
    EXPECT_EQ(platform.Pref("service-config-set-default-watchface-done"), StoreValue(false));
}

TEST_F(AWatchfaceManagerWithWatchFaces, leaves_the_clock_application_as_it_is_at_a_reset)
{
    platform.SetKey("db/wms/clocks_set_idle", "com.example.clock");
    manager.ResetWatchfaces();
    EXPECT_EQ(platform.Key("db/wms/clocks_set_idle"), StoreValue("com.example.clock"));
    EXPECT_EQ(platform.Key("file/private/com.corvane.watchface/watchface_name"),
              StoreValue("com.corvane.watchface-mirel-c1"));
}
