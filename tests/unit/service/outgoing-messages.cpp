// Messages that leave: replies, notices and the background type that some of them carry.

#include "a-msg-control.h"
#include "handles.h"

using MemoryPlatform::Message;
using MemoryPlatform::NewBundle;
using testing::ElementsAre;
using testing::IsEmpty;
using WatchfaceService::BundlePtr;

// Sending by id

TEST_F(AMsgControl, sends_the_callers_bundle_unchanged_and_leaves_it_to_the_caller)
{
    const BundlePtr message(NewBundle({
        {"type", "t"                              },
        {"list", MemoryPlatform::Strings{"a", "b"}}
    }));
    control.SendMessage(kHome, message.get());
    EXPECT_THAT(Sent(), ElementsAre("com.corvane.w-home w-home::localport "
                                    "{\"list\": [\"a\", \"b\"], \"type\": \"t\"}"));
    EXPECT_EQ(bundle_get_count(message.get()), 2);
}

TEST_F(AMsgControl, logs_that_a_message_has_no_target)
{
    const BundlePtr message(NewBundle({}));
    control.SendMessage("", message.get());
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E remoteAppId empty!!"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, logs_that_a_target_has_no_message)
{
    control.SendMessage(kHome, nullptr);
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E message is nullptr!!"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, looks_at_the_target_before_the_message)
{
    control.SendMessage("", nullptr);
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E remoteAppId empty!!"));
}

TEST_F(AMsgControl, logs_a_missing_message_also_for_a_target_without_a_port)
{
    control.SendMessage(kWorldClockMap, nullptr);
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E message is nullptr!!"));
}

TEST_F(AMsgControl, sends_without_looking_whether_the_peer_is_there_or_the_message_left)
{
    platform.Fail("SendTrustedMessage");
    const BundlePtr message(NewBundle({}));
    control.SendMessage(kHome, message.get());
    EXPECT_THAT(platform.Calls({"port check"}), IsEmpty());
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

// Replies

TEST_F(AMsgControl, replies_with_a_copy_of_the_message_and_the_status)
{
    const BundlePtr message(NewBundle({
        {"type",    "t"                         },
        {"bg_list", MemoryPlatform::Strings{"a"}}
    }));
    control.SendReplyWithIconPath(message.get(), kEditor, "sender-port", true);
    EXPECT_THAT(Sent(), ElementsAre("com.corvane.watchface-editor watch-face-editor::localport "
                                    "{\"bg_list\": [\"a\"], \"status\": \"success\", \"type\": \"t\"}"));
    EXPECT_EQ(MemoryPlatform::ContentOf(message.get()),
              Message({
                  {"type",    "t"                         },
                  {"bg_list", MemoryPlatform::Strings{"a"}}
    }));
}

TEST_F(AMsgControl, replies_fail)
{
    const BundlePtr message(NewBundle({
        {"type", "t"}
    }));
    control.SendReplyWithIconPath(message.get(), kEditor, "", false);
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"type",   "t"   },
                                                 {"status", "fail"}
    }));
}

TEST_F(AMsgControl, replaces_a_status_that_the_message_had)
{
    const BundlePtr message(NewBundle({
        {"status", "success"}
    }));
    control.SendReplyWithIconPath(message.get(), kEditor, "", false);
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"status", "fail"}
    }));
}

TEST_F(AMsgControl, never_echoes_the_xml)
{
    const BundlePtr message(NewBundle({
        {"type",          "t"   },
        {"data/xml_data", "<a/>"}
    }));
    control.SendReplyWithIconPath(message.get(), kEditor, "", true);
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"type",   "t"      },
                                                 {"status", "success"}
    }));
}

TEST_F(AMsgControl, keeps_the_messages_icon_path_in_a_reply_without_one)
{
    const BundlePtr message(NewBundle({
        {"data/icon_path", "/i.png"}
    }));
    control.SendReplyWithIconPath(message.get(), kEditor, "", true, "");
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"data/icon_path", "/i.png" },
                                                 {"status",         "success"}
    }));
}

TEST_F(AMsgControl, replaces_the_messages_icon_path_in_a_reply_with_one)
{
    const BundlePtr message(NewBundle({
        {"data/icon_path", "/i.png"}
    }));
    control.SendReplyWithIconPath(message.get(), kEditor, "", true, "/own.png");
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"data/icon_path", "/own.png"},
                                                 {"status",         "success" }
    }));
}

TEST_F(AMsgControl, adds_the_icon_path_to_a_reply_to_a_message_that_had_none)
{
    const BundlePtr message(NewBundle({}));
    control.SendReplyWithIconPath(message.get(), kEditor, "", true, "/own.png");
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"data/icon_path", "/own.png"},
                                                 {"status",         "success" }
    }));
}

