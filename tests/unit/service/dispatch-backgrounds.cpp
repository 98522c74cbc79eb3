// Messages about background images: what happens to the files, who is answered, and what the phone is told.

#include "a-msg-control.h"

using MemoryPlatform::Strings;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

class ABackgroundMessage : public AMsgControl {
protected:
    ABackgroundMessage() { platform.Forget(); }

    std::string Picture(const std::string& name = "img.jpg") const
    {
        platform.WriteFile(platform.Root() + "/pictures/" + name, "picture");
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
    void Store(const std::string& path) const { platform.WriteFile(path, "stored"); }

    // As the platform has it: every key and its value, and none beside them.
    static std::string To(const char* appId, const char* port, const MemoryPlatform::Message& message)
    {
        return std::string(appId) + " " + port + " " + MemoryPlatform::ToText(message);
    }
    static std::string ToEditor(const MemoryPlatform::Message& message)
    {
        return To(kEditor, "watch-face-editor::localport", message);
    }
    static std::string ToWms(const MemoryPlatform::Message& message)
    {
        return To(kWms, "w-manager-service::localport", message);
    }

    void AddPending(const std::string& name, const std::string& bgType = "watch-bg-gallery-u1")
    {
        Deliver(kEditor, {
                             {"type",             "watch-bg-add"},
                             {"bg_type",          bgType        },
                             {"bg_list",          Picture(name) },
                             {"watch-bg-pending", "true"        }
        });
        platform.Forget();
    }
    void DeletePending(const Strings& names, const std::string& bgType = "watch-bg-gallery-u1")
    {
        Deliver(kEditor, {
                             {"type",             "watch-bg-del"},
                             {"bg_type",          bgType        },
                             {"bg_list",          names         },
                             {"watch-bg-pending", "true"        }
        });
        platform.Forget();
    }
};

}  // namespace

// Adding

TEST_F(ABackgroundMessage, that_adds_an_image_is_answered_and_told_to_the_phone_with_the_new_place)
{
    const std::string picture = Picture();
    Deliver(kEditor, {
                         {"type",    "watch-bg-add"       },
                         {"bg_type", "watch-bg-gallery-u1"},
                         {"bg_list", picture              },
                         {"extra",   "kept"               }
    });
    EXPECT_THAT(platform.ReadFile(Gallery("U1/img.jpg")), "picture");
    EXPECT_THAT(Sent(), ElementsAre(ToEditor({
                                        {"type",    "watch-bg-add"       },
                                        {"bg_type", "watch-bg-gallery-u1"},
                                        {"bg_list", picture              },
                                        {"extra",   "kept"               },
                                        {"status",  "success"            }
    }),
                                    ToWms({{"type", "watch-bg-add"},
                                           {"bg_type", "watch-bg-gallery-u1"},
                                           {"bg_list", Gallery("U1/img.jpg")},
                                           {"extra", "kept"}})));
}

TEST_F(ABackgroundMessage, that_adds_an_image_is_done_answered_and_told_in_this_order)
{
    Picture();
    Deliver(kEditor, {
                         {"type",    "watch-bg-add"                       },
                         {"bg_type", "watch-bg-gallery-u1"                },
                         {"bg_list", platform.Root() + "/pictures/img.jpg"}
    });
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-bg-add], watch_name = []",
                            "log I bgTypeStr[watch-bg-gallery-u1] prefix[U1]",
                            "log I bgTypeStr[watch-bg-gallery-u1] bgType[1] prefix[U1]",
                            "exists ROOT:pictures/img.jpg", "mkpath TRUSTED:theme/GalleryBackgrounds/U1/",
                            "copy ROOT:pictures/img.jpg -> TRUSTED:theme/GalleryBackgrounds/U1/img.jpg",
                            HasSubstr("send com.corvane.watchface-editor"),
                            HasSubstr("send com.corvane.w-manager-service")));
}

