// A backup: what the backup agent is sent when it asks for one, and what it is not.

#include "a-backup-conversation.h"

using MemoryPlatform::Strings;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

class ABackup : public ABackupConversation {
protected:
    void StoreFace(const std::string& watchName, const std::string& text)
    {
        platform.WriteFile(platform.RW("watchlist/" + watchName + "/" + watchName + "_result.xml"), text);
    }
    bool BackUp()
    {
        return Say({
            {"operation", "corvane_cloud_backup"}
        });
    }
};

const std::string kEnd = ToAgent({
    {"message", "backup_finished"}
});

}  // namespace

TEST_F(ABackup, of_a_watch_as_it_was_shipped_is_one_message)
{
    platform.WriteFile(platform.RO("watchlist/a/a_result.xml"), "<a/>");
    EXPECT_TRUE(BackUp());
    EXPECT_THAT(Sent(), ElementsAre(kEnd));
    EXPECT_THAT(platform.LogTexts(), Not(Contains(HasSubstr("not editable"))));
}

TEST_F(ABackup, begins_with_a_line_about_the_message)
{
    Say({
        {"operation", "corvane_cloud_backup"},
        {"message",   "now"                 }
    });
    EXPECT_EQ(platform.LogTexts()[0], "E message = now, operation = corvane_cloud_backup");
}

TEST_F(ABackup, holds_every_edited_watch_face_by_the_order_of_its_name_then_every_image_then_the_end)
{
    StoreFace("b", "<b/>");
    StoreFace("B", "<B/>");
    StoreFace("a", "<a/>");
    for (const char* file :
         {"theme/GalleryBackgrounds/U1/y", "theme/GalleryBackgrounds/U1/x", "theme/Backgrounds/z"}) {
        platform.WriteFile(platform.Trusted(file), "stored");
    }
    EXPECT_TRUE(BackUp());
    EXPECT_THAT(Sent(), ElementsAre(ToAgent({
                                        {"type",       "watch"},
                                        {"pkgid",      "B"    },
                                        {"result_xml", "<B/>" }
    }),
                                    ToAgent({{"type", "watch"}, {"pkgid", "a"}, {"result_xml", "<a/>"}}),
                                    ToAgent({{"type", "watch"}, {"pkgid", "b"}, {"result_xml", "<b/>"}}),
                                    ToAgent({{"type", "image"},
                                             {"file_name", "z"},
                                             {"file_path", platform.Trusted("theme/Backgrounds/z")},
                                             {"bg_type", "watch-bg-digital"}}),
                                    ToAgent({{"type", "image"},
                                             {"file_name", "x"},
                                             {"file_path", platform.Trusted("theme/GalleryBackgrounds/U1/x")},
                                             {"bg_type", "watch-bg-gallery-u1"}}),
                                    ToAgent({{"type", "image"},
                                             {"file_name", "y"},
                                             {"file_path", platform.Trusted("theme/GalleryBackgrounds/U1/y")},
                                             {"bg_type", "watch-bg-gallery-u1"}}),
                                    kEnd));
}

TEST_F(ABackup, sends_each_item_before_it_looks_at_the_next)
{
    StoreFace("a", "<a/>");
    StoreFace("b", "<b/>");
    platform.WriteFile(platform.Trusted("theme/Backgrounds/z"), "stored");
    platform.Forget();
    BackUp();
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E message = , operation = corvane_cloud_backup", "ls RW:watchlist/",
                            "exists RW:watchlist/a/a_result.xml", "exists RW:watchlist/b/b_result.xml",
                            "exists RW:watchlist/a/a_result.xml", "read RW:watchlist/a/a_result.xml",
                            HasSubstr("\"pkgid\": \"a\""), "exists RW:watchlist/b/b_result.xml",
                            "read RW:watchlist/b/b_result.xml", HasSubstr("\"pkgid\": \"b\""),
                            "log I bgTypeStr[watch-bg-digital] prefix[]", "ls TRUSTED:theme/Backgrounds/",
                            "is_dir TRUSTED:theme/Backgrounds//z", HasSubstr("\"file_name\": \"z\""),
                            "log I bgTypeStr[watch-bg-gallery-u1] prefix[U1]",
                            "ls TRUSTED:theme/GalleryBackgrounds/U1/", "send " + kEnd));
}