TEST_F(AMsgControl, sends_no_reply_to_nobody)
{
    const BundlePtr message(NewBundle({}));
    control.SendReplyWithIconPath(message.get(), "", "sender-port", true);
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E remoteAppId is empty!!"));
    EXPECT_EQ(platform.Uses("bundle_dup"), 0);
}

TEST_F(AMsgControl, logs_that_a_reply_has_no_message_when_none_can_be_made)
{
    platform.Fail("bundle_dup");
    const BundlePtr message(NewBundle({}));
    control.SendReplyWithIconPath(message.get(), kEditor, "", true, "/own.png");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E message is nullptr!!"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, sends_no_reply_to_a_peer_without_a_port_whatever_port_it_spoke_from)
{
    const BundlePtr message(NewBundle({}));
    control.SendReplyWithIconPath(message.get(), kWorldClockMap, "sender-port", true);
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

// Notices to the manager on the phone

TEST_F(AMsgControl, tells_the_phone_type_and_watch_face)
{
    control.SendMessageToWms("t", "a");
    EXPECT_THAT(Sent(), ElementsAre("com.corvane.w-manager-service w-manager-service::localport "
                                    "{\"pkgid\": \"a\", \"type\": \"t\"}"));
    EXPECT_TRUE(platform.Sent()[0].trusted);
    EXPECT_EQ(platform.Sent()[0].senderPort, "watchface-service::localport");
}

TEST_F(AMsgControl, tells_the_phone_nothing_without_a_type_or_a_watch_face)
{
    control.SendMessageToWms("", "a");
    control.SendMessageToWms("t", "");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType[] or watchName[a] is empty!!",
                                                 "E messageType[t] or watchName[] is empty!!"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, tells_the_phone_a_formatted_date)
{
    control.SendIcuRequestReplyToWms("t", "Monday");
    EXPECT_THAT(Sent(), ElementsAre("com.corvane.w-manager-service w-manager-service::localport "
                                    "{\"formattedstring\": \"Monday\", \"type\": \"t\"}"));
    EXPECT_EQ(platform.Sent()[0].senderPort, "watchface-service::localport");
}

TEST_F(AMsgControl, tells_the_phone_no_date_without_a_type_or_a_text)
{
    control.SendIcuRequestReplyToWms("", "Monday");
    control.SendIcuRequestReplyToWms("t", "");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType[] or formattedString[Monday] is empty!!",
                                                 "E messageType[t] or formattedString[] is empty!!"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, tells_the_phone_an_update_with_the_services_own_preview_path)
{
    control.SendWatchfaceUpdateToWms("t", "a", "A", "<a/>", "/i.png");
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"type",           "t"                             },
                                                 {"pkgid",          "a"                             },
                                                 {"data/label",     "A"                             },
                                                 {"data/xml_data",  "<a/>"                          },
                                                 {"data/icon_path", platform.RW("watchlist/a/a.png")}
    }));
    EXPECT_EQ(platform.Sent()[0].appId, kWms);
    EXPECT_EQ(platform.Sent()[0].port, "w-manager-service::localport");
    EXPECT_EQ(platform.Sent()[0].senderPort, "watchface-service::localport");
}

TEST_F(AMsgControl, tells_the_phone_no_label_where_there_is_none)
{
    control.SendWatchfaceUpdateToWms("t", "a", "", "<a/>", "/i.png");
    EXPECT_EQ(platform.Sent().at(0).message, Message({
                                                 {"type",           "t"                             },
                                                 {"pkgid",          "a"                             },
                                                 {"data/xml_data",  "<a/>"                          },
                                                 {"data/icon_path", platform.RW("watchlist/a/a.png")}
    }));
}

TEST_F(AMsgControl, tells_the_phone_no_preview_path_where_none_was_supplied)
{
    control.SendWatchfaceUpdateToWms("t", "a", "A", "<a/>", "");
    EXPECT_EQ(platform.Sent().at(0).message,
              Message({
                  {"type",          "t"   },
                  {"pkgid",         "a"   },
                  {"data/label",    "A"   },
                  {"data/xml_data", "<a/>"}
    }));
}

TEST_F(AMsgControl, tells_the_phone_no_update_without_type_watch_face_or_xml)
{
    control.SendWatchfaceUpdateToWms("", "a", "A", "<a/>", "");
    control.SendWatchfaceUpdateToWms("t", "", "A", "<a/>", "");
    control.SendWatchfaceUpdateToWms("t", "a", "A", "", "");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E type[], watchName[a] or resultBuffer[<a/>] is empty!!",
                                                 "E type[t], watchName[] or resultBuffer[<a/>] is empty!!",
                                                 "E type[t], watchName[a] or resultBuffer[] is empty!!"));
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
}

