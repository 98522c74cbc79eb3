// The user's background images: where they are, adding, deleting, and what is pending until save or cancel.

#include <sys/stat.h>

#include "on-a-platform.h"
#include "service-bg-manager.h"

using MemoryPlatform::Strings;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using WatchfaceService::BgManager;
using WatchfaceService::kGalleryBg;
using WatchfaceService::kThemeBg;

namespace {

class ABgManager : public OnAPlatform {
protected:
    ABgManager() { platform.Forget(); }

    // A picture of a peer's, outside of the store; its path.
    std::string Picture(const std::string& name, const std::string& content = "picture") const
    {
        platform.WriteFile(platform.Root() + "/pictures/" + name, content);
        return platform.Root() + "/pictures/" + name;
    }
    std::string Theme(const std::string& path = "") const
    {
        return platform.Trusted("theme/Backgrounds/" + path);
    }
    std::string Gallery(const std::string& path = "") const
    {
        return platform.Trusted("theme/GalleryBackgrounds/" + path);
    }
    // An image that is in its place.
    void Store(const std::string& path, const std::string& content = "stored") const
    {
        platform.WriteFile(path, content);
    }

    BgManager manager;
};

}  // namespace

// Where images are

TEST_F(OnAPlatform, asks_for_the_viewers_trusted_folder_when_a_bg_manager_is_made)
{
    const BgManager manager;
    EXPECT_THAT(platform.Timeline(), ElementsAre("path trusted com.corvane.watchface"));
    EXPECT_EQ(manager.BuildBgPath(kThemeBg, "", "sky.png"), platform.Trusted("theme/Backgrounds/sky.png"));
}

TEST_F(OnAPlatform, puts_a_slash_behind_the_trusted_folder_when_it_has_none)
{
    platform.ScriptAreaPath("app_manager_get_shared_trusted_path", "/trusted");
    EXPECT_EQ(BgManager().BuildBgPath(kThemeBg, "", "a"), "/trusted/theme/Backgrounds/a");
    platform.ScriptAreaPath("app_manager_get_shared_trusted_path", "/trusted/");
    EXPECT_EQ(BgManager().BuildBgPath(kThemeBg, "", "a"), "/trusted/theme/Backgrounds/a");
}

TEST_F(OnAPlatform, logs_that_there_is_no_trusted_folder_and_goes_on_below_the_root)
{
    platform.Fail("app_manager_get_shared_trusted_path", {.code = -38});
    BgManager manager;
    // The text of the other call, on purpose.
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("E app_manager_get_shared_resource_path returns -38(ffffffda)"));
    EXPECT_EQ(manager.BuildBgPath(kThemeBg, "", "a"), "/theme/Backgrounds/a");
    EXPECT_EQ(manager.BuildBgPath(kGalleryBg, "U1", "a"), "/theme/GalleryBackgrounds/U1/a");
}

TEST_F(OnAPlatform, adds_no_background_where_there_is_no_trusted_folder)
{
    platform.Fail("app_manager_get_shared_trusted_path");
    BgManager manager;
    platform.WriteFile(platform.Root() + "/a.png", "picture");
    platform.Forget();
    EXPECT_FALSE(manager.Add(platform.Root() + "/a.png", kThemeBg, "", false));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E ecore_file_mkpath failed!!", "E bg image copy failed!!"));
}

TEST_F(ABgManager, has_theme_backgrounds_in_one_folder_whatever_the_prefix_is)
{
    EXPECT_EQ(manager.BuildBgPath(0, "", "sky.png"), Theme("sky.png"));
    EXPECT_EQ(manager.BuildBgPath(0, "U1", "sky.png"), Theme("sky.png"));
}

TEST_F(ABgManager, has_gallery_backgrounds_without_a_prefix_right_in_their_folder)
{
    EXPECT_EQ(manager.BuildBgPath(1, "", "img.jpg"), Gallery("img.jpg"));
}

TEST_F(ABgManager, has_gallery_backgrounds_of_a_prefix_in_a_folder_of_its_own)
{
    EXPECT_EQ(manager.BuildBgPath(1, "U1", "img.jpg"), Gallery("U1/img.jpg"));
}