TEST_F(ABackgroundMessage, places_an_image_by_its_type)
{
    const std::pair<const char*, std::string> rows[] = {
        {"watch-bg-digital",    Theme("img.jpg")     },
        {"watch-bg-gallery",    Gallery("img.jpg")   },
        {"watch-bg-gallery-",   Gallery("img.jpg")   },
        {"watch-bg-gallery-u1", Gallery("U1/img.jpg")},
        {"watch-bg-gallery_u1", Gallery("U1/img.jpg")},
        {"watch-bg-galleryxyz", Gallery("YZ/img.jpg")},
        {"",                    Theme("img.jpg")     },
        {"watch-bg-galler",     Theme("img.jpg")     },
    };
    for (const auto& [bgType, place] : rows) {
        platform.Forget();
        Deliver(kHome, {
                           {"type",    "watch-bg-add"},
                           {"bg_type", bgType        },
                           {"bg_list", Picture()     }
        });
        EXPECT_TRUE(platform.Exists(place)) << bgType;
        ASSERT_THAT(platform.SentTo(kWms), SizeIs(1)) << bgType;
        EXPECT_EQ(platform.SentTo(kWms)[0].Text("bg_list"), place) << bgType;
    }
}

TEST_F(ABackgroundMessage, logs_the_type_0_of_a_theme_image)
{
    Deliver(kHome, {
                       {"type",    "watch-bg-add"    },
                       {"bg_type", "watch-bg-digital"},
                       {"bg_list", Picture()         }
    });
    EXPECT_THAT(platform.Infos(), ElementsAre("bgTypeStr[watch-bg-digital] prefix[]",
                                              "bgTypeStr[watch-bg-digital] bgType[0] prefix[]"));
}

TEST_F(ABackgroundMessage, that_adds_a_missing_image_fails_and_is_not_told_to_the_phone)
{
    Deliver(kEditor,
            {
                {"type",    "watch-bg-add"       },
                {"bg_type", "watch-bg-gallery-u1"},
                {"bg_list", "/missing.png"       }
    });
    EXPECT_THAT(Sent(), ElementsAre(ToEditor({
                            {"type",    "watch-bg-add"       },
                            {"bg_type", "watch-bg-gallery-u1"},
                            {"bg_list", "/missing.png"       },
                            {"status",  "fail"               }
    })));
}

TEST_F(ABackgroundMessage, that_adds_several_images_fails_because_it_names_one)
{
    Deliver(kEditor,
            {
                {"type",    "watch-bg-add"    },
                {"bg_type", "watch-bg-gallery"},
                {"bg_list", Strings{Picture()}}
    });
    EXPECT_THAT(platform.Errors(), Contains("filepath is empty!!"));
    EXPECT_EQ(platform.SentTo(kEditor)[0].Text("status"), "fail");
    EXPECT_THAT(platform.SentTo(kWms), IsEmpty());
}

TEST_F(ABackgroundMessage, that_adds_an_image_keeps_what_else_it_holds_in_its_reply)
{
    Deliver(kWms, {
                      {"type",           "watch-bg-add"    },
                      {"bg_type",        "watch-bg-digital"},
                      {"bg_list",        "/missing.png"    },
                      {"data/xml_data",  "<a/>"            },
                      {"data/icon_path", "/i.png"          },
                      {"status",         "earlier"         }
    });
    EXPECT_THAT(Sent(), ElementsAre(ToWms({
                            {"type",           "watch-bg-add"    },
                            {"bg_type",        "watch-bg-digital"},
                            {"bg_list",        "/missing.png"    },
                            {"data/xml_data",  "<a/>"            },
                            {"data/icon_path", "/i.png"          },
                            {"status",         "fail"            }
    })));
}

