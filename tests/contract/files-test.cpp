// Files: making, removing, listing and copying, and what is refused.

#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <thread>

#include "contract-test.h"

namespace Contract {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestFile = std::size_t{32} << 20;

class AFile : public ContractTest {
protected:
    void SetUp() override
    {
        WriteFile(InArea("watchlist/a/a.png"), "picture");
        WriteFile(Outside("note"), "note");
    }

    // Below the root, in no application's area.
    std::string Outside(const std::string& path) { return harness->Root() + "/outside/" + path; }

    // Every path below the root, with the content of files.
    std::map<std::string, std::string> Everything()
    {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::recursive_directory_iterator(harness->Root())) {
            const std::string path = entry.path();
            all[path] = entry.is_regular_file() ? ReadFile(path).value_or("(unreadable)") : "(no file)";
        }
        return all;
    }

    static Strings ListOf(const std::string& path)
    {
        Strings names;
        Eina_List* list = ecore_file_ls(path.c_str());
        while (list) {
            names.emplace_back(static_cast<const char*>(list->data));
            free(list->data);
            list = eina_list_remove_list(list, list);
        }
        return names;
    }
};

TEST_F(AFile, folder_is_made_with_its_parents)
{
    EXPECT_TRUE(ecore_file_mkpath(InArea("one/two/three/").c_str()));
    EXPECT_TRUE(fs::is_directory(InArea("one/two/three")));
    EXPECT_TRUE(ecore_file_mkpath(InArea("one/four").c_str()));
    EXPECT_TRUE(fs::is_directory(InArea("one/four")));
}

TEST_F(AFile, folder_that_exists_counts_as_made)
{
    EXPECT_TRUE(ecore_file_mkpath(InArea("watchlist/a/").c_str()));
    EXPECT_EQ(ReadFile(InArea("watchlist/a/a.png")), "picture");
}

TEST_F(AFile, folder_is_made_in_an_area_that_is_not_there_yet)
{
    const std::string trusted = Platform::CurrentAreas().TrustedOf(kFaces);
    EXPECT_TRUE(ecore_file_mkpath((trusted + "theme/").c_str()));
    EXPECT_TRUE(fs::is_directory(trusted + "theme"));
}

TEST_F(AFile, in_the_way_makes_a_folder_fail)
{
    EXPECT_FALSE(ecore_file_mkpath(InArea("watchlist/a/a.png").c_str()));
    EXPECT_FALSE(ecore_file_mkpath(InArea("watchlist/a/a.png/b").c_str()));
    EXPECT_EQ(ReadFile(InArea("watchlist/a/a.png")), "picture");
}

TEST_F(AFile, exists_once_it_is_written)
{
    EXPECT_TRUE(ecore_file_exists(InArea("watchlist/a/a.png").c_str()));
    EXPECT_TRUE(ecore_file_exists(InArea("watchlist/a").c_str()));
    EXPECT_TRUE(CommonUtilFile::Exists(InArea("watchlist/a/a.png")));
    EXPECT_FALSE(ecore_file_exists(InArea("watchlist/a/b.png").c_str()));
    EXPECT_FALSE(CommonUtilFile::Exists(InArea("watchlist/a/b.png")));
    EXPECT_FALSE(CommonUtilFile::Exists(""));
}

TEST_F(AFile, is_told_from_a_folder)
{
    EXPECT_TRUE(ecore_file_is_dir(InArea("watchlist").c_str()));
    EXPECT_TRUE(ecore_file_is_dir(InArea("watchlist/").c_str()));
    EXPECT_FALSE(ecore_file_is_dir(InArea("watchlist/a/a.png").c_str()));
    EXPECT_FALSE(ecore_file_is_dir(InArea("nothing").c_str()));
}

TEST_F(AFile, listing_is_in_byte_order)
{
    for (const char* name : {"b", "A", "a", "Z", "10", "9", "\xC3\xA9", ".hidden"}) {
        WriteFile(InArea(std::string("list/") + name), "");
    }
    fs::create_directory(InArea("list/folder"));
    EXPECT_THAT(ListOf(InArea("list")),
                testing::ElementsAre(".hidden", "10", "9", "A", "Z", "a", "b", "folder", "\xC3\xA9"));
}

TEST_F(AFile, listing_of_nothing_is_empty)
{
    fs::create_directory(InArea("empty"));
    EXPECT_EQ(ecore_file_ls(InArea("empty").c_str()), nullptr);
    EXPECT_EQ(ecore_file_ls(InArea("nothing").c_str()), nullptr);
    EXPECT_EQ(ecore_file_ls(InArea("watchlist/a/a.png").c_str()), nullptr);
}

