// Installing and updating watch faces: result XML, watchface.xml, copies into the read/write area.

#include "a-watchface-manager.h"

using testing::ElementsAre;
using testing::IsEmpty;

// A new result XML

TEST_F(AWatchfaceManager, refuses_to_update_a_watch_face_without_a_name)
{
    EXPECT_FALSE(manager.UpdateWatchface("", "<a/>"));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName or data is empty!!"));
}

TEST_F(AWatchfaceManager, refuses_to_update_a_watch_face_without_data)
{
    EXPECT_FALSE(manager.UpdateWatchface("a", ""));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName or data is empty!!"));
}

TEST_F(AWatchfaceManager, does_not_update_a_watch_face_whose_folder_cannot_be_made)
{
    platform.Fail("ecore_file_mkpath");
    EXPECT_FALSE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("mkpath RW:watchlist/a/", "log E ecore_file_mkpath failed!!"));
}

TEST_F(AWatchfaceManager, writes_no_file_for_data_that_the_converter_rejects_but_leaves_the_folder)
{
    platform.Data().convert = [](const std::string&) { return std::nullopt; };
    EXPECT_FALSE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E data_util_resultxml_memory_converter is failed"));
    EXPECT_THAT(platform.Tree(platform.RW("watchlist")), ElementsAre("a/"));
}

TEST_F(AWatchfaceManager, keeps_the_old_files_when_the_converter_rejects_the_new_data)
{
    ASSERT_TRUE(manager.UpdateWatchface("a", "<old/>"));
    platform.Data().convert = [](const std::string&) { return std::nullopt; };
    manager.UpdateWatchface("a", "<new/>");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<old/>");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/watchface.xml")), "<watchface><old/></watchface>");
}

TEST_F(AWatchfaceManager, stores_the_data_as_received_and_the_definition_made_from_it)
{
    EXPECT_TRUE(manager.UpdateWatchface("a", " <a>\r\n\xC3\xA9</a>\n\n"));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), " <a>\r\n\xC3\xA9</a>\n\n");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/watchface.xml")),
              "<watchface> <a>\r\n\xC3\xA9</a>\n\n</watchface>");
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

TEST_F(AWatchfaceManager, replaces_longer_files_whole)
{
    platform.WriteFile(platform.RW("watchlist/a/a_result.xml"), std::string(1000, 'x'));
    platform.WriteFile(platform.RW("watchlist/a/watchface.xml"), std::string(1000, 'x'));
    EXPECT_TRUE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<a/>");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/watchface.xml")), "<watchface><a/></watchface>");
}

TEST_F(AWatchfaceManager, writes_the_result_xml_first_and_the_definition_under_the_file_lock)
{
    EXPECT_TRUE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("mkpath RW:watchlist/a/", "data_util_resultxml_memory_converter <a/>",
                            "open RW:watchlist/a/a_result.xml", "close RW:watchlist/a/a_result.xml",
                            "lock RW:watchlist/a/watchface.xml 3", "open RW:watchlist/a/watchface.xml",
                            "close RW:watchlist/a/watchface.xml", "unlock RW:watchlist/a/watchface.xml"));
}

TEST_F(AWatchfaceManager, updates_without_a_word_when_a_file_cannot_be_written)
{
    platform.Fail("FileOutputStream", {.times = 2});
    EXPECT_TRUE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

TEST_F(AWatchfaceManager, writes_the_definition_also_when_the_result_xml_cannot_be_written)
{
    platform.Fail("FileOutputStream", {.times = 1});
    EXPECT_TRUE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_THAT(platform.Tree(platform.RW("watchlist/a")), ElementsAre("watchface.xml"));
}

TEST_F(AWatchfaceManager, leaves_the_preview_alone_when_it_updates)
{
    platform.WriteFile(platform.RW("watchlist/a/a.png"), "old preview");
    EXPECT_TRUE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a.png")), "old preview");
    EXPECT_THAT(platform.Sent(), IsEmpty());
}

TEST_F(AWatchfaceManager, never_updates_the_read_only_area)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<shipped/>");
    EXPECT_TRUE(manager.UpdateWatchface("a", "<a/>"));
    EXPECT_EQ(platform.ReadFile(platform.RO("watchlist/a/a_result.xml")), "<shipped/>");
    EXPECT_THAT(platform.Tree(platform.RO("watchlist/a")), ElementsAre("a_result.xml"));
}

// Copies into the read/write area

TEST_F(AWatchfaceManager, refuses_to_copy_a_watch_face_without_a_name)
{
    EXPECT_FALSE(manager.CopyWatchfaceToRW(""));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E watchName is empty!!"));
}