TEST_F(ABgManager, places_every_type_but_0_like_a_gallery_background)
{
    EXPECT_EQ(manager.BuildBgPath(2, "U1", "a"), Gallery("U1/a"));
    EXPECT_EQ(manager.BuildBgPath(-1, "", "a"), Gallery("a"));
}

TEST_F(ABgManager, gives_the_folder_for_an_empty_file_name)
{
    EXPECT_EQ(manager.BuildBgPath(0, "U1", ""), Theme());
    EXPECT_EQ(manager.BuildBgPath(1, "", ""), Gallery());
    EXPECT_EQ(manager.BuildBgPath(1, "U1", ""), Gallery("U1/"));
}

// Adding

TEST_F(ABgManager, refuses_to_add_an_image_without_a_path)
{
    EXPECT_FALSE(manager.Add("", kGalleryBg, "U1", true));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E filepath is empty!!"));
}

TEST_F(ABgManager, looks_at_the_path_before_it_looks_at_what_can_be_kept)
{
    EXPECT_FALSE(manager.Add("", kThemeBg, "", true));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E filepath is empty!!"));
}

TEST_F(ABgManager, does_not_add_an_image_that_is_missing_and_logs_nothing)
{
    EXPECT_FALSE(manager.Add(platform.Root() + "/missing.png", kGalleryBg, "U1", true));
    EXPECT_THAT(platform.Timeline(), ElementsAre("exists ROOT:missing.png"));
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
}

TEST_F(ABgManager, makes_the_folder_and_copies_the_image_under_its_own_name)
{
    EXPECT_TRUE(manager.Add(Picture("img.jpg"), kGalleryBg, "U1", false));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("exists ROOT:pictures/img.jpg", "mkpath TRUSTED:theme/GalleryBackgrounds/U1/",
                            "copy ROOT:pictures/img.jpg -> TRUSTED:theme/GalleryBackgrounds/U1/img.jpg"));
    EXPECT_EQ(platform.ReadFile(Gallery("U1/img.jpg")), "picture");
    EXPECT_EQ(platform.ReadFile(Picture("img.jpg")), "picture");
}

TEST_F(ABgManager, adds_theme_and_gallery_images_to_their_folders)
{
    EXPECT_TRUE(manager.Add(Picture("sky.png"), kThemeBg, "U1", false));
    EXPECT_TRUE(manager.Add(Picture("img.jpg"), kGalleryBg, "", false));
    EXPECT_THAT(platform.Tree(platform.Trusted()),
                ElementsAre("theme/", "theme/Backgrounds/", "theme/Backgrounds/sky.png",
                            "theme/GalleryBackgrounds/", "theme/GalleryBackgrounds/img.jpg"));
}

TEST_F(ABgManager, adds_an_image_over_one_of_its_name)
{
    Store(Theme("sky.png"), "a longer earlier picture");
    EXPECT_TRUE(manager.Add(Picture("sky.png", "new"), kThemeBg, "", false));
    EXPECT_EQ(platform.ReadFile(Theme("sky.png")), "new");
}

TEST_F(ABgManager, adds_an_image_that_is_in_its_place_already)
{
    Store(Theme("sky.png"));
    EXPECT_TRUE(manager.Add(Theme("sky.png"), kThemeBg, "", false));
    EXPECT_EQ(platform.ReadFile(Theme("sky.png")), "stored");
}

TEST_F(ABgManager, logs_that_the_folder_cannot_be_made_and_tries_the_copy_all_the_same)
{
    Store(Theme("earlier.png"));
    platform.Fail("ecore_file_mkpath");
    EXPECT_TRUE(manager.Add(Picture("sky.png"), kThemeBg, "", false));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E ecore_file_mkpath failed!!"));
    EXPECT_EQ(platform.ReadFile(Theme("sky.png")), "picture");
}

TEST_F(ABgManager, fails_to_add_what_cannot_be_copied_and_notes_nothing)
{
    platform.Fail("CommonUtilFile::Copy");
    EXPECT_FALSE(manager.Add(Picture("img.jpg"), kGalleryBg, "U1", true));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E bg image copy failed!!"));
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_THAT(platform.Tree(Gallery("U1")), IsEmpty());
}