TEST_F(ABackgroundMessage, of_a_local_editor_is_told_to_the_phone_and_of_nobody_else)
{
    for (const char* sender : {kSettingList, kHome, kEditor}) {
        platform.Forget();
        Deliver(sender,
                {
                    {"type",    "watch-bg-add"    },
                    {"bg_type", "watch-bg-digital"},
                    {"bg_list", Picture()         }
        });
        EXPECT_THAT(platform.Sent(), SizeIs(2)) << sender;
        EXPECT_THAT(platform.SentTo(kWms), SizeIs(1)) << sender;
        platform.Forget();
        Deliver(sender,
                {
                    {"type",    "watch-bg-del"    },
                    {"bg_type", "watch-bg-digital"},
                    {"bg_list", "img.jpg"         }
        });
        EXPECT_THAT(platform.SentTo(kWms), SizeIs(1)) << sender;
    }
    for (const char* sender : {kWms, kViewer, kWorldClockMap, kCapture}) {
        platform.Forget();
        Deliver(sender,
                {
                    {"type",    "watch-bg-add"    },
                    {"bg_type", "watch-bg-digital"},
                    {"bg_list", Picture()         }
        });
        EXPECT_TRUE(platform.Exists(Theme("img.jpg"))) << sender;
        Deliver(sender,
                {
                    {"type",    "watch-bg-del"    },
                    {"bg_type", "watch-bg-digital"},
                    {"bg_list", "img.jpg"         }
        });
        EXPECT_FALSE(platform.Exists(Theme("img.jpg"))) << sender;
        // The WMS gets its two replies.
        EXPECT_THAT(platform.Sent(), SizeIs(sender == kWms ? 2 : 0)) << sender;
    }
}

TEST_F(ABackgroundMessage, that_adds_a_pending_image_is_told_to_the_phone_at_once)
{
    Deliver(kEditor, {
                         {"type",             "watch-bg-add"       },
                         {"bg_type",          "watch-bg-gallery-u1"},
                         {"bg_list",          Picture()            },
                         {"watch-bg-pending", "true"               }
    });
    EXPECT_EQ(Sent()[1], ToWms({
                             {"type",             "watch-bg-add"       },
                             {"bg_type",          "watch-bg-gallery-u1"},
                             {"bg_list",          Gallery("U1/img.jpg")},
                             {"watch-bg-pending", "true"               }
    }));
}

