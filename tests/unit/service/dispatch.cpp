// Messages that arrive: checks, the change of the current watch face, finished captures.

#include "a-msg-control.h"
#include "png-writer.h"

using MemoryPlatform::StoreValue;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

// Checks

TEST_F(AMsgControl, only_logs_that_there_is_no_message)
{
    ASSERT_TRUE(platform.DeliverNothing("watchface-service::localport", kHome));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E message is nullptr"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, logs_that_there_is_no_message_also_from_the_backup_agent)
{
    platform.DeliverNothing("watchface-service::localport", kBackupAgent);
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E message is nullptr"));
}

TEST_F(AMsgControl, hands_over_the_backup_agents_messages_even_without_a_type)
{
    Deliver(kBackupAgent, {
                              {"message", "restore_start"}
    });
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("E Backup & restore process!!", "E message = restore_start, operation = "));
}

TEST_F(AMsgControl, never_dispatches_the_backup_agents_messages_by_type)
{
    Deliver(kBackupAgent, {
                              {"type",  "watch-idle-changed"},
                              {"pkgid", "a"                 }
    });
    EXPECT_EQ(platform.Errors()[0], "Backup & restore process!!");
    EXPECT_THAT(platform.Errors(), Not(Contains(StartsWith("messageType"))));
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
}