TEST_F(ABgManager, fails_to_add_a_folder_and_a_pipe_and_does_not_wait_for_it)
{
    const std::string pipe = Picture("x") + ".pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(manager.Add(pipe, kThemeBg, "", false));
    EXPECT_FALSE(manager.Add(platform.Root() + "/pictures", kThemeBg, "", false));
    EXPECT_FALSE(manager.Add(platform.Root() + "/pictures/", kThemeBg, "", false));
    EXPECT_THAT(platform.Errors(), testing::Each("bg image copy failed!!"));
    EXPECT_THAT(platform.Tree(Theme()), IsEmpty());
}

TEST_F(ABgManager, adds_nothing_outside_of_its_folders)
{
    platform.WriteFile(platform.Root() + "/pictures/x", "");
    EXPECT_FALSE(manager.Add(Picture("img.jpg"), kGalleryBg, "../../../../..", true));
    EXPECT_FALSE(manager.Add(Picture("img.jpg"), kGalleryBg, "U1/../..", true));
    EXPECT_FALSE(manager.Add(platform.Root() + "/pictures/..", kThemeBg, "", false));
    EXPECT_THAT(platform.Tree(platform.Trusted("theme/Backgrounds")), IsEmpty());
    EXPECT_FALSE(platform.Exists(platform.Trusted("img.jpg")));
    EXPECT_FALSE(platform.Exists(platform.Trusted("theme/img.jpg")));
    EXPECT_THAT(manager.GetAddedBgList("../../../../.."), IsEmpty());
}

TEST_F(ABgManager, notes_no_image_that_is_added_at_once)
{
    EXPECT_TRUE(manager.Add(Picture("a"), kGalleryBg, "U1", false));
    EXPECT_TRUE(manager.Add(Picture("b"), kGalleryBg, "", false));
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_THAT(manager.GetAddedBgList(""), IsEmpty());
}

TEST_F(ABgManager, notes_the_bare_names_of_pending_images_in_their_order_and_as_often_as_they_come)
{
    for (const char* name : {"b.png", "a.png", "b.png"}) {
        EXPECT_TRUE(manager.Add(Picture(name), kGalleryBg, "U1", true));
    }
    EXPECT_THAT(manager.GetAddedBgList("U1"), ElementsAre("b.png", "a.png", "b.png"));
    EXPECT_THAT(manager.GetDeletedBgList("U1"), IsEmpty());
    EXPECT_THAT(platform.Tree(Gallery("U1")), ElementsAre("a.png", "b.png"));
}

TEST_F(ABgManager, notes_pending_images_for_each_prefix_by_itself)
{
    manager.Add(Picture("none"), kGalleryBg, "", true);
    manager.Add(Picture("u1"), kGalleryBg, "U1", true);
    manager.Add(Picture("u2"), kGalleryBg, "U2", true);
    EXPECT_THAT(manager.GetAddedBgList(""), ElementsAre("none"));
    EXPECT_THAT(manager.GetAddedBgList("U1"), ElementsAre("u1"));
    EXPECT_THAT(manager.GetAddedBgList("U2"), ElementsAre("u2"));
}

TEST_F(ABgManager, logs_that_a_theme_image_cannot_be_kept_and_adds_it_at_once)
{
    EXPECT_TRUE(manager.Add(Picture("sky.png"), kThemeBg, "U1", true));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E not supported type[0] to keep"));
    EXPECT_EQ(platform.ReadFile(Theme("sky.png")), "picture");
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_THAT(manager.GetAddedBgList(""), IsEmpty());
}

TEST_F(ABgManager, stores_a_type_of_2_like_a_gallery_image_but_cannot_keep_it_pending)
{
    EXPECT_TRUE(manager.Add(Picture("img.jpg"), 2, "U1", true));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E not supported type[2] to keep"));
    EXPECT_EQ(platform.ReadFile(Gallery("U1/img.jpg")), "picture");
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
}

