// Messages that install or update a watch face.

#include "a-msg-control.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class AnInstallOrUpdate : public AMsgControl, public testing::WithParamInterface<std::string> {
protected:
    AnInstallOrUpdate() { platform.SetPortUp(kCapture, kCapturePort); }

    // The status that the sender got.
    MemoryPlatform::Strings StatusesTo(const std::string& appId) const
    {
        MemoryPlatform::Strings statuses;
        for (const auto& sent : platform.SentTo(appId)) {
            if (sent.message.contains("status")) statuses.push_back(sent.Text("status"));
        }
        return statuses;
    }
};

INSTANTIATE_TEST_SUITE_P(types, AnInstallOrUpdate,
                         testing::Values("watch-setting-created", "watch-setting-updated"),
                         [](const auto& row) {
                             return row.param == "watch-setting-created" ? "created" : "updated";
                         });

TEST_P(AnInstallOrUpdate, logs_a_missing_label_and_goes_on)
{
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"pkgid",         "a"       },
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_EQ(platform.LogTexts()[1], "E data/label is empty!!");
    EXPECT_THAT(StatusesTo(kHome), ElementsAre("success"));
}

TEST_P(AnInstallOrUpdate, fails_without_xml_and_changes_nothing)
{
    Deliver(kHome,
            {
                {"type",           GetParam()},
                {"pkgid",          "a"       },
                {"data/label",     "A"       },
                {"data/icon_path", "/i.png"  }
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType = [" + GetParam() + "], watch_name = [a]",
                                                 "E data/xml_data is empty!!"));
    EXPECT_THAT(Sent(),
                ElementsAre("com.corvane.w-home w-home::localport {\"data/icon_path\": \"/i.png\", "
                            "\"data/label\": \"A\", \"pkgid\": \"a\", \"status\": \"fail\", \"type\": \"" +
                            GetParam() + "\"}"));
    EXPECT_THAT(platform.Tree(platform.RW()), IsEmpty());
}

TEST_P(AnInstallOrUpdate, looks_at_label_and_xml_before_the_icon_path)
{
    Deliver(kHome, {
                       {"type",  GetParam()},
                       {"pkgid", "a"       }
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType = [" + GetParam() + "], watch_name = [a]",
                                                 "E data/label is empty!!", "E data/xml_data is empty!!"));
}

TEST_P(AnInstallOrUpdate, logs_a_missing_icon_path_and_goes_on)
{
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"pkgid",         "a"       },
                       {"data/label",    "A"       },
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_EQ(platform.LogTexts()[1], "E data/icon_path is empty!!");
    EXPECT_THAT(StatusesTo(kHome), ElementsAre("success"));
}

TEST_P(AnInstallOrUpdate, fails_when_the_watch_face_cannot_be_written)
{
    platform.Data().convert = [](const std::string&) { return std::nullopt; };
    Deliver(kHome, {
                       {"type",           GetParam()},
                       {"pkgid",          "a"       },
                       {"data/label",     "A"       },
                       {"data/icon_path", "/i.png"  },
                       {"data/xml_data",  "<a/>"    }
    });
    EXPECT_EQ(platform.LogTexts().back(), "E [Message Handle] watchface.xml generation is failed!");
    EXPECT_THAT(Sent(),
                ElementsAre("com.corvane.w-home w-home::localport {\"data/icon_path\": \"/i.png\", "
                            "\"data/label\": \"A\", \"pkgid\": \"a\", \"status\": \"fail\", \"type\": \"" +
                            GetParam() + "\"}"));
    EXPECT_THAT(platform.Calls({"key", "copy"}), IsEmpty());
}

TEST_P(AnInstallOrUpdate, fails_without_a_name)
{
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(platform.Errors(), Contains("watchName or data is empty!!"));
    EXPECT_THAT(StatusesTo(kHome), ElementsAre("fail"));
}

