// Where the files of watch faces are.

#include <cstdlib>

#include "a-watchface-manager.h"

using namespace WatchfaceService;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string ReadOnly(int pathType, const std::string& name)
{
    return WatchfaceManager::GeneratePath(false, pathType, name);
}

std::string ReadWrite(int pathType, const std::string& name)
{
    return WatchfaceManager::GeneratePath(true, pathType, name);
}

}  // namespace

TEST_F(AWatchfaceManager, numbers_the_kinds_of_paths_from_0_to_4)
{
    EXPECT_EQ(PATH_TYPE_FOLDER, 0);
    EXPECT_EQ(PATH_TYPE_RESULT_XML, 1);
    EXPECT_EQ(PATH_TYPE_WATCHFACE_XML, 2);
    EXPECT_EQ(PATH_TYPE_PREVIEW, 3);
    EXPECT_EQ(PATH_TYPE_WITHOUT_RESULT_XML, 4);
}

TEST_F(AWatchfaceManager, finds_a_watch_face_in_the_folder_of_its_name)
{
    EXPECT_EQ(ReadOnly(0, "a"), platform.RO() + "watchlist/a/");
    EXPECT_EQ(ReadWrite(0, "a"), platform.RW() + "watchlist/a/");
}

TEST_F(AWatchfaceManager, finds_the_result_xml_under_the_name_with_a_suffix)
{
    EXPECT_EQ(ReadOnly(1, "a"), platform.RO() + "watchlist/a/a_result.xml");
    EXPECT_EQ(ReadWrite(1, "a"), platform.RW() + "watchlist/a/a_result.xml");
}

TEST_F(AWatchfaceManager, finds_the_definition_as_watchface_xml)
{
    EXPECT_EQ(ReadOnly(2, "a"), platform.RO() + "watchlist/a/watchface.xml");
    EXPECT_EQ(ReadWrite(2, "a"), platform.RW() + "watchlist/a/watchface.xml");
}

TEST_F(AWatchfaceManager, finds_the_preview_as_a_png_of_the_name)
{
    EXPECT_EQ(ReadOnly(3, "a"), platform.RO() + "watchlist/a/a.png");
    EXPECT_EQ(ReadWrite(3, "a"), platform.RW() + "watchlist/a/a.png");
}

TEST_F(AWatchfaceManager, finds_the_marker_of_a_watch_face_without_result_xml)
{
    EXPECT_EQ(ReadOnly(4, "a"), platform.RO() + "watchlist/a/without_result_xml");
    EXPECT_EQ(ReadWrite(4, "a"), platform.RW() + "watchlist/a/without_result_xml");
}

TEST_F(AWatchfaceManager, takes_any_other_kind_of_path_for_the_folder)
{
    EXPECT_EQ(ReadOnly(7, "a"), platform.RO() + "watchlist/a/");
    EXPECT_EQ(ReadWrite(5, "a"), platform.RW() + "watchlist/a/");
    EXPECT_EQ(ReadWrite(-1, "a"), platform.RW() + "watchlist/a/");
}

TEST_F(AWatchfaceManager, finds_all_watch_faces_of_an_area_under_the_empty_name)
{
    EXPECT_EQ(ReadWrite(0, ""), platform.RW() + "watchlist/");
    EXPECT_EQ(ReadOnly(0, ""), platform.RO() + "watchlist/");
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

TEST_F(AWatchfaceManager, only_logs_that_a_file_is_asked_for_under_the_empty_name)
{
    EXPECT_EQ(ReadWrite(1, ""), platform.RW() + "watchlist/_result.xml");
    EXPECT_EQ(ReadWrite(2, ""), platform.RW() + "watchlist/watchface.xml");
    EXPECT_EQ(ReadWrite(3, ""), platform.RW() + "watchlist/.png");
    EXPECT_EQ(ReadWrite(4, ""), platform.RW() + "watchlist/without_result_xml");
    EXPECT_EQ(ReadWrite(7, ""), platform.RW() + "watchlist/");
    EXPECT_THAT(platform.LogTexts(),
                testing::AllOf(testing::SizeIs(5), testing::Each("E watchName is empty!!")));
}

TEST_F(AWatchfaceManager, adds_no_second_slash_to_a_name_that_ends_in_one)
{
    EXPECT_EQ(ReadWrite(0, "a/"), platform.RW() + "watchlist/a/");
}

TEST_F(AWatchfaceManager, takes_a_name_as_it_is)
{
    EXPECT_EQ(ReadWrite(1, "../b c%"), platform.RW() + "watchlist/../b c%/../b c%_result.xml");
}

TEST_F(AWatchfaceManager, begins_its_log_lines_with_file_function_and_line)
{
    ReadWrite(1, "");
    ASSERT_EQ(platform.Logs().size(), 1u);
    const MemoryPlatform::LogLine line = platform.Logs()[0];
    EXPECT_EQ(line.tag, "watchface-service");
    EXPECT_EQ(line.text, "service-watchface-manager.cpp: GeneratePath(" + std::to_string(line.line) +
                             ") > watchName is empty!!");
    EXPECT_GT(line.line, 0);
}

TEST_F(AWatchfaceManager, has_no_read_write_watch_faces_without_their_folder)
{
    EXPECT_FALSE(manager.HasRWWatchlist());
}

TEST_F(AWatchfaceManager, has_no_read_write_watch_faces_while_their_folder_is_empty)
{
    platform.WriteFile(platform.RW("watchlist/a"), "");
    std::remove(platform.RW("watchlist/a").c_str());
    EXPECT_FALSE(manager.HasRWWatchlist());
}

TEST_F(AWatchfaceManager, has_read_write_watch_faces_with_any_entry_in_their_folder)
{
    platform.WriteFile(platform.RW("watchlist/no-watch-face"), "");
    EXPECT_TRUE(manager.HasRWWatchlist());
}

TEST_F(AWatchfaceManager, looks_for_read_write_watch_faces_in_the_read_write_area_alone)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    EXPECT_FALSE(manager.HasRWWatchlist());
    EXPECT_THAT(platform.Calls({"ls"}), ElementsAre("ls RW:watchlist/"));
}