TEST_F(ABgManager, logs_what_cannot_be_kept_also_of_a_missing_image)
{
    EXPECT_FALSE(manager.Add("/missing.png", kThemeBg, "", true));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E not supported type[0] to keep", "exists /missing.png"));
}

// Deleting

TEST_F(ABgManager, refuses_to_delete_nothing)
{
    EXPECT_FALSE(manager.Del({}, kGalleryBg, "U1", true));
    EXPECT_FALSE(manager.Del({}, kThemeBg, "", false));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E files is empty!!", "log E files is empty!!"));
}

TEST_F(ABgManager, deletes_images_in_their_order)
{
    Store(Gallery("U1/a"));
    Store(Gallery("U1/b"));
    EXPECT_TRUE(manager.Del({"b", "a"}, kGalleryBg, "U1", false));
    EXPECT_THAT(platform.Timeline(), ElementsAre("exists TRUSTED:theme/GalleryBackgrounds/U1/b",
                                                 "remove TRUSTED:theme/GalleryBackgrounds/U1/b",
                                                 "exists TRUSTED:theme/GalleryBackgrounds/U1/a",
                                                 "remove TRUSTED:theme/GalleryBackgrounds/U1/a"));
    EXPECT_THAT(platform.Tree(Gallery("U1")), IsEmpty());
    EXPECT_THAT(manager.GetDeletedBgList("U1"), IsEmpty());
}

TEST_F(ABgManager, logs_a_missing_image_and_deletes_the_next)
{
    Store(Theme("b"));
    EXPECT_TRUE(manager.Del({"a", "b"}, kThemeBg, "", false));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E bg image is not exist!!"));
    EXPECT_THAT(platform.Tree(Theme()), IsEmpty());
}

TEST_F(ABgManager, logs_an_image_that_cannot_be_deleted_and_deletes_the_next)
{
    Store(Theme("a"));
    Store(Theme("b"));
    platform.Fail("ecore_file_remove");
    EXPECT_TRUE(manager.Del({"a", "b"}, kThemeBg, "", false));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E bg image del failed!!"));
    EXPECT_THAT(platform.Tree(Theme()), ElementsAre("a"));
}

TEST_F(ABgManager, deletes_nothing_outside_of_its_folders)
{
    Store(Theme("a"));
    Store(Gallery("U1/a"));
    EXPECT_TRUE(manager.Del({"..", ".", "", "../GalleryBackgrounds/U1/a"}, kThemeBg, "", false));
    EXPECT_TRUE(manager.Del({"a"}, kGalleryBg, "../Backgrounds", false));
    EXPECT_THAT(platform.Errors(), AllOf(SizeIs(5), testing::Each("bg image del failed!!")));
    EXPECT_TRUE(platform.Exists(Theme("a")));
    EXPECT_TRUE(platform.Exists(Gallery("U1/a")));
}

TEST_F(ABgManager, notes_pending_deletions_and_touches_no_file)
{
    Store(Gallery("U1/a"));
    platform.Forget();
    EXPECT_TRUE(manager.Del({"b", "a"}, kGalleryBg, "U1", true));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I added [2] files to delete, kept [2] files"));
    EXPECT_THAT(manager.GetDeletedBgList("U1"), ElementsAre("b", "a"));
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_TRUE(platform.Exists(Gallery("U1/a")));
}

TEST_F(ABgManager, counts_the_deletions_of_a_call_and_all_that_are_pending)
{
    manager.Del({"a", "b"}, kGalleryBg, "U1", true);
    manager.Del({"a"}, kGalleryBg, "U1", true);
    manager.Del({"a"}, kGalleryBg, "", true);
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I added [2] files to delete, kept [2] files",
                                                 "I added [1] files to delete, kept [3] files",
                                                 "I added [1] files to delete, kept [1] files"));
    EXPECT_THAT(manager.GetDeletedBgList("U1"), ElementsAre("a", "b", "a"));
    EXPECT_THAT(manager.GetDeletedBgList(""), ElementsAre("a"));
}