TEST_P(AnInstallOrUpdate, replies_with_the_services_own_preview_path_and_without_the_xml)
{
    platform.WriteFile(platform.Root() + "/i.png", "preview");
    Deliver(kHome, {
                       {"type",           GetParam()                },
                       {"pkgid",          "a"                       },
                       {"data/icon_path", platform.Root() + "/i.png"},
                       {"data/xml_data",  "<a/>"                    },
                       {"extra",          "kept"                    }
    });
    EXPECT_EQ(Sent()[0],
              "com.corvane.w-home w-home::localport {\"data/icon_path\": \"" +
                  platform.RW("watchlist/a/a.png") +
                  "\", \"extra\": \"kept\", \"pkgid\": \"a\", \"status\": \"success\", \"type\": \"" +
                  GetParam() + "\"}");
}

TEST_P(AnInstallOrUpdate, replies_with_the_services_own_preview_path_also_when_none_was_supplied)
{
    Deliver(kViewer, {
                         {"type",          GetParam()},
                         {"pkgid",         "a"       },
                         {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(platform.Calls({"send com.corvane.watchface "}), IsEmpty());
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"pkgid",         "a"       },
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_EQ(platform.SentTo(kHome)[0].Text("data/icon_path"), platform.RW("watchlist/a/a.png"));
}

TEST_P(AnInstallOrUpdate, writes_takes_the_preview_replies_and_reloads_before_it_tells_the_phone)
{
    platform.SetKey("db/wms/clocks_set_idle", kViewer);
    platform.SetKey("file/private/com.corvane.watchface/watchface_name", "a");
    platform.WriteFile(platform.Root() + "/i.png", "preview");
    platform.Forget();
    Deliver(kHome, {
                       {"type",           GetParam()                },
                       {"pkgid",          "a"                       },
                       {"data/label",     "A"                       },
                       {"data/icon_path", platform.Root() + "/i.png"},
                       {"data/xml_data",  "<a/>"                    }
    });
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre(
            "log E messageType = [" + GetParam() + "], watch_name = [a]", "mkpath RW:watchlist/a/",
            "data_util_resultxml_memory_converter <a/>", "open RW:watchlist/a/a_result.xml",
            "close RW:watchlist/a/a_result.xml", "lock RW:watchlist/a/watchface.xml 3",
            "open RW:watchlist/a/watchface.xml", "close RW:watchlist/a/watchface.xml",
            "unlock RW:watchlist/a/watchface.xml",
            "log E [Message Handle] watchface.xml generation is success!",
            "copy ROOT:i.png -> RW:watchlist/a/a.png",
            StartsWith("send com.corvane.w-home w-home::localport {"), "key get db/wms/clocks_set_idle",
            "key get file/private/com.corvane.watchface/watchface_name", "log E set watchface to [a]",
            "key set db/wms/clocks_set_idle=com.corvane.watchface",
            "key set file/private/com.corvane.watchface/watchface_name=a", "log E idle clock set done!!",
            StartsWith("send com.corvane.w-manager-service w-manager-service::localport {"),
            "log I watchface[a]", "exists RW:watchlist/a/a.png", "idler start"));
}

TEST_P(AnInstallOrUpdate, leaves_another_current_watch_face_as_it_is)
{
    platform.SetKey("db/wms/clocks_set_idle", kViewer);
    platform.SetKey("file/private/com.corvane.watchface/watchface_name", "b");
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"pkgid",         "a"       },
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
}

TEST_P(AnInstallOrUpdate, asks_for_a_preview_where_none_is_supplied)
{
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"pkgid",         "a"       },
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
}

TEST_P(AnInstallOrUpdate, has_no_preview_checked_where_none_is_supplied)
{
    platform.WriteFile(platform.RW("watchlist/a/a.png"), "earlier preview");
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"pkgid",         "a"       },
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(platform.Calls({"idler start"}), IsEmpty());
    EXPECT_THAT(platform.Infos(), testing::Not(Contains("watchface[a]")));
}

TEST_P(AnInstallOrUpdate, has_the_preview_checked_that_is_supplied)
{
    platform.WriteFile(platform.Root() + "/i.png", "no picture");
    Deliver(kViewer, {
                         {"type",           GetParam()                },
                         {"pkgid",          "a"                       },
                         {"data/icon_path", platform.Root() + "/i.png"},
                         {"data/xml_data",  "<a/>"                    }
    });
    EXPECT_THAT(platform.SentTo(kCapture), IsEmpty());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"png RW"}), ElementsAre("png RW:watchlist/a/a.png"));
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
}