TEST_F(AWatchfaceManager, copies_nothing_and_logs_nothing_when_the_folder_cannot_be_made)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    platform.Fail("ecore_file_mkpath");
    EXPECT_FALSE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.Timeline(), ElementsAre("mkpath RW:watchlist/a/"));
}

TEST_F(AWatchfaceManager, copies_result_xml_definition_and_preview_in_this_order)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    platform.WriteFile(platform.RO("watchlist/a/watchface.xml"), "<watchface/>");
    platform.WriteFile(platform.RO("watchlist/a/a.png"), "preview");
    EXPECT_TRUE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("mkpath RW:watchlist/a/", "exists RO:watchlist/a/a_result.xml",
                            "copy RO:watchlist/a/a_result.xml -> RW:watchlist/a/a_result.xml",
                            "copy RO:watchlist/a/watchface.xml -> RW:watchlist/a/watchface.xml",
                            "copy RO:watchlist/a/a.png -> RW:watchlist/a/a.png"));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<a/>");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/watchface.xml")), "<watchface/>");
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a.png")), "preview");
}

TEST_F(AWatchfaceManager, copies_the_marker_of_a_watch_face_without_result_xml)
{
    platform.WriteFile(platform.RO("watchlist/a/without_result_xml"), "");
    platform.WriteFile(platform.RO("watchlist/a/watchface.xml"), "<watchface/>");
    EXPECT_TRUE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.Tree(platform.RW("watchlist/a")),
                ElementsAre("watchface.xml", "without_result_xml"));
}

TEST_F(AWatchfaceManager, copies_the_result_xml_and_not_the_marker_where_there_are_both)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    platform.WriteFile(platform.RO("watchlist/a/without_result_xml"), "");
    platform.WriteFile(platform.RO("watchlist/a/watchface.xml"), "<watchface/>");
    EXPECT_TRUE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.Tree(platform.RW("watchlist/a")), ElementsAre("a_result.xml", "watchface.xml"));
}

TEST_F(AWatchfaceManager, does_not_fall_back_to_the_marker_when_the_result_xml_cannot_be_copied)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    platform.WriteFile(platform.RO("watchlist/a/without_result_xml"), "");
    platform.WriteFile(platform.RO("watchlist/a/watchface.xml"), "<watchface/>");
    platform.Fail("CommonUtilFile::Copy");
    EXPECT_FALSE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.Calls({"copy", "recursive_rm"}),
                ElementsAre("copy RO:watchlist/a/a_result.xml -> RW:watchlist/a/a_result.xml",
                            "recursive_rm RW:watchlist/a/"));
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/a")));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

TEST_F(AWatchfaceManager, leaves_no_folder_when_the_marker_cannot_be_copied)
{
    platform.WriteFile(platform.RO("watchlist/a/without_result_xml"), "");
    platform.WriteFile(platform.RO("watchlist/a/watchface.xml"), "<watchface/>");
    platform.Fail("CommonUtilFile::Copy");
    EXPECT_FALSE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("mkpath RW:watchlist/a/", "exists RO:watchlist/a/a_result.xml",
                            "exists RO:watchlist/a/without_result_xml",
                            "copy RO:watchlist/a/without_result_xml -> RW:watchlist/a/without_result_xml",
                            "recursive_rm RW:watchlist/a/"));
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/a")));
}

TEST_F(AWatchfaceManager, leaves_no_folder_of_a_watch_face_that_is_in_the_read_only_area_in_neither_form)
{
    platform.WriteFile(platform.RO("watchlist/a/watchface.xml"), "<watchface/>");
    EXPECT_FALSE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E result.xml or without_result_xml not found!!"));
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/a")));
}

TEST_F(AWatchfaceManager, leaves_no_folder_when_the_definition_cannot_be_copied)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    EXPECT_FALSE(manager.CopyWatchfaceToRW("a"));
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/a")));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

TEST_F(AWatchfaceManager, removes_what_was_in_the_folder_before_a_copy_that_fails)
{
    platform.WriteFile(platform.RW("watchlist/a/earlier.png"), "");
    EXPECT_FALSE(manager.CopyWatchfaceToRW("a"));
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/a")));
}

TEST_F(AWatchfaceManager, copies_a_watch_face_that_has_no_preview)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    platform.WriteFile(platform.RO("watchlist/a/watchface.xml"), "<watchface/>");
    EXPECT_TRUE(manager.CopyWatchfaceToRW("a"));
    EXPECT_THAT(platform.Tree(platform.RW("watchlist/a")), ElementsAre("a_result.xml", "watchface.xml"));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}