TEST_F(ABgManager, deletes_at_once_and_without_a_word_what_cannot_be_kept)
{
    Store(Theme("a"));
    Store(Gallery("U1/b"));
    EXPECT_TRUE(manager.Del({"a"}, kThemeBg, "", true));
    EXPECT_TRUE(manager.Del({"b"}, 2, "U1", true));
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
    EXPECT_FALSE(platform.Exists(Theme("a")));
    EXPECT_FALSE(platform.Exists(Gallery("U1/b")));
    EXPECT_THAT(manager.GetDeletedBgList("U1"), IsEmpty());
}

TEST_F(ABgManager, is_done_with_an_empty_list_of_images_to_delete_from_the_disk)
{
    EXPECT_TRUE(manager.DelInternal({}, kGalleryBg, "U1"));
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

// What is pending

TEST_F(ABgManager, gives_the_same_empty_list_for_every_unknown_prefix)
{
    EXPECT_EQ(&manager.GetAddedBgList("U1"), &manager.GetDeletedBgList("U2"));
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_NE(&manager.GetAddedBgList(""), &manager.GetAddedBgList("U1"));
}

TEST_F(ABgManager, makes_no_list_for_a_prefix_that_is_only_looked_at_applied_or_cancelled)
{
    manager.ApplyChanges("U1");
    manager.CancelChanges("U1");
    EXPECT_EQ(&manager.GetAddedBgList("U1"), &manager.GetAddedBgList("unknown"));
    EXPECT_EQ(&manager.GetDeletedBgList("U1"), &manager.GetDeletedBgList("unknown"));
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

TEST_F(ABgManager, keeps_the_list_of_a_prefix_when_it_is_emptied)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    manager.Del({"b"}, kGalleryBg, "U1", true);
    const auto* added = &manager.GetAddedBgList("U1");
    const auto* deleted = &manager.GetDeletedBgList("U1");
    manager.ApplyChanges("U1");
    EXPECT_EQ(&manager.GetAddedBgList("U1"), added);
    EXPECT_EQ(&manager.GetDeletedBgList("U1"), deleted);
    EXPECT_THAT(*added, IsEmpty());
    EXPECT_THAT(*deleted, IsEmpty());
}

TEST_F(ABgManager, forgets_what_is_pending_with_the_process)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    Store(Gallery("U1/b"));
    manager.Del({"b"}, kGalleryBg, "U1", true);
    BgManager next;
    EXPECT_THAT(next.GetAddedBgList("U1"), IsEmpty());
    EXPECT_THAT(next.GetDeletedBgList("U1"), IsEmpty());
    EXPECT_THAT(platform.Tree(Gallery("U1")), ElementsAre("a", "b"));
}

// Save

TEST_F(ABgManager, applies_pending_additions_by_forgetting_them)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    platform.Forget();
    manager.ApplyChanges("U1");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I apply added bg!!"));
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_TRUE(platform.Exists(Gallery("U1/a")));
}

TEST_F(ABgManager, applies_pending_deletions_on_the_disk)
{
    Store(Gallery("U1/a"));
    Store(Gallery("U1/b"));
    manager.Del({"b", "a"}, kGalleryBg, "U1", true);
    platform.Forget();
    manager.ApplyChanges("U1");
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log I apply deleted bg!!", "exists TRUSTED:theme/GalleryBackgrounds/U1/b",
                            "remove TRUSTED:theme/GalleryBackgrounds/U1/b",
                            "exists TRUSTED:theme/GalleryBackgrounds/U1/a",
                            "remove TRUSTED:theme/GalleryBackgrounds/U1/a"));
    EXPECT_THAT(manager.GetDeletedBgList("U1"), IsEmpty());
    EXPECT_THAT(platform.Tree(Gallery("U1")), IsEmpty());
}

TEST_F(ABgManager, applies_additions_before_deletions)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    manager.Del({"a"}, kGalleryBg, "U1", true);
    platform.Forget();
    manager.ApplyChanges("U1");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I apply added bg!!", "I apply deleted bg!!"));
    EXPECT_FALSE(platform.Exists(Gallery("U1/a")));
}

TEST_F(ABgManager, applies_changes_once)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    manager.Del({"a"}, kGalleryBg, "U1", true);
    manager.ApplyChanges("U1");
    platform.Forget();
    manager.ApplyChanges("U1");
    EXPECT_THAT(platform.Timeline(), IsEmpty());
}