TEST_P(AnInstallOrUpdate, has_a_supplied_preview_that_cannot_be_copied_looked_for_all_the_same)
{
    Deliver(kHome, {
                       {"type",           GetParam()                      },
                       {"pkgid",          "a"                             },
                       {"data/icon_path", platform.Root() + "/missing.png"},
                       {"data/xml_data",  "<a/>"                          }
    });
    EXPECT_EQ(platform.Errors().back(), "preview for watchface[a] not found!!");
    EXPECT_THAT(platform.Calls({"idler start"}), IsEmpty());
}

TEST_P(AnInstallOrUpdate, that_fails_has_no_preview_checked)
{
    platform.WriteFile(platform.RW("watchlist/a/a.png"), "earlier preview");
    platform.Data().convert = [](const std::string&) { return std::nullopt; };
    Deliver(
        kHome,
        {
            {"type",           GetParam()},
            {"pkgid",          "a"       },
            {"data/icon_path", "/i.png"  },
            {"data/xml_data",  "<a/>"    }
    });
    EXPECT_THAT(platform.Calls({"idler start"}), IsEmpty());
}

TEST_P(AnInstallOrUpdate, of_a_local_editor_is_told_to_the_phone_with_the_services_own_preview_path)
{
    platform.WriteFile(platform.Root() + "/i.png", "preview");
    Deliver(kEditor, {
                         {"type",           GetParam()                },
                         {"pkgid",          "a"                       },
                         {"data/label",     "A"                       },
                         {"data/icon_path", platform.Root() + "/i.png"},
                         {"data/xml_data",  "<a/>"                    },
                         {"extra",          "not passed on"           }
    });
    EXPECT_EQ(Sent()[1],
              "com.corvane.w-manager-service w-manager-service::localport {\"data/icon_path\": \"" +
                  platform.RW("watchlist/a/a.png") +
                  "\", \"data/label\": \"A\", \"data/xml_data\": \"<a/>\", \"pkgid\": \"a\", "
                  "\"type\": \"" +
                  GetParam() + "\"}");
}

