// Messages that delete a watch face: what goes, what stays, and who is told.

#include "a-msg-control.h"

using MemoryPlatform::Strings;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kGalleryFace[] = "com.corvane.watchface-mirel-u1";

class ADeletion : public AMsgControl {
protected:
    ADeletion()
    {
        platform.SetPortUp(kEditor, "watch-face-editor::localport");
        platform.SetPortUp(kSettingList, "clocksetting::localport");
        platform.SetPortUp(kHome, "w-home::localport");
        platform.Forget();
    }

    void Install(const std::string& watchName)
    {
        platform.WriteFile(platform.RW("watchlist/" + watchName + "/" + watchName + "_result.xml"), "<a/>");
    }
    void Delete(const std::string& sender, const std::string& watchName)
    {
        Deliver(sender, {
                            {"type",  "watch-setting-deleted"},
                            {"pkgid", watchName              }
        });
    }

    // As they leave, with the keys that every one of them has.
    static std::string Reply(const std::string& address, const std::string& watchName, const char* status)
    {
        return address + " {\"pkgid\": \"" + watchName + "\", \"status\": \"" + status +
               "\", \"type\": \"watch-setting-deleted\"}";
    }
    static std::string Notice(const std::string& address, const std::string& watchName)
    {
        return address + " {\"pkgid\": \"" + watchName + "\", \"type\": \"watch-setting-deleted\"}";
    }

    const std::string toEditor = "com.corvane.watchface-editor watch-face-editor::localport";
    const std::string toSettingList = "com.corvane.watch-utils.setting-list clocksetting::localport";
    const std::string toHome = "com.corvane.w-home w-home::localport";
    const std::string toWms = "com.corvane.w-manager-service w-manager-service::localport";
};

}  // namespace

TEST_F(ADeletion, removes_the_whole_read_write_folder_and_nothing_else)
{
    Install("a");
    platform.WriteFile(platform.RW("watchlist/a/sub/file"), "x");
    Install("b");
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    Delete(kWms, "a");
    EXPECT_THAT(platform.Tree(platform.RW("watchlist")), ElementsAre("b/", "b/b_result.xml"));
    EXPECT_TRUE(platform.Exists(platform.RO("watchlist/a/a_result.xml")));
}

TEST_F(ADeletion, of_the_phones_is_done_answered_and_told_to_editor_settings_list_and_home_in_this_order)
{
    Install("a");
    Delete(kWms, "a");
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-setting-deleted], watch_name = [a]",
                            "recursive_rm RW:watchlist/a/", "send " + Reply(toWms, "a", "success"),
                            "port check " + toEditor, "send " + Notice(toEditor, "a"),
                            "port check " + toSettingList, "send " + Notice(toSettingList, "a"),
                            "port check " + toHome, "send " + Notice(toHome, "a")));
}

TEST_F(ADeletion, of_a_local_editor_is_done_answered_and_told_to_the_phone_alone)
{
    for (const auto& [sender, address] :
         {std::pair(kSettingList, toSettingList), std::pair(kHome, toHome), std::pair(kEditor, toEditor)}) {
        Install("a");
        platform.Forget();
        Delete(sender, "a");
        EXPECT_THAT(platform.Timeline(),
                    ElementsAre("log E messageType = [watch-setting-deleted], watch_name = [a]",
                                "recursive_rm RW:watchlist/a/", "send " + Reply(address, "a", "success"),
                                "send " + Notice(toWms, "a")));
    }
}

TEST_F(ADeletion, of_a_peer_that_cannot_be_answered_is_told_to_the_editors)
{
    for (const char* sender : {kViewer, kWorldClockMap, kWorldClockCityDetail, kCapture}) {
        Install("a");
        platform.Forget();
        Delete(sender, "a");
        EXPECT_FALSE(platform.Exists(platform.RW("watchlist/a"))) << sender;
        EXPECT_THAT(Sent(),
                    ElementsAre(Notice(toEditor, "a"), Notice(toSettingList, "a"), Notice(toHome, "a")))
            << sender;
    }
}