// The areas are kept for the life of a process, so how they are first asked for is told in new ones.
class AFirstPath : public testing::Test {
protected:
    AFirstPath() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

#define EXPECT_IN_A_NEW_PROCESS(body) \
    EXPECT_EXIT((body(), std::exit(HasFailure())), testing::ExitedWithCode(0), "")

TEST_F(AFirstPath, asks_for_both_areas_of_the_watch_face_viewer_once)
{
    EXPECT_IN_A_NEW_PROCESS([] {
        const MemoryPlatform::Platform platform;
        ReadWrite(0, "a");
        ReadOnly(0, "a");
        EXPECT_THAT(platform.Calls(),
                    ElementsAre("path resource com.corvane.watchface", "path data com.corvane.watchface"));
    });
}

TEST_F(AFirstPath, adds_the_slash_that_an_area_lacks)
{
    EXPECT_IN_A_NEW_PROCESS([] {
        MemoryPlatform::Platform platform;
        platform.ScriptAreaPath("app_manager_get_shared_resource_path", "/read-only");
        platform.ScriptAreaPath("app_manager_get_shared_data_path", "/read-write");
        EXPECT_EQ(ReadOnly(0, "a"), "/read-only/watchlist/a/");
        EXPECT_EQ(ReadWrite(0, "a"), "/read-write/watchlist/a/");
    });
}

TEST_F(AFirstPath, adds_no_slash_to_an_area_that_ends_in_one)
{
    EXPECT_IN_A_NEW_PROCESS([] {
        MemoryPlatform::Platform platform;
        platform.ScriptAreaPath("app_manager_get_shared_resource_path", "/read-only/");
        platform.ScriptAreaPath("app_manager_get_shared_data_path", "/read-write/");
        EXPECT_EQ(ReadOnly(0, "a"), "/read-only/watchlist/a/");
        EXPECT_EQ(ReadWrite(0, "a"), "/read-write/watchlist/a/");
    });
}

TEST_F(AFirstPath, logs_that_the_areas_cannot_be_had_and_is_relative)
{
    EXPECT_IN_A_NEW_PROCESS([] {
        MemoryPlatform::Platform platform;
        platform.Fail("app_manager_get_shared_resource_path", {.code = -5});
        platform.Fail("app_manager_get_shared_data_path", {.code = -13});
        EXPECT_EQ(ReadWrite(1, "a"), "watchlist/a/a_result.xml");
        EXPECT_THAT(platform.LogTexts(),
                    ElementsAre("E app_manager_get_shared_resource_path returns -5(fffffffb)",
                                "E app_manager_get_shared_data_path returns -13(fffffff3)"));
    });
}

TEST_F(AFirstPath, is_relative_without_a_log_line_when_the_platform_succeeds_without_a_path)
{
    EXPECT_IN_A_NEW_PROCESS([] {
        MemoryPlatform::Platform platform;
        platform.Fail("app_manager_get_shared_resource_path", {.code = 0});
        EXPECT_EQ(ReadOnly(0, "a"), "watchlist/a/");
        EXPECT_THAT(platform.LogTexts(), IsEmpty());
    });
}

TEST_F(AFirstPath, is_asked_for_again_while_one_area_is_missing)
{
    EXPECT_IN_A_NEW_PROCESS([] {
        MemoryPlatform::Platform platform;
        platform.Fail("app_manager_get_shared_data_path");
        EXPECT_EQ(ReadOnly(0, "a"), platform.RO("watchlist/a/"));
        platform.Forget();

        EXPECT_EQ(ReadWrite(0, "a"), platform.RW("watchlist/a/"));
        EXPECT_THAT(platform.Calls(),
                    ElementsAre("path resource com.corvane.watchface", "path data com.corvane.watchface"));
    });
}

TEST_F(AFirstPath, keeps_the_area_that_it_has_when_asking_again_fails)
{
    EXPECT_IN_A_NEW_PROCESS([] {
        MemoryPlatform::Platform platform;
        platform.Fail("app_manager_get_shared_data_path");
        platform.Fail("app_manager_get_shared_resource_path", {.use = 2});
        EXPECT_EQ(ReadOnly(0, "a"), platform.RO("watchlist/a/"));
        EXPECT_EQ(ReadOnly(0, "a"), platform.RO("watchlist/a/"));
    });
}