TEST_F(ABgManager, applies_the_changes_of_one_prefix_alone)
{
    for (const char* prefix : {"", "U1", "U2"}) {
        manager.Add(Picture("a"), kGalleryBg, prefix, true);
        manager.Del({"b"}, kGalleryBg, prefix, true);
    }
    manager.ApplyChanges("U1");
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_THAT(manager.GetAddedBgList("U2"), ElementsAre("a"));
    EXPECT_THAT(manager.GetDeletedBgList("U2"), ElementsAre("b"));
    EXPECT_THAT(manager.GetAddedBgList(""), ElementsAre("a"));
    EXPECT_THAT(manager.GetDeletedBgList(""), ElementsAre("b"));
}

TEST_F(ABgManager, applies_the_changes_without_a_prefix)
{
    Store(Gallery("b"));
    manager.Add(Picture("a"), kGalleryBg, "", true);
    manager.Del({"b"}, kGalleryBg, "", true);
    platform.Forget();
    manager.ApplyChanges("");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I apply added bg!!", "I apply deleted bg!!"));
    EXPECT_THAT(platform.Tree(Gallery()), ElementsAre("a"));
    EXPECT_THAT(manager.GetAddedBgList(""), IsEmpty());
    EXPECT_THAT(manager.GetDeletedBgList(""), IsEmpty());
}

// Cancel

TEST_F(ABgManager, cancels_pending_additions_on_the_disk)
{
    manager.Add(Picture("b"), kGalleryBg, "U1", true);
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    platform.Forget();
    manager.CancelChanges("U1");
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log I cancel added bg!!", "exists TRUSTED:theme/GalleryBackgrounds/U1/b",
                            "remove TRUSTED:theme/GalleryBackgrounds/U1/b",
                            "exists TRUSTED:theme/GalleryBackgrounds/U1/a",
                            "remove TRUSTED:theme/GalleryBackgrounds/U1/a"));
    EXPECT_THAT(manager.GetAddedBgList("U1"), IsEmpty());
    EXPECT_THAT(platform.Tree(Gallery("U1")), IsEmpty());
}

TEST_F(ABgManager, cancels_pending_deletions_by_forgetting_them)
{
    Store(Gallery("U1/a"));
    manager.Del({"a"}, kGalleryBg, "U1", true);
    platform.Forget();
    manager.CancelChanges("U1");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I cancel deleted bg!!"));
    EXPECT_THAT(manager.GetDeletedBgList("U1"), IsEmpty());
    EXPECT_TRUE(platform.Exists(Gallery("U1/a")));
}

TEST_F(ABgManager, cancels_additions_before_deletions)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    manager.Del({"a"}, kGalleryBg, "U1", true);
    platform.Forget();
    manager.CancelChanges("U1");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I cancel added bg!!", "I cancel deleted bg!!"));
}

TEST_F(ABgManager, tries_to_delete_twice_what_was_added_twice_when_it_is_cancelled)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    platform.Forget();
    manager.CancelChanges("U1");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I cancel added bg!!", "E bg image is not exist!!"));
}

TEST_F(ABgManager, cancels_the_changes_of_one_prefix_alone)
{
    for (const char* prefix : {"", "U1", "U2"}) {
        manager.Add(Picture("a"), kGalleryBg, prefix, true);
        manager.Del({"b"}, kGalleryBg, prefix, true);
    }
    manager.CancelChanges("");
    EXPECT_THAT(manager.GetAddedBgList(""), IsEmpty());
    EXPECT_THAT(manager.GetDeletedBgList(""), IsEmpty());
    EXPECT_THAT(manager.GetAddedBgList("U1"), ElementsAre("a"));
    EXPECT_THAT(manager.GetDeletedBgList("U2"), ElementsAre("b"));
    EXPECT_THAT(platform.Tree(Gallery()), ElementsAre("U1/", "U1/a", "U2/", "U2/a"));
}

// Whole folders

