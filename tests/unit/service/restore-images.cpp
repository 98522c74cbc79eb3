// A restore: what becomes of the images, which are taken after the gallery face and in place of the old ones.

#include <filesystem>

#include "a-backup-conversation.h"

using MemoryPlatform::Message;
using MemoryPlatform::Strings;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

constexpr char kDone[] = "[DELETED_BG] background images are deleted";

}  // namespace

// From the gallery face to the images

TEST_F(ARestore, of_the_gallery_face_says_so_before_it_writes_it)
{
    GiveFace(kGalleryFace);
    EXPECT_EQ(platform.Timeline()[2], "log E [RESTORED_XML] watchface.xml is restored");
    EXPECT_THAT(platform.Timeline()[3], HasSubstr("mkpath"));
}

TEST_F(ARestore, of_any_other_face_does_not_say_so)
{
    GiveFace(kFace);
    GiveFace("a");
    EXPECT_THAT(platform.Errors(), Not(Contains("[RESTORED_XML] watchface.xml is restored")));
}

TEST_F(ARestore, takes_no_images_before_the_gallery_face)
{
    EXPECT_TRUE(GiveImage(Restored("x"), "watch-bg-digital"));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E message = , operation = corvane_cloud_restore"));
    GiveFace(kFace);
    EXPECT_FALSE(ImagesAreTaken());
    GiveCurrent(kGalleryFace);
    EXPECT_FALSE(ImagesAreTaken());
}

TEST_F(ARestore, ignores_a_broken_image_before_the_gallery_face)
{
    EXPECT_TRUE(GiveImage("", ""));
    EXPECT_THAT(platform.Errors(), SizeIs(1));
}

TEST_F(ARestore, takes_images_after_the_gallery_face)
{
    GiveFace(kGalleryFace);
    EXPECT_TRUE(ImagesAreTaken());
}

TEST_F(ARestore, takes_images_after_the_gallery_face_and_another)
{
    GiveFace(kGalleryFace);
    GiveFace(kFace);
    EXPECT_TRUE(ImagesAreTaken());
    GiveFace("a");
    GiveCurrent(kFace);
    std::filesystem::remove(platform.Trusted("theme/Backgrounds/probe"));
    EXPECT_TRUE(ImagesAreTaken());
}

TEST_F(ARestore, takes_images_after_the_face_that_takes_the_place_of_an_older_gallery_face)
{
    GiveFace("com.corvane.watchface-kelp-u1");
    EXPECT_TRUE(ImagesAreTaken());
}

TEST_F(ARestore, takes_images_also_after_a_gallery_face_that_could_not_be_written)
{
    EXPECT_FALSE(GiveFace(kGalleryFace, ""));
    EXPECT_THAT(platform.Errors(),
                ElementsAre("message = , operation = corvane_cloud_restore",
                            "[RESTORED_XML] watchface.xml is restored", "data/xml_data is empty!!"));
    EXPECT_TRUE(ImagesAreTaken());
}

TEST_F(ARestore, takes_no_images_after_a_gallery_face_that_this_watch_does_not_have)
{
    std::filesystem::remove_all(platform.RO(std::string("watchlist/") + kGalleryFace));
    EXPECT_FALSE(GiveFace(kGalleryFace));
    EXPECT_FALSE(ImagesAreTaken());
}

TEST_F(ARestore, takes_no_images_after_a_new_start)
{
    BeginWithTheGalleryFace();
    EXPECT_TRUE(ImagesAreTaken());
    Say({
        {"message", "restore_start"}
    });
    std::filesystem::remove(platform.Trusted("theme/Backgrounds/probe"));
    EXPECT_FALSE(ImagesAreTaken());
}

TEST_F(ARestore, takes_images_until_a_new_start_even_after_its_end)
{
    BeginWithTheGalleryFace();
    Say({
        {"message", "restore_finished"}
    });
    EXPECT_TRUE(ImagesAreTaken());
}