TEST_F(ADeletion, is_told_to_those_editors_that_are_there)
{
    platform.SetPortUp(kEditor, "watch-face-editor::localport", false);
    platform.SetPortUp(kHome, "w-home::localport", false);
    Install("a");
    Delete(kWms, "a");
    EXPECT_THAT(Sent(), ElementsAre(Reply(toWms, "a", "success"), Notice(toSettingList, "a")));
}

TEST_F(ADeletion, is_answered_with_all_that_it_carried_but_the_xml)
{
    Install("a");
    Deliver(kWms, {
                      {"type",           "watch-setting-deleted"},
                      {"pkgid",          "a"                    },
                      {"data/xml_data",  "<a/>"                 },
                      {"data/icon_path", "/i.png"               },
                      {"status",         "earlier"              },
                      {"list",           Strings{"x", ""}       }
    });
    EXPECT_EQ(Sent()[0], toWms +
                             " {\"data/icon_path\": \"/i.png\", \"list\": [\"x\", \"\"], \"pkgid\": "
                             "\"a\", \"status\": \"success\", \"type\": \"watch-setting-deleted\"}");
    EXPECT_EQ(Sent()[1], Notice(toEditor, "a"));
}

TEST_F(ADeletion, that_fails_is_logged_answered_and_told_to_the_editors_whoever_asked)
{
    for (const auto& [sender, address] : {std::pair(kSettingList, toSettingList), std::pair(kHome, toHome),
                                          std::pair(kEditor, toEditor), std::pair(kWms, toWms)}) {
        platform.Forget();
        Delete(sender, "missing");
        EXPECT_THAT(
            platform.Timeline(),
            ElementsAre("log E messageType = [watch-setting-deleted], watch_name = [missing]",
                        "recursive_rm RW:watchlist/missing/", "log I ecore_file_recursive_rm failed!!",
                        "send " + Reply(address, "missing", "fail"), "port check " + toEditor,
                        "send " + Notice(toEditor, "missing"), "port check " + toSettingList,
                        "send " + Notice(toSettingList, "missing"), "port check " + toHome,
                        "send " + Notice(toHome, "missing")));
    }
}

TEST_F(ADeletion, of_a_peer_that_cannot_be_answered_is_told_to_the_editors_also_when_it_fails)
{
    Delete(kViewer, "missing");
    EXPECT_THAT(Sent(), ElementsAre(Notice(toEditor, "missing"), Notice(toSettingList, "missing"),
                                    Notice(toHome, "missing")));
}

TEST_F(ADeletion, of_what_is_in_the_read_only_area_alone_fails)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    Delete(kHome, "a");
    EXPECT_TRUE(platform.Exists(platform.RO("watchlist/a/a_result.xml")));
    EXPECT_EQ(Sent()[0], Reply(toHome, "a", "fail"));
}

TEST_F(ADeletion, without_a_name_tries_no_removal_and_is_told_to_nobody)
{
    Install("a");
    for (const MemoryPlatform::Message& message : {
             MemoryPlatform::Message{{"type", "watch-setting-deleted"}},
             MemoryPlatform::Message{ {"type", "watch-setting-deleted"},                    {"pkgid", ""}}
    }) {
        platform.Forget();
        Deliver(kWms, message);
        MemoryPlatform::Message reply = message;
        reply["status"] = "fail";
        EXPECT_THAT(platform.Timeline(),
                    ElementsAre("log E messageType = [watch-setting-deleted], watch_name = []",
                                "log I ecore_file_recursive_rm failed!!",
                                "send " + toWms + " " + MemoryPlatform::ToText(reply),
                                "log E type[watch-setting-deleted] or watchName[] is empty!!"));
    }
    EXPECT_THAT(platform.Tree(platform.RW("watchlist")), ElementsAre("a/", "a/a_result.xml"));
}

TEST_F(ADeletion, of_a_name_that_leads_out_of_a_watch_faces_folder_removes_nothing)
{
    Install("a");
    platform.WriteFile(platform.RW("note"), "kept");
    for (const char* name : {"/", ".", "..", "./", "//a", "a/..", "../watchlist", "a/../a"}) {
        platform.Forget();
        Delete(kWms, name);
        EXPECT_EQ(platform.SentTo(kWms)[0].Text("status"), "fail") << name;
        EXPECT_EQ(platform.SentTo(kHome)[0].Text("pkgid"), name);
        EXPECT_THAT(platform.Tree(platform.RW()),
                    ElementsAre("note", "watchlist/", "watchlist/a/", "watchlist/a/a_result.xml"))
            << name;
    }
}

