// A restore: what becomes of the watch faces that the backup agent sends back, one by one.

#include <chrono>

#include "a-backup-conversation.h"

using MemoryPlatform::Message;
using MemoryPlatform::StoreValue;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// The steps of the conversation

TEST_F(ARestore, is_acknowledged_at_its_end_with_one_word)
{
    EXPECT_TRUE(Say({
        {"message", "restore_finished"},
        {"extra",   "not sent back"   }
    }));
    EXPECT_THAT(Sent(), ElementsAre(ToAgent({
                            {"message", "restore_finished"}
    })));
    EXPECT_TRUE(platform.Sent()[0].trusted);
    EXPECT_EQ(platform.Sent()[0].senderPort, "watchface-service::localport");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E message = restore_finished, operation = "));
}

TEST_F(ARestore, is_not_acknowledged_at_its_start)
{
    EXPECT_TRUE(Say({
        {"message", "restore_start"}
    }));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E message = restore_start, operation = "));
}

TEST_F(ARestore, goes_on_when_the_acknowledgement_cannot_be_made)
{
    platform.Fail("bundle_create");
    EXPECT_TRUE(Say({
        {"message", "restore_finished"}
    }));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(ARestore, takes_any_other_step_for_none)
{
    for (const char* step : {"", "restore", "restore_start2", "backup_finished", "Restore_finished"}) {
        EXPECT_TRUE(Say({
            {"message", step}
        }));
    }
    EXPECT_THAT(platform.Sent(), IsEmpty());
}

TEST_F(ARestore, works_on_the_item_that_a_step_carries)
{
    EXPECT_TRUE(Give({
        {"message",    "restore_finished"},
        {"type",       "watch"           },
        {"pkgid",      kFace             },
        {"result_xml", "<a/>"            }
    }));
    EXPECT_EQ(Sent()[0], ToAgent({
                             {"message", "restore_finished"}
    }));
    EXPECT_TRUE(platform.Exists(platform.RW("watchlist/com.corvane.watchface-mirel-c1/watchface.xml")));
}

TEST_F(ARestore, begins_anew_before_the_item_that_its_start_carries)
{
    Store("Backgrounds/old");
    GiveFace(kGalleryFace);
    EXPECT_TRUE(Give({
        {"message",   "restore_start"   },
        {"type",      "image"           },
        {"file_path", Restored("x")     },
        {"bg_type",   "watch-bg-digital"}
    }));
    EXPECT_THAT(platform.Tree(platform.Trusted("theme")), ElementsAre("Backgrounds/", "Backgrounds/old"));
}

TEST_F(ARestore, and_a_backup_know_each_others_messages_apart)
{
    Say({
        {"operation", "corvane_cloud_backup"},
        {"message",   "restore_finished"    }
    });
    EXPECT_THAT(Sent(), ElementsAre(ToAgent({
                                        {"message", "restore_finished"}
    }),
                                    ToAgent({{"message", "backup_finished"}})));
}

TEST_F(ARestore, ignores_an_item_of_another_kind)
{
    for (const char* kind : {"", "Watch", "watch2", "image2", "watch-setting-updated", "watch-bg-add"}) {
        platform.Forget();
        EXPECT_TRUE(Give({
            {"type", kind}
        }))
            << kind;
        EXPECT_THAT(platform.Timeline(), ElementsAre("log E message = , operation = corvane_cloud_restore"));
    }
}

TEST_F(ARestore, never_answers_the_agent_on_an_item)
{
    GiveFace(kGalleryFace);
    GiveImage(Restored("x"), "watch-bg-digital");
    GiveCurrent(kFace);
    GiveFace("");
    EXPECT_THAT(platform.SentTo(kBackupAgent), IsEmpty());
}

TEST_F(ARestore, comes_through_the_agents_messages_alone)
{
    Deliver(kBackupAgent, {
                              {"operation",  "corvane_cloud_restore"},
                              {"type",       "watch"                },
                              {"pkgid",      "a"                    },
                              {"result_xml", "<b/>"                 }
    });
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<b/>");
    platform.Forget();
    Deliver(kEditor, {
                         {"operation",  "corvane_cloud_restore"},
                         {"type",       "watch"                },
                         {"pkgid",      "a"                    },
                         {"result_xml", "<c/>"                 }
    });
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<b/>");
}

// Watch faces

TEST_F(ARestore, of_a_watch_face_writes_it_has_it_drawn_and_tells_editor_and_phone_in_this_order)
{
    EXPECT_TRUE(GiveFace(kFace, "<b/>"));
    const std::string folder = std::string("RW:watchlist/") + kFace + "/";
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("log E message = , operation = corvane_cloud_restore",
                    std::string("exists RO:watchlist/") + kFace + "/", "mkpath " + folder,
                    "data_util_resultxml_memory_converter <b/>", "open " + folder + kFace + "_result.xml",
                    "close " + folder + kFace + "_result.xml", "lock " + folder + "watchface.xml 3",
                    "open " + folder + "watchface.xml", "close " + folder + "watchface.xml",
                    "unlock " + folder + "watchface.xml",
                    std::string("log E [Message Handle] watchface.xml(") + kFace + ") generation is success!",
                    "port check com.corvane.watchface-capture watchface-capture::localport",
                    "log E port is already exist",
                    std::string("send com.corvane.watchface-capture watchface-capture::localport ") +
                        "{\"pkgName\": \"" + kFace + "\"}",
                    "timer stop", "timer start 0.5", "log I mCaptureProcessingWatchfaces[1]",
                    "send " + ToEditor({
                                  {"type",  "watch-setting-updated"},
                                  {"pkgid", kFace                  }
    }),
                    "send " + ToWms({{"type", "watch-setting-updated"},
                                     {"pkgid", kFace},
                                     {"data/label", "STR_WATCHFACE_MIREL_C1"},
                                     {"data/xml_data", "<b/>"}})));
    EXPECT_EQ(platform.ReadFile(platform.RW(std::string("watchlist/") + kFace + "/" + kFace + "_result.xml")),
              "<b/>");
}