TEST_F(ABgManager, lists_the_files_of_one_folder_and_no_folders)
{
    Store(Gallery("b"));
    Store(Gallery("a"));
    Store(Gallery("U1/c"));
    EXPECT_THAT(manager.ListBgFiles(kGalleryBg, ""), ElementsAre("a", "b"));
    EXPECT_THAT(manager.ListBgFiles(kGalleryBg, "U1"), ElementsAre("c"));
    EXPECT_THAT(manager.ListBgFiles(kThemeBg, "U1"), IsEmpty());
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

TEST_F(ABgManager, looks_at_every_entry_of_a_folder_that_it_lists)
{
    Store(Theme("b"));
    Store(Theme("a"));
    manager.ListBgFiles(kThemeBg, "");
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("ls TRUSTED:theme/Backgrounds/", "is_dir TRUSTED:theme/Backgrounds//a",
                            "is_dir TRUSTED:theme/Backgrounds//b"));
}

TEST_F(ABgManager, deletes_the_loose_files_of_the_gallery_and_leaves_the_folders_of_all_prefixes)
{
    Store(Gallery("a"));
    Store(Gallery("b"));
    Store(Gallery("U1/c"));
    Store(Theme("d"));
    manager.DeleteAllBg(kGalleryBg, "");
    EXPECT_THAT(platform.Tree(platform.Trusted("theme")),
                ElementsAre("Backgrounds/", "Backgrounds/d", "GalleryBackgrounds/", "GalleryBackgrounds/U1/",
                            "GalleryBackgrounds/U1/c"));
}

TEST_F(ABgManager, deletes_the_files_of_one_prefix_and_leaves_its_folder)
{
    Store(Gallery("U1/a"));
    Store(Gallery("U1/below/b"));
    Store(Gallery("U2/c"));
    manager.DeleteAllBg(kGalleryBg, "U1");
    EXPECT_THAT(platform.Tree(Gallery()), ElementsAre("U1/", "U1/below/", "U1/below/b", "U2/", "U2/c"));
}

TEST_F(ABgManager, looks_at_each_entry_before_it_deletes_it)
{
    Store(Gallery("U1/a"));
    Store(Gallery("U1/b/c"));
    Store(Gallery("U1/d"));
    manager.DeleteAllBg(kGalleryBg, "U1");
    EXPECT_THAT(platform.Timeline(), ElementsAre("ls TRUSTED:theme/GalleryBackgrounds/U1/",
                                                 "is_dir TRUSTED:theme/GalleryBackgrounds/U1//a",
                                                 "remove TRUSTED:theme/GalleryBackgrounds/U1//a",
                                                 "is_dir TRUSTED:theme/GalleryBackgrounds/U1//b",
                                                 "is_dir TRUSTED:theme/GalleryBackgrounds/U1//d",
                                                 "remove TRUSTED:theme/GalleryBackgrounds/U1//d"));
}

TEST_F(ABgManager, logs_a_file_that_it_cannot_delete_and_goes_on)
{
    Store(Gallery("U1/a"));
    Store(Gallery("U1/b"));
    platform.Fail("ecore_file_remove");
    manager.DeleteAllBg(kGalleryBg, "U1");
    // The text of the other call, on purpose.
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E ecore_file_recursive_rm failed!!"));
    EXPECT_THAT(platform.Tree(Gallery("U1")), ElementsAre("a"));
}

TEST_F(ABgManager, does_nothing_about_a_folder_that_is_missing)
{
    manager.DeleteAllBg(kGalleryBg, "U1");
    EXPECT_THAT(manager.ListBgFiles(kGalleryBg, "U1"), IsEmpty());
    EXPECT_THAT(platform.Timeline(), testing::Each("ls TRUSTED:theme/GalleryBackgrounds/U1/"));
}

TEST_F(ABgManager, leaves_what_is_pending_when_it_deletes_all)
{
    manager.Add(Picture("a"), kGalleryBg, "U1", true);
    manager.Del({"b"}, kGalleryBg, "U1", true);
    manager.DeleteAllBg(kGalleryBg, "U1");
    EXPECT_THAT(manager.GetAddedBgList("U1"), ElementsAre("a"));
    EXPECT_THAT(manager.GetDeletedBgList("U1"), ElementsAre("b"));
}