TEST_F(ABackup, is_sent_trusted_from_the_services_port_to_the_agents)
{
    StoreFace("a", "<a/>");
    platform.WriteFile(platform.Trusted("theme/Backgrounds/z"), "stored");
    BackUp();
    ASSERT_THAT(platform.Sent(), SizeIs(3));
    for (const auto& sent : platform.Sent()) {
        EXPECT_EQ(sent.appId, "com.corvane.watch-utils.service");
        EXPECT_EQ(sent.port, "watch-utils-service::localport");
        EXPECT_EQ(sent.senderPort, "watchface-service::localport");
        EXPECT_TRUE(sent.trusted);
    }
}

TEST_F(ABackup, logs_a_watch_face_that_cannot_be_edited_and_holds_nothing_of_it)
{
    platform.WriteFile(platform.RW("watchlist/a/without_result_xml"), "");
    platform.WriteFile(platform.RW("watchlist/a/watchface.xml"), "<a/>");
    BackUp();
    EXPECT_THAT(platform.LogTexts(), Contains("I not editable watchface[a]!!"));
    EXPECT_THAT(Sent(), ElementsAre(kEnd));
}

TEST_F(ABackup, holds_nothing_of_a_folder_that_is_no_watch_face)
{
    platform.WriteFile(platform.RW("watchlist/a/watchface.xml"), "<a/>");
    BackUp();
    EXPECT_THAT(Sent(), ElementsAre(kEnd));
    EXPECT_THAT(platform.LogTexts(), Not(Contains(HasSubstr("not editable"))));
}