TEST_F(ARestore, deletes_the_old_images_with_the_first_item_after_the_gallery_face_and_tells_the_phone)
{
    for (const char* file : {"Backgrounds/t2", "Backgrounds/t1", "GalleryBackgrounds/U1/g"}) Store(file);
    GiveFace(kGalleryFace);
    EXPECT_EQ(platform.Tree(platform.Trusted("theme")).size(), 6U);
    platform.Forget();
    EXPECT_TRUE(Give({}));
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre(
            "log E message = , operation = corvane_cloud_restore",
            "log I bgTypeStr[watch-bg-digital] prefix[]", "ls TRUSTED:theme/Backgrounds/",
            "is_dir TRUSTED:theme/Backgrounds//t1", "is_dir TRUSTED:theme/Backgrounds//t2",
            "ls TRUSTED:theme/Backgrounds/", "is_dir TRUSTED:theme/Backgrounds//t1",
            "remove TRUSTED:theme/Backgrounds//t1", "is_dir TRUSTED:theme/Backgrounds//t2",
            "remove TRUSTED:theme/Backgrounds//t2",
            "send " + ToWms({
                          {"type",    "watch-bg-del"     },
                          {"bg_type", "watch-bg-digital" },
                          {"bg_list", Strings{"t1", "t2"}}
    }),
            "log I bgTypeStr[watch-bg-gallery-u1] prefix[U1]", "ls TRUSTED:theme/GalleryBackgrounds/U1/",
            "is_dir TRUSTED:theme/GalleryBackgrounds/U1//g", "ls TRUSTED:theme/GalleryBackgrounds/U1/",
            "is_dir TRUSTED:theme/GalleryBackgrounds/U1//g", "remove TRUSTED:theme/GalleryBackgrounds/U1//g",
            "send " + ToWms({{"type", "watch-bg-del"},
                             {"bg_type", "watch-bg-gallery-u1"},
                             {"bg_list", Strings{"g"}}}),
            std::string("log E ") + kDone));
}

TEST_F(ARestore, deletes_old_images_of_two_folders_alone)
{
    for (const char* file : {"Backgrounds/sub/t", "GalleryBackgrounds/plain", "GalleryBackgrounds/U2/g"}) {
        Store(file);
    }
    BeginWithTheGalleryFace();
    EXPECT_EQ(platform.Tree(platform.Trusted("theme")).size(), 7U);
    EXPECT_THAT(platform.SentTo(kWms), IsEmpty());
}

TEST_F(ARestore, tells_the_phone_of_no_deletion_where_there_was_nothing_but_takes_images_from_then_on)
{
    Store("GalleryBackgrounds/U1/g");
    GiveFace(kGalleryFace);
    platform.Forget();
    Give({});
    EXPECT_THAT(
        Sent(),
        ElementsAre(ToWms({
            {"type",    "watch-bg-del"       },
            {"bg_type", "watch-bg-gallery-u1"},
            {"bg_list", Strings{"g"}         }
    })));
    GiveFace(kGalleryFace);
    platform.Forget();
    Give({});
    EXPECT_THAT(platform.Sent(), IsEmpty());
    EXPECT_EQ(platform.Errors().back(), kDone);
    EXPECT_TRUE(ImagesAreTaken());
}

TEST_F(ARestore, deletes_the_old_images_before_it_looks_at_the_item_of_whatever_kind)
{
    const Message items[] = {
        {{"type", "watch"},              {"pkgid", "a"}, {"result_xml", "<a/>"}},
        {{"type", "watch"}       },
        {{"type", "watch-idle-changed"},              {"pkgid", "a"}},
        {{"type", "unknown"}},
        {{"message", "restore_finished"}                             },
    };
    for (const Message& item : items) {
        Store("Backgrounds/t");
        GiveFace(kGalleryFace);
        platform.Forget();
        Give(item);
        EXPECT_FALSE(platform.Exists(platform.Trusted("theme/Backgrounds/t")));
        EXPECT_THAT(platform.Errors(), Contains(kDone));
        EXPECT_THAT(platform.Calls({"remove", "open", "key"})[0], HasSubstr("remove TRUSTED"));
    }
}