TEST_F(AMsgControl, drops_a_notice_for_which_no_bundle_can_be_made_without_a_word)
{
    platform.Fail("bundle_create", {.times = 4});
    control.SendMessageToWms("t", "a");
    control.SendIcuRequestReplyToWms("t", "Monday");
    control.SendWatchfaceUpdateToWms("t", "a", "A", "<a/>", "");
    control.SendMessageToEditor("t", "a");
    EXPECT_EQ(platform.Uses("bundle_create"), 4);
    EXPECT_THAT(platform.Calls({"send", "port check"}), IsEmpty());
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

// Notices to the editors on the watch

TEST_F(AMsgControl, tells_editor_settings_list_and_home_in_this_order_where_they_are_there)
{
    platform.SetPortUp(kHome, "w-home::localport");
    platform.SetPortUp(kSettingList, "clocksetting::localport");
    platform.SetPortUp(kEditor, "watch-face-editor::localport");
    control.SendMessageToEditor("t", "a");
    EXPECT_THAT(platform.Calls({"port check", "send"}),
                ElementsAre("port check com.corvane.watchface-editor watch-face-editor::localport",
                            "send com.corvane.watchface-editor watch-face-editor::localport "
                            "{\"pkgid\": \"a\", \"type\": \"t\"}",
                            "port check com.corvane.watch-utils.setting-list clocksetting::localport",
                            "send com.corvane.watch-utils.setting-list clocksetting::localport "
                            "{\"pkgid\": \"a\", \"type\": \"t\"}",
                            "port check com.corvane.w-home w-home::localport",
                            "send com.corvane.w-home w-home::localport {\"pkgid\": \"a\", \"type\": \"t\"}"));
    EXPECT_EQ(platform.Sent()[0].senderPort, "watchface-service::localport");
}

TEST_F(AMsgControl, tells_home_alone_when_only_home_is_there)
{
    platform.SetPortUp(kHome, "w-home::localport");
    control.SendMessageToEditor("t", "a");
    EXPECT_THAT(Sent(),
                ElementsAre("com.corvane.w-home w-home::localport {\"pkgid\": \"a\", \"type\": \"t\"}"));
}

TEST_F(AMsgControl, skips_an_editor_of_which_it_cannot_be_told_whether_it_is_there)
{
    platform.SetPortUp(kEditor, "watch-face-editor::localport");
    for (const int answer : {-1, 2}) {
        platform.Fail("CheckTrustedRemotePort", {.code = answer});
        control.SendMessageToEditor("t", "a");
        EXPECT_THAT(Sent(), IsEmpty()) << answer;
    }
}

TEST_F(AMsgControl, tells_the_editors_nothing_without_a_type_or_a_watch_face)
{
    control.SendMessageToEditor("", "a");
    control.SendMessageToEditor("t", "");
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("E type[] or watchName[a] is empty!!", "E type[t] or watchName[] is empty!!"));
    EXPECT_THAT(platform.Calls({"port check", "send"}), IsEmpty());
}

// The variant of a background type

TEST_F(AMsgControl, takes_the_variant_of_a_gallery_type_in_upper_case)
{
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-gallery-u1"), "U1");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I bgTypeStr[watch-bg-gallery-u1] prefix[U1]"));
}

TEST_F(AMsgControl, finds_no_variant_in_a_gallery_type_without_one)
{
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-gallery"), "");
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I bgTypeStr[watch-bg-gallery] prefix[]"));
}

TEST_F(AMsgControl, finds_no_variant_in_a_gallery_type_that_ends_with_the_separator)
{
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-gallery-"), "");
}

TEST_F(AMsgControl, finds_a_variant_of_one_character)
{
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-gallery-u"), "U");
}

TEST_F(AMsgControl, finds_no_variant_in_other_types)
{
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-digital"), "");
    EXPECT_EQ(control.GetBgTypePrefix("xwatch-bg-gallery-u1"), "");
    EXPECT_EQ(control.GetBgTypePrefix(""), "");
}

TEST_F(AMsgControl, takes_whatever_stands_before_the_variant_for_its_separator)
{
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-gallery_u1"), "U1");
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-galleryxu1"), "U1");
}

TEST_F(AMsgControl, keeps_further_separators_in_the_variant)
{
    EXPECT_EQ(control.GetBgTypePrefix("watch-bg-gallery-u1-\xC3\xA9"), "U1-\xC3\x89");
}