// Gallery images

TEST_F(ADeletion, of_the_gallery_face_takes_the_gallery_images_of_its_variant_with_it)
{
    Install(kGalleryFace);
    for (const char* file : {"theme/Backgrounds/t", "theme/GalleryBackgrounds/g",
                             "theme/GalleryBackgrounds/U1/a", "theme/GalleryBackgrounds/U1/b",
                             "theme/GalleryBackgrounds/U1/sub/c", "theme/GalleryBackgrounds/U2/d"}) {
        platform.WriteFile(platform.Trusted(file), "stored");
    }
    Delete(kHome, kGalleryFace);
    EXPECT_THAT(platform.Tree(platform.Trusted("theme")),
                ElementsAre("Backgrounds/", "Backgrounds/t", "GalleryBackgrounds/", "GalleryBackgrounds/U1/",
                            "GalleryBackgrounds/U1/sub/", "GalleryBackgrounds/U1/sub/c",
                            "GalleryBackgrounds/U2/", "GalleryBackgrounds/U2/d", "GalleryBackgrounds/g"));
    EXPECT_THAT(Sent(), ElementsAre(Reply(toHome, kGalleryFace, "success"), Notice(toWms, kGalleryFace)));
}

TEST_F(ADeletion, of_the_gallery_face_takes_its_images_last)
{
    Install(kGalleryFace);
    platform.WriteFile(platform.Trusted("theme/GalleryBackgrounds/U1/a"), "stored");
    Delete(kHome, kGalleryFace);
    EXPECT_THAT(platform.Calls({"recursive_rm", "send", "ls", "remove"}),
                ElementsAre("recursive_rm RW:watchlist/com.corvane.watchface-mirel-u1/",
                            "send " + Reply(toHome, kGalleryFace, "success"),
                            "send " + Notice(toWms, kGalleryFace), "ls TRUSTED:theme/GalleryBackgrounds/U1/",
                            "remove TRUSTED:theme/GalleryBackgrounds/U1//a"));
}

TEST_F(ADeletion, of_the_gallery_face_takes_its_images_also_when_there_was_no_folder)
{
    platform.WriteFile(platform.Trusted("theme/GalleryBackgrounds/U1/a"), "stored");
    Delete(kHome, kGalleryFace);
    EXPECT_THAT(platform.Tree(platform.Trusted("theme/GalleryBackgrounds/U1")), IsEmpty());
    EXPECT_EQ(Sent()[0], Reply(toHome, kGalleryFace, "fail"));
}

TEST_F(ADeletion, of_any_other_face_leaves_the_images_alone)
{
    platform.WriteFile(platform.Trusted("theme/GalleryBackgrounds/g"), "stored");
    platform.WriteFile(platform.Trusted("theme/GalleryBackgrounds/U1/a"), "stored");
    const std::string gallery = kGalleryFace;
    for (const std::string& name : {std::string("a"), std::string("com.corvane.watchface-mirel-u2"),
                                    gallery + "1", gallery + "/", std::string("")}) {
        Install("a");
        platform.Forget();
        Delete(kHome, name);
        EXPECT_THAT(platform.Calls({"ls"}), IsEmpty()) << name;
    }
}

TEST_F(ADeletion, of_the_gallery_face_leaves_what_is_pending_pending)
{
    platform.WriteFile(platform.Root() + "/pictures/a", "picture");
    Deliver(kEditor, {
                         {"type",             "watch-bg-add"                 },
                         {"bg_type",          "watch-bg-gallery-u1"          },
                         {"bg_list",          platform.Root() + "/pictures/a"},
                         {"watch-bg-pending", "true"                         }
    });
    Delete(kHome, kGalleryFace);
    platform.Forget();
    Deliver(kEditor, {
                         {"type",    "watch-bg-cancel"    },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(platform.Errors(), Contains("bg image is not exist!!"));
}