TEST_F(AFile, name_is_the_last_component)
{
    EXPECT_STREQ(ecore_file_file_get("/a/b/c.png"), "c.png");
    EXPECT_STREQ(ecore_file_file_get("c.png"), "c.png");
    EXPECT_STREQ(ecore_file_file_get("/a/b/"), "");
    EXPECT_STREQ(ecore_file_file_get(""), "");
}

TEST_F(AFile, is_read_whole_and_as_it_is)
{
    const std::string bytes = std::string("\xFF\0\r\n", 4) + std::string(100'000, 'x') + "\n";
    WriteFile(InArea("file"), bytes);
    EXPECT_EQ(ReadWholeFile(InArea("file")), bytes);
}

TEST_F(AFile, that_is_none_reads_as_empty)
{
    ASSERT_EQ(mkfifo(InArea("fifo").c_str(), 0600), 0);
    EXPECT_EQ(ReadWholeFile(InArea("nothing")), "");
    EXPECT_EQ(ReadWholeFile(InArea("fifo")), "");
    EXPECT_EQ(ReadWholeFile(InArea("watchlist")), "");
    EXPECT_EQ(ReadWholeFile("/dev/zero"), "");
    EXPECT_EQ(ReadWholeFile(""), "");
}

TEST_F(AFile, is_read_up_to_a_length_of_32_MiB)
{
    WriteFile(InArea("file"), "");
    fs::resize_file(InArea("file"), kLongestFile);
    EXPECT_EQ(ReadWholeFile(InArea("file")).size(), kLongestFile);
    fs::resize_file(InArea("file"), kLongestFile + 1);
    EXPECT_EQ(ReadWholeFile(InArea("file")), "");
}

TEST_F(AFile, is_removed)
{
    EXPECT_TRUE(ecore_file_remove(InArea("watchlist/a/a.png").c_str()));
    EXPECT_FALSE(fs::exists(InArea("watchlist/a/a.png")));
    EXPECT_TRUE(fs::exists(InArea("watchlist/a")));
}

TEST_F(AFile, that_does_not_exist_cannot_be_removed)
{
    const auto before = Everything();
    EXPECT_FALSE(ecore_file_remove(InArea("watchlist/a/b.png").c_str()));
    EXPECT_FALSE(ecore_file_recursive_rm(InArea("watchlist/b").c_str()));
    EXPECT_EQ(Everything(), before);
}

TEST_F(AFile, folder_is_removed_with_all_it_holds)
{
    WriteFile(InArea("watchlist/a/deep/er/file"), "x");
    EXPECT_TRUE(ecore_file_recursive_rm(InArea("watchlist/a/").c_str()));
    EXPECT_FALSE(fs::exists(InArea("watchlist/a")));
    EXPECT_TRUE(fs::exists(InArea("watchlist")));
}

TEST_F(AFile, folder_is_removed_also_while_another_program_replaces_files_in_it)
{
    for (int round = 0; round < 50; ++round) {
        for (int i = 0; i < 20; ++i) WriteFile(InArea("watchlist/b/" + std::to_string(i)), "x");
        std::thread program([at = InArea("watchlist/b/")] {
            for (int i = 0; i < 40; ++i) {
                std::ofstream(at + "unfinished") << "preview";
                std::rename((at + "unfinished").c_str(), (at + "b.png").c_str());
            }
        });
        EXPECT_TRUE(ecore_file_recursive_rm(InArea("watchlist/b").c_str()));
        program.join();
        EXPECT_FALSE(fs::exists(InArea("watchlist/b")));
    }
}

TEST_F(AFile, behind_a_link_is_not_removed_with_the_folder)
{
    fs::create_directory_symlink(Outside(""), InArea("watchlist/a/link"));
    EXPECT_TRUE(ecore_file_recursive_rm(InArea("watchlist/a").c_str()));
    EXPECT_FALSE(fs::exists(InArea("watchlist/a")));
    EXPECT_EQ(ReadFile(Outside("note")), "note");
}

class ARefusedPath : public AFile, public testing::WithParamInterface<const char*> {
protected:
    // "AREA" stands for the read/write area, "ROOT" for the watch's root.
    std::string Path()
    {
        std::string path = GetParam();
        if (path.starts_with("AREA")) return InArea() + path.substr(4);
        if (path.starts_with("ROOT")) return harness->Root() + path.substr(4);
        return path;
    }
};

TEST_P(ARefusedPath, is_not_made)
{
    const auto before = Everything();
    EXPECT_FALSE(ecore_file_mkpath((Path() + "/new").c_str()));
    EXPECT_EQ(Everything(), before);
}

TEST_P(ARefusedPath, is_not_removed)
{
    const auto before = Everything();
    EXPECT_FALSE(ecore_file_remove(Path().c_str()));
    EXPECT_FALSE(ecore_file_recursive_rm(Path().c_str()));
    EXPECT_EQ(Everything(), before);
}

TEST_P(ARefusedPath, is_not_copied_to)
{
    const auto before = Everything();
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), Path()));
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), Path() + "/copy"));
    EXPECT_EQ(Everything(), before);
}