TEST_F(ARestore, of_a_watch_face_goes_out_trusted_from_the_services_port)
{
    GiveFace(kFace);
    for (const char* peer : {kEditor, kWms}) {
        ASSERT_THAT(platform.SentTo(peer), SizeIs(1)) << peer;
        EXPECT_TRUE(platform.SentTo(peer)[0].trusted);
        EXPECT_EQ(platform.SentTo(peer)[0].senderPort, "watchface-service::localport");
    }
}

TEST_F(ARestore, of_a_watch_face_without_a_label_tells_the_phone_none)
{
    GiveFace("a");
    EXPECT_EQ(Sent().back(),
              ToWms({
                  {"type",          "watch-setting-updated"},
                  {"pkgid",         "a"                    },
                  {"data/xml_data", "<a/>"                 }
    }));
}

TEST_F(ARestore, of_a_watch_face_leaves_the_current_one_and_its_keys_alone)
{
    platform.SetKey("db/wms/clocks_set_idle", kViewer);
    platform.SetKey("file/private/com.corvane.watchface/watchface_name", "a");
    platform.Forget();
    GiveFace("a");
    EXPECT_THAT(platform.Calls({"key", "pref"}), IsEmpty());
}

TEST_F(ARestore, of_a_watch_face_takes_no_label_and_no_preview_from_the_item)
{
    Give({
        {"type",           "watch"     },
        {"pkgid",          "a"         },
        {"result_xml",     "<a/>"      },
        {"data/label",     "mine"      },
        {"data/icon_path", "/mine.png" },
        {"data/xml_data",  "<not-this>"}
    });
    EXPECT_EQ(Sent().back(),
              ToWms({
                  {"type",          "watch-setting-updated"},
                  {"pkgid",         "a"                    },
                  {"data/xml_data", "<a/>"                 }
    }));
    EXPECT_THAT(platform.Calls({"copy"}), IsEmpty());
}