TEST_F(AMsgControl, replies_fail_to_a_message_without_a_type)
{
    Deliver(kHome, {
                       {"pkgid", "a"}
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType is empty"));
    EXPECT_THAT(Sent(), ElementsAre("com.corvane.w-home w-home::localport "
                                    "{\"pkgid\": \"a\", \"status\": \"fail\"}"));
}

TEST_F(AMsgControl, takes_an_empty_type_and_an_array_for_no_type)
{
    Deliver(kHome, {
                       {"type", ""}
    });
    Deliver(kHome, {
                       {"type", MemoryPlatform::Strings{"watch-idle-changed"}}
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType is empty", "E messageType is empty"));
    EXPECT_THAT(Sent(), SizeIs(2));
}

TEST_F(AMsgControl, tries_to_reply_to_an_unknown_sender_without_a_type_before_it_looks_at_the_sender)
{
    Deliver("com.example.app", {
                                   {"pkgid", "a"}
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType is empty"));
    EXPECT_EQ(platform.Uses("bundle_dup"), 1);
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, logs_that_it_cannot_reply_to_nobody)
{
    Deliver("", {
                    {"pkgid", "a"}
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType is empty", "E remoteAppId is empty!!"));
}

TEST_F(AMsgControl, ignores_an_unknown_type)
{
    Deliver(kHome, {
                       {"type",  "watch-idle-changed2"},
                       {"pkgid", "a"                  }
    });
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("port open watchface-service::localport trusted", "path trusted com.corvane.watchface",
                    "log E messageType = [watch-idle-changed2], watch_name = [a]"));
}

TEST_F(AMsgControl, accepts_and_ignores_the_reserved_type)
{
    Deliver(kHome, {
                       {"type", "watch-req-watchlists"}
    });
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("port open watchface-service::localport trusted", "path trusted com.corvane.watchface",
                    "log E messageType = [watch-req-watchlists], watch_name = []"));
}

TEST_F(AMsgControl, accepts_messages_of_a_peer_that_it_cannot_answer)
{
    Deliver(kWorldClockMap,
            {
                {"type",          "watch-setting-updated"},
                {"pkgid",         "a"                    },
                {"data/xml_data", "<a/>"                 }
    });
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<a/>");
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(AMsgControl, handles_the_next_message_after_a_failure)
{
    Deliver(kHome, {
                       {"type",  "watch-setting-updated"},
                       {"pkgid", "a"                    }
    });
    Deliver(kHome, {
                       {"type",          "watch-setting-updated"},
                       {"pkgid",         "a"                    },
                       {"data/xml_data", "<a/>"                 }
    });
    EXPECT_EQ(platform.ReadFile(platform.RW("watchlist/a/a_result.xml")), "<a/>");
}

// A change of the current watch face

TEST_F(AMsgControl, remembers_who_changed_the_current_watch_face_and_changes_it_before_it_tells_the_phone)
{
    Deliver(kEditor, {
                         {"type",  "watch-idle-changed"},
                         {"pkgid", "a"                 }
    });
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("port open watchface-service::localport trusted", "path trusted com.corvane.watchface",
                    "log E messageType = [watch-idle-changed], watch_name = [a]",
                    "pref set wfs-pref-idle-change-request-from=com.corvane.watchface-editor",
                    "log E set watchface to [a]", "key set db/wms/clocks_set_idle=com.corvane.watchface",
                    "key set file/private/com.corvane.watchface/watchface_name=a",
                    "log E idle clock set done!!",
                    "send com.corvane.w-manager-service w-manager-service::localport "
                    "{\"pkgid\": \"a\", \"type\": \"watch-idle-changed\"}"));
}

TEST_F(AMsgControl, changes_the_current_watch_face_for_the_phone_without_an_echo)
{
    Deliver(kWms, {
                      {"type",  "watch-idle-changed"},
                      {"pkgid", "a"                 }
    });
    EXPECT_EQ(platform.Key("file/private/com.corvane.watchface/watchface_name"), StoreValue("a"));
    EXPECT_EQ(platform.Pref("wfs-pref-idle-change-request-from"), StoreValue(kWms));
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(AMsgControl, changes_to_an_empty_name_as_it_is_but_tells_nobody)
{
    Deliver(kHome, {
                       {"type", "watch-idle-changed"}
    });
    EXPECT_EQ(platform.Key("file/private/com.corvane.watchface/watchface_name"), StoreValue(""));
    EXPECT_THAT(platform.Errors(), Contains("messageType[watch-idle-changed] or watchName[] is empty!!"));
    EXPECT_THAT(Sent(), IsEmpty());
}

// A finished capture

TEST_F(AMsgControl, passes_on_that_a_capture_is_finished_and_does_not_reply)
{
    platform.SetPortUp(kCapture, kCapturePort);
    int calls = 0;
    manager->SetPreviewDoneCallback([&] { ++calls; });
    manager->RequestPreviewCapture("a");
    platform.Forget();

    Deliver(kCapture, {
                          {"type",  "watch-capture-finished"},
                          {"pkgid", "a"                     }
    });
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(AMsgControl, counts_a_finished_capture_before_it_queues_the_preview_for_its_check)
{
    platform.SetPortUp(kCapture, kCapturePort);
    platform.WriteFile(platform.RW("watchlist/a/a.png"), "no picture");
    manager->RequestPreviewCapture("a");
    platform.Forget();
    Deliver(kCapture, {
                          {"type",  "watch-capture-finished"},
                          {"pkgid", "a"                     }
    });
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-capture-finished], watch_name = [a]",
                            "log E update preview done!!", "timer stop", "log I watchface[a]",
                            "exists RW:watchlist/a/a.png", "idler start"));
}

TEST_F(AMsgControl, only_logs_that_a_finished_capture_left_no_preview)
{
    Deliver(kCapture, {
                          {"type",  "watch-capture-finished"},
                          {"pkgid", "a"                     }
    });
    platform.RunUntilIdle();
    EXPECT_EQ(platform.Errors().back(), "preview for watchface[a] not found!!");
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(AMsgControl, has_a_blank_preview_drawn_again_three_times_in_a_row)
{
    platform.SetPortUp(kCapture, kCapturePort);
    platform.WriteFile(platform.RW("watchlist/a/a.png"),
                       TestSupport::Png(360, 360, TestSupport::kTransparent));
    for (int i = 0; i < 4; ++i) {
        Deliver(kCapture, {
                              {"type",  "watch-capture-finished"},
                              {"pkgid", "a"                     }
        });
        platform.RunUntilIdle();
    }
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(3));
    EXPECT_EQ(platform.Errors().back(), "invalid preview generated more than 3 times!! ignored!!");
}

TEST_F(AMsgControl, takes_a_finished_capture_from_every_allowed_sender)
{
    platform.SetPortUp(kCapture, kCapturePort);
    manager->RequestPreviewCapture("a");
    platform.Forget();
    Deliver(kHome, {
                       {"type",  "watch-capture-finished"},
                       {"pkgid", "a"                     }
    });
    EXPECT_THAT(platform.Errors(), Contains("update preview done!!"));
    EXPECT_THAT(Sent(), IsEmpty());
}