TEST_P(ARefusedPath, is_not_written)
{
    const auto before = Everything();
    {
        FileOutputStream stream(Path() + "/file");
        stream.Write("new");
    }
    EXPECT_EQ(Everything(), before);
}

INSTANTIATE_TEST_SUITE_P(Files, ARefusedPath,
                         testing::Values("", "relative", "/", "ROOT", "ROOT/outside", "ROOT/keys.db",
                                         "ROOT/apps", "ROOT/apps/com.corvane.watchface", "AREA.", "AREA..",
                                         "AREA./watchlist", "AREAwatchlist/.", "AREAwatchlist/..",
                                         "AREAwatchlist/../watchlist", "AREAwatchlist/./a",
                                         "AREA../../outside", "ROOT/apps/../outside"));

TEST_F(AFile, below_a_link_out_of_the_area_is_not_touched)
{
    fs::create_directory_symlink(Outside(""), InArea("link"));
    const auto before = Everything();
    EXPECT_FALSE(ecore_file_mkpath(InArea("link/new").c_str()));
    EXPECT_FALSE(ecore_file_remove(InArea("link/note").c_str()));
    EXPECT_FALSE(ecore_file_recursive_rm(InArea("link/note").c_str()));
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("link/note")));
    {
        FileOutputStream stream(InArea("link/note"));
        stream.Write("new");
    }
    EXPECT_EQ(Everything(), before);
}

TEST_F(AFile, is_not_what_a_path_with_a_slash_at_its_end_names)
{
    fs::create_directory_symlink(Outside(""), InArea("link"));
    fs::create_directory(InArea("folder"));
    const auto before = Everything();
    for (const std::string path : {"link/", "folder/", "watchlist/a/a.png/", "new/"}) {
        EXPECT_FALSE(ecore_file_remove(InArea(path).c_str())) << path;
        EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea(path))) << path;
        FileOutputStream(InArea(path)).Write("new");
        EXPECT_EQ(Everything(), before) << path;
    }
}

TEST_F(AFile, in_an_area_that_is_a_link_is_not_touched)
{
    const std::string trusted = Platform::CurrentAreas().TrustedOf(kFaces);
    fs::remove_all(trusted);
    fs::create_directories(fs::path(trusted).parent_path().parent_path());
    fs::create_directory_symlink(Outside(""), trusted.substr(0, trusted.size() - 1));
    const auto before = Everything();
    EXPECT_FALSE(ecore_file_mkpath((trusted + "new").c_str()));
    EXPECT_FALSE(ecore_file_remove((trusted + "note").c_str()));
    EXPECT_FALSE(ecore_file_recursive_rm((trusted + "note").c_str()));
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), trusted + "note"));
    EXPECT_EQ(Everything(), before);
}

TEST_F(AFile, whose_path_has_a_NUL_inside_is_not_written)
{
    const auto before = Everything();
    EXPECT_FALSE(
        CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("watchlist/a") + std::string("/b\0c", 4)));
    {
        FileOutputStream stream(InArea("watchlist/a") + std::string("/b\0c", 4));
        stream.Write("new");
        EXPECT_FALSE(stream.Good());
    }
    EXPECT_EQ(Everything(), before);
}

TEST_F(AFile, recursive_removal_refuses_empty_components_and_the_roots_of_areas)
{
    fs::create_directories(Platform::CurrentAreas().TrustedOf(kFaces) + "theme");
    const std::string area = InArea();
    const std::string trusted = Platform::CurrentAreas().TrustedOf(kFaces);
    const auto before = Everything();
    for (const std::string& path : {area, area.substr(0, area.size() - 1), trusted, area + "watchlist//",
                                    area + "watchlist//a", area + "/watchlist"}) {
        EXPECT_FALSE(ecore_file_recursive_rm(path.c_str())) << path;
        EXPECT_EQ(Everything(), before) << path;
    }
}

class ACopy : public AFile {};