TEST_F(ABackgroundMessage, with_a_flag_of_any_other_text_than_true_is_neither_pending_nor_direct)
{
    for (const char* flag : {"false", "True", "1", ""}) {
        platform.Forget();
        Deliver(kEditor, {
                             {"type",             "watch-bg-add"       },
                             {"bg_type",          "watch-bg-gallery-u1"},
                             {"bg_list",          "/missing.png"       },
                             {"watch-bg-pending", flag                 },
                             {"watch-bg-direct",  flag                 }
        });
        EXPECT_EQ(platform.SentTo(kEditor)[0].Text("status"), "fail") << flag;
    }
    AddPending("a");
    Deliver(kEditor, {
                         {"type",             "watch-bg-add"       },
                         {"bg_type",          "watch-bg-gallery-u1"},
                         {"bg_list",          Picture("b")         },
                         {"watch-bg-pending", "false"              }
    });
    platform.Forget();
    Deliver(kEditor, {
                         {"type",    "watch-bg-cancel"    },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(platform.Tree(Gallery("U1")), ElementsAre("b"));
}

TEST_F(ABackgroundMessage, that_is_direct_changes_no_file_and_is_told_to_the_phone_as_it_came)
{
    Deliver(kEditor, {
                         {"type",            "watch-bg-add"       },
                         {"bg_type",         "watch-bg-gallery-u1"},
                         {"bg_list",         "/anywhere/img.jpg"  },
                         {"watch-bg-direct", "true"               }
    });
    EXPECT_THAT(platform.Errors(), ElementsAre("messageType = [watch-bg-add], watch_name = []",
                                               "already copied image!! pass to wms directly!!"));
    EXPECT_THAT(platform.Calls({"exists", "mkpath", "copy"}), IsEmpty());
    const MemoryPlatform::Message message = {
        {"type",            "watch-bg-add"       },
        {"bg_type",         "watch-bg-gallery-u1"},
        {"bg_list",         "/anywhere/img.jpg"  },
        {"watch-bg-direct", "true"               }
    };
    MemoryPlatform::Message reply = message;
    reply["status"] = "success";
    EXPECT_THAT(Sent(), ElementsAre(ToEditor(reply), ToWms(message)));
}

TEST_F(ABackgroundMessage, that_is_direct_keeps_several_images_as_they_came)
{
    Deliver(kEditor, {
                         {"type",            "watch-bg-add"              },
                         {"bg_type",         "watch-bg-gallery"          },
                         {"bg_list",         Strings{"/p/a.jpg", "b.jpg"}},
                         {"watch-bg-direct", "true"                      }
    });
    EXPECT_EQ(Sent()[1], ToWms({
                             {"type",            "watch-bg-add"              },
                             {"bg_type",         "watch-bg-gallery"          },
                             {"bg_list",         Strings{"/p/a.jpg", "b.jpg"}},
                             {"watch-bg-direct", "true"                      }
    }));
}

TEST_F(ABackgroundMessage, of_a_theme_image_is_never_direct)
{
    Deliver(kEditor, {
                         {"type",            "watch-bg-add"    },
                         {"bg_type",         "watch-bg-digital"},
                         {"bg_list",         Picture()         },
                         {"watch-bg-direct", "true"            }
    });
    EXPECT_TRUE(platform.Exists(Theme("img.jpg")));
    EXPECT_EQ(platform.SentTo(kWms)[0].Text("bg_list"), Theme("img.jpg"));
    EXPECT_THAT(platform.Errors(), SizeIs(1));
}

TEST_F(ABackgroundMessage, of_a_theme_image_is_never_pending)
{
    Deliver(kEditor, {
                         {"type",             "watch-bg-add"    },
                         {"bg_type",          "watch-bg-digital"},
                         {"bg_list",          Picture()         },
                         {"watch-bg-pending", "true"            }
    });
    EXPECT_THAT(platform.Errors(), Not(Contains(HasSubstr("not supported type"))));
    Deliver(kEditor, {
                         {"type",             "watch-bg-del"    },
                         {"bg_type",          "watch-bg-digital"},
                         {"bg_list",          "img.jpg"         },
                         {"watch-bg-pending", "true"            }
    });
    EXPECT_FALSE(platform.Exists(Theme("img.jpg")));
}

TEST_F(ABackgroundMessage, that_is_pending_and_direct_is_pending)
{
    Deliver(kEditor, {
                         {"type",             "watch-bg-add"       },
                         {"bg_type",          "watch-bg-gallery-u1"},
                         {"bg_list",          Picture()            },
                         {"watch-bg-pending", "true"               },
                         {"watch-bg-direct",  "true"               }
    });
    EXPECT_TRUE(platform.Exists(Gallery("U1/img.jpg")));
    EXPECT_THAT(platform.Errors(), SizeIs(1));
    Deliver(kEditor, {
                         {"type",    "watch-bg-cancel"    },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_FALSE(platform.Exists(Gallery("U1/img.jpg")));
}

// Deleting

TEST_F(ABackgroundMessage, that_deletes_an_image_is_answered_and_told_to_the_phone_with_its_bare_name)
{
    Store(Gallery("U1/img.jpg"));
    Deliver(kEditor, {
                         {"type",    "watch-bg-del"       },
                         {"bg_type", "watch-bg-gallery-u1"},
                         {"bg_list", "/any/path/img.jpg"  },
                         {"extra",   "kept"               }
    });
    EXPECT_FALSE(platform.Exists(Gallery("U1/img.jpg")));
    EXPECT_THAT(Sent(), ElementsAre(ToEditor({
                                        {"type",    "watch-bg-del"       },
                                        {"bg_type", "watch-bg-gallery-u1"},
                                        {"bg_list", "/any/path/img.jpg"  },
                                        {"extra",   "kept"               },
                                        {"status",  "success"            }
    }),
                                    ToWms({{"type", "watch-bg-del"},
                                           {"bg_type", "watch-bg-gallery-u1"},
                                           {"bg_list", "img.jpg"},
                                           {"extra", "kept"}})));
}

TEST_F(ABackgroundMessage, that_deletes_several_images_stays_a_list_in_its_order)
{
    for (const char* name : {"a", "b", "c"}) Store(Theme(name));
    Deliver(kHome, {
                       {"type",    "watch-bg-del"                 },
                       {"bg_type", "watch-bg-digital"             },
                       {"bg_list", Strings{"/p/c", "a", "/b/", ""}}
    });
    EXPECT_THAT(platform.Calls({"remove"}),
                ElementsAre("remove TRUSTED:theme/Backgrounds/c", "remove TRUSTED:theme/Backgrounds/a",
                            "remove TRUSTED:theme/Backgrounds/", "remove TRUSTED:theme/Backgrounds/"));
    EXPECT_THAT(platform.Tree(Theme()), ElementsAre("b"));
    EXPECT_EQ(Sent()[1], ToWms({
                             {"type",    "watch-bg-del"           },
                             {"bg_type", "watch-bg-digital"       },
                             {"bg_list", Strings{"c", "a", "", ""}}
    }));
}

TEST_F(ABackgroundMessage, that_deletes_a_list_of_one_image_stays_a_list)
{
    Store(Theme("a"));
    Deliver(kHome, {
                       {"type",    "watch-bg-del"    },
                       {"bg_type", "watch-bg-digital"},
                       {"bg_list", Strings{"a"}      }
    });
    EXPECT_EQ(Sent()[1],
              ToWms({
                  {"type",    "watch-bg-del"    },
                  {"bg_type", "watch-bg-digital"},
                  {"bg_list", Strings{"a"}      }
    }));
}

TEST_F(ABackgroundMessage, that_deletes_nothing_fails)
{
    for (const MemoryPlatform::Message& message : {
             MemoryPlatform::Message{{"type", "watch-bg-del"},            {"bg_type", "watch-bg-gallery-u1"}},
             MemoryPlatform::Message{
                                     {"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-u1"},             {"bg_list", Strings{}}}
    }) {
        platform.Forget();
        Deliver(kEditor, message);
        EXPECT_THAT(platform.Errors(), Contains("files is empty!!"));
        MemoryPlatform::Message reply = message;
        reply["status"] = "fail";
        EXPECT_THAT(Sent(), ElementsAre(ToEditor(reply)));
    }
}

TEST_F(ABackgroundMessage, that_deletes_a_missing_image_succeeds)
{
    Deliver(kEditor,
            {
                {"type",    "watch-bg-del"       },
                {"bg_type", "watch-bg-gallery-u1"},
                {"bg_list", "missing.jpg"        }
    });
    EXPECT_THAT(platform.Errors(), Contains("bg image is not exist!!"));
    EXPECT_EQ(platform.SentTo(kEditor)[0].Text("status"), "success");
    EXPECT_THAT(platform.SentTo(kWms), SizeIs(1));
}

TEST_F(ABackgroundMessage, that_holds_a_deletion_touches_no_file_and_is_not_told_to_the_phone)
{
    Store(Gallery("U1/a"));
    Deliver(kEditor, {
                         {"type",             "watch-bg-del"       },
                         {"bg_type",          "watch-bg-gallery-u1"},
                         {"bg_list",          "a"                  },
                         {"watch-bg-pending", "true"               }
    });
    EXPECT_TRUE(platform.Exists(Gallery("U1/a")));
    EXPECT_THAT(platform.Infos(), Contains("added [1] files to delete, kept [1] files"));
    EXPECT_THAT(Sent(), ElementsAre(ToEditor({
                            {"type",             "watch-bg-del"       },
                            {"bg_type",          "watch-bg-gallery-u1"},
                            {"bg_list",          "a"                  },
                            {"watch-bg-pending", "true"               },
                            {"status",           "success"            }
    })));
}

TEST_F(ABackgroundMessage, of_a_direct_deletion_touches_no_file_and_is_told_to_the_phone)
{
    Store(Gallery("U1/a"));
    Deliver(kEditor, {
                         {"type",            "watch-bg-del"       },
                         {"bg_type",         "watch-bg-gallery-u1"},
                         {"bg_list",         "/p/a"               },
                         {"watch-bg-direct", "true"               }
    });
    EXPECT_THAT(platform.Errors(),
                ElementsAre("messageType = [watch-bg-del], watch_name = []", "direct request received!!"));
    EXPECT_THAT(platform.Calls({"exists", "remove"}), IsEmpty());
    EXPECT_EQ(Sent()[1], ToWms({
                             {"type",            "watch-bg-del"       },
                             {"bg_type",         "watch-bg-gallery-u1"},
                             {"bg_list",         "a"                  },
                             {"watch-bg-direct", "true"               }
    }));
}

TEST_F(ABackgroundMessage, of_a_direct_deletion_that_names_nothing_is_told_to_the_phone_without_names)
{
    Deliver(kEditor,
            {
                {"type",            "watch-bg-del"    },
                {"bg_type",         "watch-bg-gallery"},
                {"watch-bg-direct", "true"            }
    });
    EXPECT_THAT(
        Sent(),
        ElementsAre(
            ToEditor({
                {"type",            "watch-bg-del"    },
                {"bg_type",         "watch-bg-gallery"},
                {"watch-bg-direct", "true"            },
                {"status",          "success"         }
    }),
            ToWms({{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery"}, {"watch-bg-direct", "true"}})));
}

TEST_F(ABackgroundMessage, that_leads_out_of_its_folders_changes_nothing_there)
{
    Store(Theme("a"));
    Deliver(kEditor,
            {
                {"type",    "watch-bg-del"                   },
                {"bg_type", "watch-bg-gallery-../backgrounds"},
                {"bg_list", "a"                              }
    });
    Deliver(
        kEditor,
        {
            {"type",    "watch-bg-add"                },
            {"bg_type", "watch-bg-gallery-../../../.."},
            {"bg_list", Picture()                     }
    });
    EXPECT_THAT(platform.Tree(platform.Trusted()),
                ElementsAre("theme/", "theme/Backgrounds/", "theme/Backgrounds/a"));
    EXPECT_EQ(platform.SentTo(kEditor)[1].Text("status"), "fail");
}

// Saving

TEST_F(ABackgroundMessage, that_saves_tells_the_phone_of_the_held_deletions_before_they_happen)
{
    Store(Gallery("U1/a"));
    Store(Gallery("U1/b"));
    AddPending("c");
    DeletePending({"b", "a"});
    Deliver(kEditor,
            {
                {"type",          "watch-bg-save"      },
                {"bg_type",       "watch-bg-gallery-u1"},
                {"data/xml_data", "kept"               }
    });
    EXPECT_THAT(platform.Timeline(), ElementsAre("log E messageType = [watch-bg-save], watch_name = []",
                                                 "log I bgTypeStr[watch-bg-gallery-u1] prefix[U1]",
                                                 "send " + ToWms({
                                                               {"type",    "watch-bg-del"    },
                                                               {"bg_type", "watch-bg-gallery"},
                                                               {"bg_list", Strings{"b", "a"} }
    }),
                                                 "log I apply added bg!!", "log I apply deleted bg!!",
                                                 "exists TRUSTED:theme/GalleryBackgrounds/U1/b",
                                                 "remove TRUSTED:theme/GalleryBackgrounds/U1/b",
                                                 "exists TRUSTED:theme/GalleryBackgrounds/U1/a",
                                                 "remove TRUSTED:theme/GalleryBackgrounds/U1/a",
                                                 "send " + ToEditor({{"type", "watch-bg-save"},
                                                                     {"bg_type", "watch-bg-gallery-u1"},
                                                                     {"data/xml_data", "kept"},
                                                                     {"status", "success"}})));
    EXPECT_THAT(platform.Tree(Gallery("U1")), ElementsAre("c"));
}

TEST_F(ABackgroundMessage, that_saves_nothing_is_answered_and_not_told_to_the_phone)
{
    Deliver(kEditor, {
                         {"type",    "watch-bg-save"      },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(Sent(),
                ElementsAre(ToEditor({
                    {"type",    "watch-bg-save"      },
                    {"bg_type", "watch-bg-gallery-u1"},
                    {"status",  "success"            }
    })));
}

TEST_F(ABackgroundMessage, that_saves_held_additions_alone_is_not_told_to_the_phone)
{
    AddPending("a");
    Deliver(kEditor, {
                         {"type",    "watch-bg-save"      },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(platform.SentTo(kWms), IsEmpty());
    EXPECT_THAT(platform.Infos(), Contains("apply added bg!!"));
}

TEST_F(ABackgroundMessage, that_saves_saves_one_prefix_alone)
{
    AddPending("a", "watch-bg-gallery");
    AddPending("b", "watch-bg-gallery-u2");
    Deliver(kEditor, {
                         {"type",    "watch-bg-save"      },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(platform.Infos(), Not(Contains("apply added bg!!")));
    Deliver(kEditor, {
                         {"type", "watch-bg-save"}
    });
    EXPECT_THAT(platform.Infos(), Contains("apply added bg!!").Times(1));
}

TEST_F(ABackgroundMessage, that_saves_tells_the_phone_whoever_sent_it)
{
    DeletePending({"a"});
    Deliver(kViewer, {
                         {"type",    "watch-bg-save"      },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(Sent(),
                ElementsAre(ToWms({
                    {"type",    "watch-bg-del"    },
                    {"bg_type", "watch-bg-gallery"},
                    {"bg_list", Strings{"a"}      }
    })));
}

TEST_F(ABackgroundMessage, that_saves_goes_on_when_the_notice_to_the_phone_cannot_be_made)
{
    Store(Gallery("U1/a"));
    DeletePending({"a"});
    platform.Fail("bundle_create");
    Deliver(kEditor, {
                         {"type",    "watch-bg-save"      },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(platform.Errors(), Contains("message is nullptr!!"));
    EXPECT_FALSE(platform.Exists(Gallery("U1/a")));
    EXPECT_THAT(platform.SentTo(kEditor), SizeIs(1));
}

// Cancelling

TEST_F(ABackgroundMessage, that_cancels_tells_the_phone_of_the_held_additions_before_they_go)
{
    Store(Gallery("U1/c"));
    AddPending("b");
    AddPending("a");
    DeletePending({"c"});
    Deliver(kEditor,
            {
                {"data/xml_data", "kept"               },
                {"type",          "watch-bg-cancel"    },
                {"bg_type",       "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log E messageType = [watch-bg-cancel], watch_name = []",
                            "log I bgTypeStr[watch-bg-gallery-u1] prefix[U1]",
                            "send " + ToWms({
                                          {"type",    "watch-bg-del"    },
                                          {"bg_type", "watch-bg-gallery"},
                                          {"bg_list", Strings{"b", "a"} }
    }),
                            "log I cancel added bg!!", "exists TRUSTED:theme/GalleryBackgrounds/U1/b",
                            "remove TRUSTED:theme/GalleryBackgrounds/U1/b",
                            "exists TRUSTED:theme/GalleryBackgrounds/U1/a",
                            "remove TRUSTED:theme/GalleryBackgrounds/U1/a", "log I cancel deleted bg!!",
                            "send " + ToEditor({{"data/xml_data", "kept"},
                                                {"type", "watch-bg-cancel"},
                                                {"bg_type", "watch-bg-gallery-u1"},
                                                {"status", "success"}})));
    EXPECT_THAT(platform.Tree(Gallery("U1")), ElementsAre("c"));
}

TEST_F(ABackgroundMessage, that_cancels_nothing_is_answered_and_not_told_to_the_phone)
{
    DeletePending({"a"});
    Deliver(kEditor,
            {
                {"data/xml_data", "kept"               },
                {"type",          "watch-bg-cancel"    },
                {"bg_type",       "watch-bg-gallery-u1"}
    });
    EXPECT_THAT(Sent(), ElementsAre(ToEditor({
                            {"data/xml_data", "kept"               },
                            {"type",          "watch-bg-cancel"    },
                            {"bg_type",       "watch-bg-gallery-u1"},
                            {"status",        "success"            }
    })));
}

TEST_F(ABackgroundMessage, that_cancels_leaves_what_was_saved)
{
    AddPending("a");
    Deliver(kEditor, {
                         {"type",    "watch-bg-save"      },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    Deliver(kEditor, {
                         {"type",    "watch-bg-cancel"    },
                         {"bg_type", "watch-bg-gallery-u1"}
    });
    EXPECT_TRUE(platform.Exists(Gallery("U1/a")));
    EXPECT_THAT(platform.SentTo(kWms), IsEmpty());
}