TEST_F(ARestore, deletes_the_old_images_once_and_keeps_those_that_came_since)
{
    BeginWithTheGalleryFace();
    GiveImage(Restored("x"), "watch-bg-gallery-u1");
    GiveImage(Restored("y"), "watch-bg-gallery-u1");
    GiveFace(kFace);
    EXPECT_THAT(platform.Errors(), Not(Contains(kDone)));
    EXPECT_THAT(platform.Tree(platform.Trusted("theme/GalleryBackgrounds/U1")), ElementsAre("x", "y"));
}

TEST_F(ARestore, deletes_what_came_since_when_the_gallery_face_comes_again)
{
    BeginWithTheGalleryFace();
    GiveImage(Restored("x"), "watch-bg-gallery-u1");
    GiveFace(kGalleryFace);
    GiveImage(Restored("y"), "watch-bg-gallery-u1");
    EXPECT_THAT(platform.Tree(platform.Trusted("theme/GalleryBackgrounds/U1")), ElementsAre("y"));
}

TEST_F(ARestore, leaves_the_old_images_after_a_backup_or_a_new_start_in_between)
{
    Store("Backgrounds/t");
    GiveFace(kGalleryFace);
    Say({
        {"operation", "corvane_cloud_backup"}
    });
    EXPECT_TRUE(platform.Exists(platform.Trusted("theme/Backgrounds/t")));
    Say({
        {"message", "restore_start"}
    });
    Give({});
    EXPECT_TRUE(platform.Exists(platform.Trusted("theme/Backgrounds/t")));
}

TEST_F(ARestore, goes_on_with_the_images_when_the_phone_cannot_be_told_of_the_deletion)
{
    Store("Backgrounds/t");
    GiveFace(kGalleryFace);
    platform.Fail("bundle_create");
    Give({});
    EXPECT_THAT(platform.Errors(), Contains("message is nullptr!!"));
    EXPECT_TRUE(ImagesAreTaken());
}

// Images

TEST_F(ARestore, of_an_image_puts_it_in_its_place_and_tells_the_phone)
{
    BeginWithTheGalleryFace();
    const std::string path = Restored("x.jpg");
    EXPECT_TRUE(GiveImage(path, "watch-bg-gallery-u1"));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E message = , operation = corvane_cloud_restore",
                            "log I bgTypeStr[watch-bg-gallery-u1] prefix[U1]", "exists ROOT:restored/x.jpg",
                            "mkpath TRUSTED:theme/GalleryBackgrounds/U1/",
                            "copy ROOT:restored/x.jpg -> TRUSTED:theme/GalleryBackgrounds/U1/x.jpg",
                            "send " + ToWms({
                                          {"type",    "watch-bg-add"                                                                },
                                          {"bg_type", "watch-bg-gallery-u1"                                                         },
                                          {"bg_list", platform.Trusted("theme/GalleryBackgrounds/U1/"
                                                                       "x.jpg")}
    })));
    EXPECT_EQ(platform.ReadFile(platform.Trusted("theme/GalleryBackgrounds/U1/x.jpg")), "restored");
    EXPECT_TRUE(platform.Sent()[0].trusted);
    EXPECT_EQ(platform.Sent()[0].senderPort, "watchface-service::localport");
}