TEST_F(ARestore, of_an_older_familys_watch_face_makes_it_the_one_that_took_its_place)
{
    EXPECT_TRUE(
        GiveFace("com.corvane.watchface-kelp-u3",
                 "<face id=\"com.corvane.watchface-kelp-u3\">com.corvane.watchface-kelp-u3com.corvane."
                 "watchface-kelp-u3 com.corvane.watchface-kelp-u6</face>"));
    const std::string text =
        "<face id=\"com.corvane.watchface-mirel-u3\">com.corvane.watchface-mirel-u3com.corvane."
        "watchface-mirel-u3 com.corvane.watchface-kelp-u6</face>";
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/com.corvane.watchface-mirel-u3/"
                                            "com.corvane.watchface-mirel-u3_result.xml")),
              text);
    EXPECT_THAT(platform.Errors(),
                Contains("replace [com.corvane.watchface-kelp-u3] with [com.corvane.watchface-mirel-u3]"));
    EXPECT_EQ(Sent().back(), ToWms({
                                 {"type",          "watch-setting-updated"         },
                                 {"pkgid",         "com.corvane.watchface-mirel-u3"},
                                 {"data/label",    "STR_WATCHFACE_MIREL_U3"        },
                                 {"data/xml_data", text                            }
    }));
    EXPECT_EQ(platform.SentTo(kEditor)[0].Text("pkgid"), "com.corvane.watchface-mirel-u3");
    EXPECT_EQ(platform.SentTo(kCapture)[0].Text("pkgName"), "com.corvane.watchface-mirel-u3");
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist/com.corvane.watchface-kelp-u3")));
}

TEST_F(ARestore, rewrites_every_older_name_in_a_text_and_nothing_else)
{
    const std::string from = "com.corvane.watchface-kelp-u1";
    const std::string to = kGalleryFace;
    const std::pair<std::string, std::string> rows[] = {
        {from,           to            },
        {from + from,    to + to       },
        {"x" + from,     "x" + to      },
        {from + "x",     to + "x"      },
        {"no name",      "no name"     },
        {from.substr(1), from.substr(1)},
        {from.substr(0,  20) + from,     from.substr(0, 20) + to},
        {from + " " + to,      to + " " + to                   },
    };
    for (const auto& [text, rewritten] : rows) {
        GiveFace(from, text);
        EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/" + to + "/" + to + "_result.xml")), rewritten);
    }
}

TEST_F(ARestore, leaves_a_text_as_it_is_when_the_name_stays_the_same)
{
    const std::string text = std::string("<a id=\"") + kFace + "\">\r\n" + kFace + "\xFF</a>";
    GiveFace(kFace, text);
    EXPECT_EQ(platform.ReadFile(platform.RW(std::string("watchlist/") + kFace + "/" + kFace + "_result.xml")),
              text);
}

TEST_F(ARestore, rewrites_a_long_text_with_many_names_in_a_moment)
{
    std::string text;
    for (int i = 0; i < 100'000; ++i) text += "com.corvane.watchface-kelp-u3";
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(GiveFace("com.corvane.watchface-kelp-u3", text));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    const auto written =
        platform.ReadFile(platform.RW("watchlist/com.corvane.watchface-mirel-u3/"
                                      "com.corvane.watchface-mirel-u3_result.xml"));
    ASSERT_TRUE(written);
    EXPECT_EQ(written->size(), 100'000 * std::string("com.corvane.watchface-mirel-u3").size());
}

TEST_F(ARestore, of_a_watch_face_without_a_name_fails)
{
    EXPECT_FALSE(GiveFace(""));
    EXPECT_FALSE(Give({
        {"type",       "watch"},
        {"result_xml", "<a/>" }
    }));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E message = , operation = corvane_cloud_restore", "log E pkgid is empty!!",
                            "log E message = , operation = corvane_cloud_restore", "log E pkgid is empty!!"));
}