TEST_P(AnInstallOrUpdate, of_a_local_editor_is_told_to_the_phone_without_what_the_message_lacks)
{
    Deliver(kEditor, {
                         {"type",          GetParam()},
                         {"pkgid",         "a"       },
                         {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(Sent(), Contains("com.corvane.w-manager-service w-manager-service::localport "
                                 "{\"data/xml_data\": \"<a/>\", \"pkgid\": \"a\", \"type\": \"" +
                                 GetParam() + "\"}"));
}

TEST_P(AnInstallOrUpdate, of_a_local_editor_is_not_told_to_the_editors)
{
    Deliver(kHome, {
                       {"type",          GetParam()},
                       {"pkgid",         "a"       },
                       {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(platform.SentTo(kEditor), IsEmpty());
}

TEST_P(AnInstallOrUpdate, replies_to_the_phone_and_sends_it_no_notice)
{
    Deliver(kWms, {
                      {"type",          GetParam()},
                      {"pkgid",         "a"       },
                      {"data/xml_data", "<a/>"    }
    });
    EXPECT_THAT(platform.SentTo(kWms), SizeIs(1));
    EXPECT_THAT(StatusesTo(kWms), ElementsAre("success"));
}

TEST_F(AMsgControl, tells_the_editor_of_an_update_from_the_phone)
{
    platform.SetPortUp(kCapture, kCapturePort);
    Deliver(kWms, {
                      {"type",          "watch-setting-updated"},
                      {"pkgid",         "a"                    },
                      {"data/label",    "A"                    },
                      {"data/xml_data", "<a/>"                 }
    });
    EXPECT_EQ(Sent().back(),
              "com.corvane.watchface-editor watch-face-editor::localport "
              "{\"pkgid\": \"a\", \"type\": \"watch-setting-updated\"}");
}

TEST_F(AMsgControl, tells_the_editor_of_an_update_from_the_phone_without_looking_whether_it_is_there)
{
    Deliver(kWms, {
                      {"type",          "watch-setting-updated"},
                      {"pkgid",         "a"                    },
                      {"data/xml_data", "<a/>"                 }
    });
    EXPECT_THAT(platform.SentTo(kEditor), SizeIs(1));
    EXPECT_THAT(platform.Calls({"port check com.corvane.watchface-editor"}), IsEmpty());
}

TEST_F(AMsgControl, logs_that_the_notice_to_the_editor_has_no_message_when_none_can_be_made)
{
    platform.WriteFile(platform.Root() + "/i.png", "preview");
    platform.Fail("bundle_create");
    Deliver(kWms, {
                      {"type",           "watch-setting-updated"   },
                      {"pkgid",          "a"                       },
                      {"data/icon_path", platform.Root() + "/i.png"},
                      {"data/xml_data",  "<a/>"                    }
    });
    EXPECT_EQ(platform.Errors().back(), "message is nullptr!!");
    EXPECT_THAT(platform.SentTo(kEditor), IsEmpty());
}

TEST_F(AMsgControl, does_not_tell_the_editor_of_an_installation_from_the_phone)
{
    platform.SetPortUp(kCapture, kCapturePort);
    Deliver(kWms, {
                      {"type",          "watch-setting-created"},
                      {"pkgid",         "a"                    },
                      {"data/xml_data", "<a/>"                 }
    });
    EXPECT_THAT(platform.SentTo(kEditor), IsEmpty());
}

TEST_F(AMsgControl, draws_a_watch_face_of_the_product_anew_that_the_phone_installs_with_a_preview)
{
    platform.SetPortUp(kCapture, kCapturePort);
    platform.WriteFile(platform.Root() + "/i.png", "preview");
    Deliver(kWms, {
                      {"type",           "watch-setting-created"         },
                      {"pkgid",          "com.corvane.watchface-mirel-c1"},
                      {"data/icon_path", platform.Root() + "/i.png"      },
                      {"data/xml_data",  "<a/>"                          }
    });
    EXPECT_EQ(Sent().back(),
              "com.corvane.watchface-capture watchface-capture::localport "
              "{\"pkgName\": \"com.corvane.watchface-mirel-c1\"}");
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
    EXPECT_EQ(platform.Calls().back(), "idler start");  // the supplied preview is checked last of all
}

TEST_F(AMsgControl, asks_twice_for_the_preview_of_the_products_own_that_the_phone_installs_without_one)
{
    platform.SetPortUp(kCapture, kCapturePort);
    Deliver(kWms, {
                      {"type",          "watch-setting-created"         },
                      {"pkgid",         "com.corvane.watchface-mirel-c1"},
                      {"data/xml_data", "<a/>"                          }
    });
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(2));
}

TEST_F(AMsgControl, asks_once_for_the_preview_of_anothers_watch_face_that_the_phone_installs)
{
    platform.SetPortUp(kCapture, kCapturePort);
    Deliver(kWms,
            {
                {"type",          "watch-setting-created"},
                {"pkgid",         "com.example.face"     },
                {"data/xml_data", "<a/>"                 }
    });
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
}

TEST_F(AMsgControl, asks_once_for_the_preview_of_the_products_own_that_the_phone_updates)
{
    platform.SetPortUp(kCapture, kCapturePort);
    Deliver(kWms, {
                      {"type",          "watch-setting-updated"         },
                      {"pkgid",         "com.corvane.watchface-mirel-c1"},
                      {"data/xml_data", "<a/>"                          }
    });
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
}

TEST_F(AMsgControl, asks_once_for_the_preview_of_the_products_own_that_a_local_editor_installs)
{
    platform.SetPortUp(kCapture, kCapturePort);
    Deliver(kHome, {
                       {"type",          "watch-setting-created"         },
                       {"pkgid",         "com.corvane.watchface-mirel-c1"},
                       {"data/xml_data", "<a/>"                          }
    });
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
}