TEST_F(ARestore, of_an_image_places_it_by_its_type)
{
    BeginWithTheGalleryFace();
    const std::pair<const char*, const char*> rows[] = {
        {"watch-bg-digital",    "theme/Backgrounds/x"          },
        {"watch-bg-gallery",    "theme/GalleryBackgrounds/x"   },
        {"watch-bg-gallery-",   "theme/GalleryBackgrounds/x"   },
        {"watch-bg-gallery-u1", "theme/GalleryBackgrounds/U1/x"},
        {"watch-bg-gallery-u2", "theme/GalleryBackgrounds/U2/x"},
        {"watch-bg-galler",     "theme/Backgrounds/x"          },
    };
    for (const auto& [bgType, place] : rows) {
        platform.Forget();
        EXPECT_TRUE(GiveImage(Restored("x"), bgType));
        EXPECT_THAT(
            Sent(),
            ElementsAre(ToWms({
                {"type",    "watch-bg-add"         },
                {"bg_type", bgType                 },
                {"bg_list", platform.Trusted(place)}
        })));
        EXPECT_TRUE(platform.Exists(platform.Trusted(place))) << bgType;
        std::filesystem::remove(platform.Trusted(place));
    }
}

TEST_F(ARestore, of_an_image_is_never_pending)
{
    BeginWithTheGalleryFace();
    Give({
        {"type",             "image"              },
        {"file_path",        Restored("x")        },
        {"bg_type",          "watch-bg-gallery-u1"},
        {"watch-bg-pending", "true"               }
    });
    Deliver(kEditor, {
                         {"type",    "watch-bg-cancel"    },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_TRUE(platform.Exists(platform.Trusted("theme/GalleryBackgrounds/U1/x")));
}

TEST_F(ARestore, of_an_image_names_it_after_its_path_whatever_the_items_file_name_is)
{
    BeginWithTheGalleryFace();
    Give({
        {"type",      "image"           },
        {"file_path", Restored("x")     },
        {"file_name", "y"               },
        {"bg_type",   "watch-bg-digital"}
    });
    EXPECT_THAT(platform.Tree(platform.Trusted("theme/Backgrounds")), ElementsAre("x"));
}

TEST_F(ARestore, of_an_image_without_a_path_fails)
{
    BeginWithTheGalleryFace();
    EXPECT_FALSE(GiveImage("", "watch-bg-digital"));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E message = , operation = corvane_cloud_restore",
                                                 "log E file path is empty!!"));
}

TEST_F(ARestore, of_an_image_without_a_type_is_logged_and_takes_it_for_a_theme_image)
{
    BeginWithTheGalleryFace();
    EXPECT_TRUE(GiveImage(Restored("x"), ""));
    EXPECT_THAT(platform.Errors(),
                ElementsAre("message = , operation = corvane_cloud_restore", "bg type string is empty!!"));
    EXPECT_TRUE(platform.Exists(platform.Trusted("theme/Backgrounds/x")));
    EXPECT_THAT(Sent(), ElementsAre(ToWms({
                            {"type",    "watch-bg-add"                         },
                            {"bg_type", ""                                     },
                            {"bg_list", platform.Trusted("theme/Backgrounds/x")}
    })));
}

TEST_F(ARestore, of_an_image_that_cannot_be_copied_tells_the_phone_all_the_same)
{
    BeginWithTheGalleryFace();
    EXPECT_TRUE(GiveImage("/missing/x", "watch-bg-digital"));
    EXPECT_THAT(Sent(), ElementsAre(ToWms({
                            {"type",    "watch-bg-add"                         },
                            {"bg_type", "watch-bg-digital"                     },
                            {"bg_list", platform.Trusted("theme/Backgrounds/x")}
    })));
}

TEST_F(ARestore, of_an_image_out_of_its_folders_changes_nothing_there)
{
    BeginWithTheGalleryFace();
    Restored("x");
    EXPECT_TRUE(GiveImage(platform.Root() + "/restored/x", "watch-bg-gallery-../../.."));
    EXPECT_TRUE(GiveImage(platform.Root() + "/restored/..", "watch-bg-digital"));
    EXPECT_TRUE(GiveImage(platform.Root() + "/restored/", "watch-bg-digital"));
    EXPECT_THAT(platform.Tree(platform.Trusted()), Each(EndsWith("/")));  // folders alone
}