TEST_F(ABackup, holds_a_result_xml_byte_for_byte)
{
    const std::string text = "\xEF\xBB\xBF<a>\r\n\t\xFF" + std::string(100'000, 'x') + "\n\n";
    StoreFace("a", text);
    BackUp();
    EXPECT_EQ(platform.Sent()[0].Text("result_xml"), text);
}

TEST_F(ABackup, holds_an_empty_text_of_a_result_xml_that_cannot_be_read)
{
    platform.WriteFile(platform.RW("watchlist/a/a_result.xml/in-a-folder"), "");
    BackUp();
    EXPECT_THAT(Sent(), ElementsAre(ToAgent({
                                        {"type",       "watch"},
                                        {"pkgid",      "a"    },
                                        {"result_xml", ""     }
    }),
                                    kEnd));
}

TEST_F(ABackup, holds_the_images_of_two_folders_alone)
{
    for (const char* file : {"theme/GalleryBackgrounds/plain", "theme/GalleryBackgrounds/U2/x",
                             "theme/GalleryBackgrounds/U1/sub/x", "theme/Backgrounds/sub/x", "theme/x"}) {
        platform.WriteFile(platform.Trusted(file), "stored");
    }
    BackUp();
    EXPECT_THAT(Sent(), ElementsAre(kEnd));
}

TEST_F(ABackup, holds_images_whose_addition_or_deletion_is_pending)
{
    platform.WriteFile(platform.Trusted("theme/GalleryBackgrounds/U1/old"), "stored");
    platform.WriteFile(platform.Root() + "/pictures/new", "picture");
    Deliver(kEditor, {
                         {"type",             "watch-bg-add"                   },
                         {"bg_type",          "watch-bg-gallery-u1"            },
                         {"bg_list",          platform.Root() + "/pictures/new"},
                         {"watch-bg-pending", "true"                           }
    });
    Deliver(kEditor, {
                         {"type",             "watch-bg-del"       },
                         {"bg_type",          "watch-bg-gallery-u1"},
                         {"bg_list",          "old"                },
                         {"watch-bg-pending", "true"               }
    });
    platform.Forget();
    BackUp();
    ASSERT_THAT(platform.Sent(), SizeIs(3));
    EXPECT_EQ(platform.Sent()[0].Text("file_name"), "new");
    EXPECT_EQ(platform.Sent()[1].Text("file_name"), "old");
}

TEST_F(ABackup, goes_on_when_an_item_cannot_be_sent)
{
    StoreFace("a", "<a/>");
    StoreFace("b", "<b/>");
    platform.Fail("SendTrustedMessage");
    EXPECT_TRUE(BackUp());
    EXPECT_THAT(Sent(), ElementsAre(ToAgent({
                                        {"type",       "watch"},
                                        {"pkgid",      "b"    },
                                        {"result_xml", "<b/>" }
    }),
                                    kEnd));
}

TEST_F(ABackup, goes_on_when_an_item_cannot_be_made)
{
    StoreFace("a", "<a/>");
    StoreFace("b", "<b/>");
    platform.Fail("bundle_create");
    EXPECT_TRUE(BackUp());
    EXPECT_THAT(platform.Calls({"send"}), SizeIs(2));
    EXPECT_EQ(Sent()[1], kEnd);
}

TEST_F(ABackup, does_not_look_whether_the_agent_is_there)
{
    BackUp();
    EXPECT_THAT(platform.Calls({"port check"}), IsEmpty());
}

TEST_F(ABackup, changes_nothing_and_tells_nobody_else)
{
    StoreFace("a", "<a/>");
    platform.WriteFile(platform.Trusted("theme/Backgrounds/z"), "stored");
    const Strings before = platform.Tree(platform.Root());
    BackUp();
    EXPECT_EQ(platform.Tree(platform.Root()), before);
    EXPECT_THAT(platform.Calls({"key set", "pref set", "mkpath", "copy", "remove", "recursive_rm", "open"}),
                IsEmpty());
    EXPECT_EQ(platform.Sent().size(), platform.SentTo(kBackupAgent).size());
}

TEST_F(ABackup, that_comes_through_the_port_is_announced_in_the_log_before_it_begins)
{
    Deliver(kBackupAgent, {
                              {"operation", "corvane_cloud_backup"}
    });
    EXPECT_EQ(platform.LogTexts()[0], "E Backup & restore process!!");
    EXPECT_EQ(platform.LogTexts()[1], "E message = , operation = corvane_cloud_backup");
    EXPECT_THAT(Sent(), ElementsAre(kEnd));
}

TEST_F(ABackup, can_be_asked_for_again)
{
    StoreFace("a", "<a/>");
    BackUp();
    const Strings first = Sent();
    platform.Forget();
    BackUp();
    EXPECT_EQ(Sent(), first);
}

TEST_F(ABackup, is_made_for_the_agent_alone)
{
    for (const char* sender : {kEditor, kHome, kWms, "com.example.app"}) {
        Deliver(sender, {
                            {"type",      "watch"               },
                            {"operation", "corvane_cloud_backup"}
        });
    }
    EXPECT_THAT(platform.Sent(), IsEmpty());
}

TEST_F(ABackup, and_restore_alike_need_their_exact_words)
{
    StoreFace("a", "<a/>");
    platform.Forget();
    for (const char* operation : {"", "backup", "Corvane_cloud_backup", "corvane_cloud_backup ",
                                  "corvane_cloud_restore2", "corvane_cloud"}) {
        EXPECT_TRUE(Say({
            {"operation", operation},
            {"type",      "watch"  },
            {"pkgid",     ""       }
        }));
    }
    EXPECT_THAT(platform.Sent(), IsEmpty());
    EXPECT_THAT(platform.LogTexts(), SizeIs(6));
    EXPECT_EQ(platform.LogTexts()[1], "E message = , operation = backup");
}