TEST_F(ACopy, has_the_bytes_of_its_source)
{
    const std::string bytes = std::string("a\0b\xFF", 4) + std::string(300'000, 'x');
    WriteFile(InArea("from"), bytes);
    EXPECT_TRUE(CommonUtilFile::Copy(InArea("from"), InArea("to")));
    EXPECT_EQ(ReadFile(InArea("to")), bytes);
    EXPECT_EQ(ReadFile(InArea("from")), bytes);
}

TEST_F(ACopy, may_be_empty)
{
    WriteFile(InArea("from"), "");
    WriteFile(InArea("to"), "old");
    EXPECT_TRUE(CommonUtilFile::Copy(InArea("from"), InArea("to")));
    EXPECT_EQ(ReadFile(InArea("to")), "");
}

TEST_F(ACopy, may_come_from_outside_the_areas)
{
    EXPECT_TRUE(CommonUtilFile::Copy(Outside("note"), InArea("note")));
    EXPECT_EQ(ReadFile(InArea("note")), "note");
}

TEST_F(ACopy, replaces_its_target_in_one_step)
{
    WriteFile(InArea("from"), "new");
    WriteFile(InArea("to"), "the old content");
    const int reader = open(InArea("to").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_TRUE(CommonUtilFile::Copy(InArea("from"), InArea("to")));
    EXPECT_EQ(ReadFile(InArea("to")), "new");
    // Who had the old file open still reads all of it: the file was replaced, not rewritten.
    char content[32] = {};
    EXPECT_EQ(read(reader, content, sizeof content), 15);
    EXPECT_STREQ(content, "the old content");
    close(reader);
}

TEST_F(ACopy, onto_itself_keeps_the_file)
{
    EXPECT_TRUE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("watchlist/a/a.png")));
    EXPECT_EQ(ReadFile(InArea("watchlist/a/a.png")), "picture");
}

TEST_F(ACopy, leaves_nothing_else_behind)
{
    const Strings before = ListOf(InArea("watchlist/a"));
    CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("watchlist/a/a.png"));
    CommonUtilFile::Copy(InArea("nothing"), InArea("watchlist/a/b.png"));
    EXPECT_EQ(std::distance(fs::directory_iterator(InArea("watchlist/a")), {}), 1);
    EXPECT_EQ(ListOf(InArea("watchlist/a")), before);
}

TEST_F(ACopy, of_what_is_no_regular_file_fails_and_keeps_the_target)
{
    WriteFile(InArea("to"), "old");
    ASSERT_EQ(mkfifo(InArea("fifo").c_str(), 0600), 0);
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("nothing"), InArea("to")));
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("fifo"), InArea("to")));
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist"), InArea("to")));
    EXPECT_FALSE(CommonUtilFile::Copy("/dev/null", InArea("to")));
    EXPECT_FALSE(CommonUtilFile::Copy("", InArea("to")));
    EXPECT_EQ(ReadFile(InArea("to")), "old");
}

TEST_F(ACopy, is_at_most_32_MiB_long)
{
    WriteFile(InArea("to"), "old");
    WriteFile(InArea("from"), "");
    fs::resize_file(InArea("from"), kLongestFile + 1);
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("from"), InArea("to")));
    EXPECT_EQ(ReadFile(InArea("to")), "old");
    fs::resize_file(InArea("from"), kLongestFile);
    EXPECT_TRUE(CommonUtilFile::Copy(InArea("from"), InArea("to")));
    EXPECT_EQ(fs::file_size(InArea("to")), kLongestFile);
}

TEST_F(ACopy, takes_the_place_of_a_link_and_leaves_alone_where_it_leads)
{
    fs::create_symlink(Outside("note"), InArea("to"));
    fs::create_symlink(Outside("nothing"), InArea("dangling"));
    EXPECT_TRUE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("to")));
    EXPECT_TRUE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("dangling")));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(InArea("to"))));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(InArea("dangling"))));
    EXPECT_EQ(ReadFile(Outside("note")), "note");
    EXPECT_FALSE(fs::exists(Outside("nothing")));
}

TEST_F(ACopy, may_have_the_longest_name_there_is_and_none_longer)
{
    const std::string longest(255, 'n');
    EXPECT_TRUE(CommonUtilFile::Copy(Outside("note"), InArea(longest)));
    EXPECT_EQ(ReadFile(InArea(longest)), "note");
    const auto before = Everything();
    EXPECT_FALSE(CommonUtilFile::Copy(Outside("note"), InArea(longest + "n")));
    EXPECT_EQ(Everything(), before);
}

TEST_F(ACopy, has_all_bytes_of_a_source_that_tells_no_size)
{
    EXPECT_TRUE(CommonUtilFile::Copy("/proc/version", InArea("to")));
    EXPECT_EQ(ReadFile(InArea("to")), ReadFile("/proc/version"));
}

TEST_F(ACopy, into_a_folder_that_is_not_there_fails)
{
    const auto before = Everything();
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("nothing/a.png")));
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("watchlist/a/a.png"), InArea("watchlist")));
    EXPECT_EQ(Everything(), before);
}

}  // namespace
}  // namespace Contract