TEST_F(ARestore, of_a_watch_face_that_this_watch_does_not_have_fails_without_a_line)
{
    platform.WriteFile(platform.RW("watchlist/mine/mine_result.xml"), "<mine/>");
    EXPECT_FALSE(GiveFace("mine"));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E message = , operation = corvane_cloud_restore",
                                                 "exists RO:watchlist/mine/"));
    EXPECT_FALSE(GiveFace("com.corvane.watchface-kelp-u6"));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/mine/mine_result.xml")), "<mine/>");
    EXPECT_THAT(platform.Sent(), IsEmpty());
}

TEST_F(ARestore, of_a_watch_face_without_a_text_fails)
{
    EXPECT_FALSE(GiveFace("a", ""));
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E message = , operation = corvane_cloud_restore",
                                                 "exists RO:watchlist/a/", "log E data/xml_data is empty!!"));
}

TEST_F(ARestore, of_a_watch_face_that_is_refused_fails_and_tells_nobody)
{
    platform.Data().convert = [](const std::string&) { return std::nullopt; };
    EXPECT_FALSE(GiveFace("com.corvane.watchface-kelp-u3"));
    EXPECT_EQ(platform.LogTexts().back(),
              "E [Message Handle] watchface.xml(com.corvane.watchface-mirel-u3) generation is failed!");
    EXPECT_THAT(platform.Sent(), IsEmpty());
    EXPECT_THAT(platform.Calls({"port check", "timer"}), IsEmpty());
}

TEST_F(ARestore, of_several_watch_faces_keeps_those_that_came_before_one_that_fails)
{
    EXPECT_TRUE(GiveFace("a", "<b/>"));
    EXPECT_FALSE(GiveFace(kFace, ""));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<b/>");
    EXPECT_TRUE(GiveFace("a", "<c/>"));
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<c/>");
}

// The current watch face

TEST_F(ARestore, of_the_current_face_remembers_who_asked_sets_it_and_tells_the_phone)
{
    EXPECT_TRUE(GiveCurrent(kFace));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E message = , operation = corvane_cloud_restore",
                            std::string("exists RO:watchlist/") + kFace + "/",
                            "pref set wfs-pref-idle-change-request-from=com.corvane.watch-utils.service",
                            std::string("log E set watchface to [") + kFace + "]",
                            "key set db/wms/clocks_set_idle=com.corvane.watchface",
                            std::string("key set file/private/com.corvane.watchface/watchface_name=") + kFace,
                            "log E idle clock set done!!",
                            "send " + ToWms({
                                          {"type",  "watch-idle-changed"},
                                          {"pkgid", kFace               }
    })));
}

TEST_F(ARestore, of_the_current_face_takes_the_place_of_another_application_as_clock)
{
    platform.SetKey("db/wms/clocks_set_idle", "com.example.clock");
    EXPECT_TRUE(GiveCurrent("com.corvane.watchface-kelp-u3"));
    EXPECT_EQ(platform.Key("db/wms/clocks_set_idle"), StoreValue("com.corvane.watchface"));
    EXPECT_EQ(platform.Key("file/private/com.corvane.watchface/watchface_name"),
              StoreValue("com.corvane.watchface-mirel-u3"));
    EXPECT_EQ(platform.SentTo(kWms).at(0).Text("pkgid"), "com.corvane.watchface-mirel-u3");
}

TEST_F(ARestore, of_the_current_face_without_a_name_fails)
{
    EXPECT_FALSE(GiveCurrent(""));
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E message = , operation = corvane_cloud_restore", "log E pkgid is empty!!"));
}

TEST_F(ARestore, of_the_current_face_that_this_watch_does_not_have_fails_and_changes_nothing)
{
    EXPECT_FALSE(GiveCurrent("missing"));
    EXPECT_THAT(platform.Calls({"pref", "key", "send"}), IsEmpty());
    EXPECT_THAT(platform.Errors(), SizeIs(1));
}
