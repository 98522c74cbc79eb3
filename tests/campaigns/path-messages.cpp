#include "path-messages.h"

#include <stdexcept>
#include <utility>

namespace Campaign {

namespace {

constexpr char kClassic[] = "com.corvane.watchface-mirel-c1";
constexpr char kBlank[] = "com.corvane.watchface-mirel-c2";  // nothing else is said of this one
constexpr char kDigital[] = "com.corvane.watchface-mirel-e1";
constexpr char kGallery[] = "com.corvane.watchface-mirel-u1";
constexpr char kVariant[] = "watch-bg-gallery-u1";
constexpr char kAnyVariant[] = "watch-bg-gallery-PATH";
constexpr char kRestoreLogged[] = "operation = corvane_cloud_restore";
constexpr char kHarmlessPicture[] = "SOURCES/harmless.png";

// Longer than a name, and than a path, may be.
const std::string kLongName(300, 'x'), kLongPath(5000, 'x');

const std::vector<Path> kPaths{
    {"../escaped",                 Path::kLeadsOut},
    {"../../escaped",              Path::kLeadsOut},
    {"../../../../escaped",        Path::kLeadsOut},
    {"../../../../../../escaped",  Path::kLeadsOut},
    {".",                          Path::kLeadsOut},
    {"..",                         Path::kLeadsOut},
    {"../",                        Path::kLeadsOut},
    {"./../escaped",               Path::kLeadsOut},
    {"a/../../escaped",            Path::kLeadsOut},
    {"a/b/..",                     Path::kLeadsOut},
    {"escaped/..",                 Path::kLeadsOut},
    {"../watchlist/../../escaped", Path::kLeadsOut},
    {"link/x",                     Path::kLeadsOut},
    {"link/../../escaped",         Path::kLeadsOut},
    {kLongName,                    Path::kLeadsOut},
    {kLongPath,                    Path::kLeadsOut},
    {"link",                       Path::kIsLink  },
    {"link/",                      Path::kIsLink  },
    {"",                           Path::kIsOdd   },
    {"/",                          Path::kIsOdd   },
    {"//",                         Path::kIsOdd   },
    {"/etc/escaped",               Path::kIsOdd   },
    {"/proc/self",                 Path::kIsOdd   },
    {"planted",                    Path::kIsOdd   }, // whose files are links to one elsewhere
    {"\xff\xfe",                   Path::kIsOdd   },
};

// Those of files that are to be copied: SOURCES is a folder of ours, with pictures of dangerous names.
const std::vector<Path> kSources{
    {"SOURCES/link",        Path::kIsOdd   },
    {"SOURCES/planted.png", Path::kIsOdd   },
    {"SOURCES/..",          Path::kLeadsOut},
    {"SOURCES/.",           Path::kLeadsOut},
    {"SOURCES/",            Path::kLeadsOut},
    {"SOURCES/folder",      Path::kLeadsOut},
    {"SOURCES/../escaped",  Path::kLeadsOut},
    {"/",                   Path::kLeadsOut},
    {"..",                  Path::kLeadsOut},
    {"/proc/self/mem",      Path::kLeadsOut},
    {"/dev/zero",           Path::kLeadsOut},
    {kLongPath,             Path::kLeadsOut},
    {"\xff\xfe",            Path::kLeadsOut},
};

const std::vector<std::string> kCurrentFaceRows{
    "KEYS:file/private/com.corvane.watchface/watchface_name",
    "KEYS:db/wms/clocks_set_idle",
    "PREFERENCES:wfs-pref-idle-change-request-from",
};

void PrepareNothing(PathStage&, const std::string&) {}

Values Given(Values item)
{
    item.emplace_back("operation", "corvane_cloud_restore");
    return item;
}

// To where pictures are taken back: the gallery face has come, and the former pictures have been removed.
void BeginRestore(PathStage& stage, const std::string&)
{
    stage.Say(kBackupAgent, Given({
                                {"message", "restore_start"}
    }));
    stage.Say(kBackupAgent,
              Given({
                  {"type",       "watch"                        },
                  {"pkgid",      kGallery                       },
                  {"result_xml", stage.ShippedDocument(kGallery)}
    }));
    stage.Say(kBackupAgent, Given({
                                {"type", "none"}
    }));
}

void AddPicture(PathStage& stage, const std::string& bgType, const std::string& file, const char* pending)
{
    stage.Say(kEditor, {
                           {"type",             "watch-bg-add"                    },
                           {"bg_type",          bgType                            },
                           {"watch-bg-pending", pending                           },
                           {"bg_list",          stage.InSources("SOURCES/" + file)}
    });
}

void AddHarmless(PathStage& stage, const std::string&)
{
    AddPicture(stage, "watch-bg-digital", "harmless.png", "false");
    AddPicture(stage, kVariant, "harmless.png", "false");
}

void AddToVariant(PathStage& stage, const std::string& path)
{
    AddPicture(stage, "watch-bg-gallery-" + path, "kept", "false");
}

// A picture waits for its deletion.
void HoldDeletion(PathStage& stage, const std::string& path)
{
    AddToVariant(stage, path);
    stage.Say(kEditor, {
                           {"type",             "watch-bg-del"            },
                           {"bg_type",          "watch-bg-gallery-" + path},
                           {"watch-bg-pending", "true"                    },
                           {"bg_list",          "kept"                    }
    });
}

// A picture was added where a link leads out by now.
void HoldAddition(PathStage& stage, const std::string& path)
{
    stage.PutFolderForLink(stage.At(kGalleries) + "/LINK");
    AddPicture(stage, "watch-bg-gallery-" + path, "kept", "true");
}

void Install(PathStage& stage, const std::string& face, const std::string& preview)
{
    stage.Say(kEditor, {
                           {"type",           "watch-setting-updated"    },
                           {"pkgid",          face                       },
                           {"data/xml_data",  stage.ShippedDocument(face)},
                           {"data/icon_path", preview                    }
    });
}

// The preview of a face is none, so that it is asked for, and again when it is said to be finished.
void BreakPreview(PathStage& stage, const std::string& path)
{
    if (path != kBlank) return;
    Install(stage, path, stage.InSources("SOURCES/kept"));
    if (!stage.IsAskedFor(path)) throw std::runtime_error("no preview is asked for");
}

void MakeCurrent(PathStage& stage, const std::string& path)
{
    stage.Say(kHome, {
                         {"type",  "watch-idle-changed"},
                         {"pkgid", path                }
    });
    stage.Say(kWorldClockMap, {
                                  {"type", "watch-prepare-update-world-clock"}
    });
}

void MakeWorldClockCurrent(PathStage& stage, const std::string&)
{
    MakeCurrent(stage, kWorldClock);
}

void InstallClassic(PathStage& stage, const std::string&)
{
    Install(stage, kClassic, stage.ShippedPreview(kClassic));
}

std::string FaceFile(const std::string& name)
{
    return std::string(kFaces) + "/" + name;
}

std::string InVariant(const std::string& name)
{
    return std::string(kGalleries) + "/U1/" + name;
}

using Messages = std::vector<PathMessage>;

void AddFaces(const PathStage& stage, Messages& all)
{
    const std::string document = stage.ShippedDocument(kClassic);
    for (const auto& [type, from] : {
             std::pair{"watch-setting-created", kManager},
             std::pair{"watch-setting-updated", kEditor }
    }) {
        all.push_back(
            PathMessage("the face that is installed or updated", from,
                        {
                            {"type",          type    },
                            {"pkgid",         "PATH"  },
                            {"data/xml_data", document}
        })
                .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), kDigital)
                .Answers("fail", "fail")
                .IsRefused());
        all.push_back(PathMessage("its icon_path", from,
                                  {
                                      {"type",           type    },
                                      {"pkgid",          kClassic},
                                      {"data/xml_data",  document},
                                      {"data/icon_path", "PATH"  }
        })
                          .Does(PathMessage::kMakes,
                                FaceFile("com.corvane.watchface-mirel-c1/com.corvane.watchface-mirel-c1.png"),
                                stage.ShippedPreview(kDigital))
                          .Tries(kSources)
                          .Answers("success", ""));
        all.push_back(
            PathMessage("its xml_data", from,
                        {
                            {"type",          type    },
                            {"pkgid",         kDigital},
                            {"data/xml_data", "PATH"  }
        })
                .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), document)
                .Answers("fail", "fail"));
    }
    all.push_back(
        PathMessage("the face that is deleted", kManager,
                    {
                        {"type",  "watch-setting-deleted"},
                        {"pkgid", "PATH"                 }
    })
            .Does(PathMessage::kRemoves, FaceFile("com.corvane.watchface-mirel-c1/watchface.xml"), kClassic)
            .After(InstallClassic)
            .Answers("fail", "success")
            .IsRefused());
    all.push_back(PathMessage("the face that becomes current", kHome,
                              {
                                  {"type",  "watch-idle-changed"},
                                  {"pkgid", "PATH"              }
    })
                      .Does(PathMessage::kSetsRow, kCurrentFaceRows[0] + " = PATH", kDigital)
                      .MaySet(kCurrentFaceRows)
                      .Logs("idle clock set done!!"));
    all.push_back(PathMessage("the face that was drawn", kCapture,
                              {
                                  {"type",  "watch-capture-finished"},
                                  {"pkgid", "PATH"                  }
    })
                      .Does(PathMessage::kAsks, kBlank, kBlank)
                      .After(BreakPreview)
                      .Logs("messageType = [watch-capture-finished]"));
}

void AddPictures(Messages& all)
{
    all.push_back(
        PathMessage("a picture of the theme that is added", kEditor,
                    {
                        {"type",    "watch-bg-add"    },
                        {"bg_type", "watch-bg-digital"},
                        {"bg_list", "PATH"            }
    })
            .Does(PathMessage::kMakes, std::string(kPictures) + "/harmless.png", kHarmlessPicture)
            .Tries(kSources)
            .Answers("fail", ""));
    all.push_back(PathMessage("a picture of a gallery that is added", kEditor,
                              {
                                  {"type",    "watch-bg-add"},
                                  {"bg_type", kVariant      },
                                  {"bg_list", "PATH"        }
    })
                      .Does(PathMessage::kMakes, InVariant("harmless.png"), kHarmlessPicture)
                      .Tries(kSources)
                      .Answers("fail", ""));
    all.push_back(
        PathMessage("the bg_type of a picture that is added", kEditor,
                    {
                        {"type",    "watch-bg-add"  },
                        {"bg_type", kAnyVariant     },
                        {"bg_list", kHarmlessPicture}
    })
            .Does(PathMessage::kMakes, InVariant("harmless.png"), "u1")
            .Answers("fail", "fail")
            .IsRefused());
    all.push_back(
        PathMessage("a picture of the theme that is deleted", kEditor,
                    {
                        {"type",    "watch-bg-del"    },
                        {"bg_type", "watch-bg-digital"},
                        {"bg_list", "PATH"            }
    })
            .Does(PathMessage::kRemoves, std::string(kPictures) + "/harmless.png", "harmless.png")
            .After(AddHarmless)
            .Answers("success", "success")
            .IsRefused());
    for (const char* arrayKey : {"", "bg_list"}) {
        const char* status = *arrayKey ? "" : "success";  // it stands behind the array, where nobody reads
        all.push_back(PathMessage("a picture of a gallery that is deleted", kEditor,
                                  {
                                      {"type",    "watch-bg-del"},
                                      {"bg_type", kVariant      },
                                      {"bg_list", "PATH"        }
        })
                          .Does(PathMessage::kRemoves, InVariant("harmless.png"), "harmless.png")
                          .After(AddHarmless)
                          .WithArray(arrayKey)
                          .Answers(status, status)
                          .Logs("messageType = [watch-bg-del]")
                          .IsRefused());
    }
    all.push_back(PathMessage("the bg_type of a picture that is deleted", kEditor,
                              {
                                  {"type",    "watch-bg-del"},
                                  {"bg_type", kAnyVariant   },
                                  {"bg_list", "kept"        }
    })
                      .Does(PathMessage::kRemoves, InVariant("kept"), "u1")
                      .After(AddToVariant)
                      .Answers("success", "success")
                      .IsRefused());
    all.push_back(PathMessage("the bg_type of what is saved", kEditor,
                              {
                                  {"type",    "watch-bg-save"},
                                  {"bg_type", kAnyVariant    }
    })
                      .Does(PathMessage::kRemoves, InVariant("kept"), "u1")
                      .After(HoldDeletion)
                      .Answers("success", "success")
                      .IsRefused());
    all.push_back(PathMessage("the bg_type of what is cancelled", kEditor,
                              {
                                  {"type",    "watch-bg-cancel"},
                                  {"bg_type", kAnyVariant      }
    })
                      .Does(PathMessage::kRemoves, InVariant("kept"), "u1")
                      .After(HoldAddition)
                      .Answers("success", "success")
                      .IsRefused());
}

void AddRestored(const PathStage& stage, Messages& all)
{
    const std::string document = stage.ShippedDocument(kDigital);
    all.push_back(
        PathMessage("the face that is restored", kBackupAgent,
                    Given({
                        {"type",       "watch" },
                        {"pkgid",      "PATH"  },
                        {"result_xml", document}
    }))
            .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), kDigital)
            .After(BeginRestore)
            .Logs(kRestoreLogged)
            .IsRefused());
    all.push_back(
        PathMessage("its result_xml", kBackupAgent,
                    Given({
                        {"type",       "watch" },
                        {"pkgid",      kDigital},
                        {"result_xml", "PATH"  }
    }))
            .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), document)
            .After(BeginRestore)
            .Logs(kRestoreLogged));
    all.push_back(PathMessage("the file_path of a picture that is restored", kBackupAgent,
                              Given({
                                  {"type",      "image"       },
                                  {"file_name", "harmless.png"},
                                  {"file_path", "PATH"        },
                                  {"bg_type",   kVariant      }
    }))
                      .Does(PathMessage::kMakes, InVariant("harmless.png"), kHarmlessPicture)
                      .Tries(kSources)
                      .After(BeginRestore)
                      .Logs(kRestoreLogged));
    all.push_back(PathMessage("its file_name", kBackupAgent,
                              Given({
                                  {"type",      "image"         },
                                  {"file_name", "PATH"          },
                                  {"file_path", kHarmlessPicture},
                                  {"bg_type",   kVariant        }
    }))
                      .Does(PathMessage::kMakes, InVariant("harmless.png"), "harmless.png")
                      .After(BeginRestore)
                      .Logs(kRestoreLogged));
    all.push_back(PathMessage("its bg_type", kBackupAgent,
                              Given({
                                  {"type",      "image"         },
                                  {"file_name", "harmless.png"  },
                                  {"file_path", kHarmlessPicture},
                                  {"bg_type",   kAnyVariant     }
    }))
                      .Does(PathMessage::kMakes, InVariant("harmless.png"), "u1")
                      .After(BeginRestore)
                      .Logs(kRestoreLogged)
                      .IsRefused());
    all.push_back(PathMessage("the current face that is restored", kBackupAgent,
                              Given({
                                  {"type",  "watch-idle-changed"},
                                  {"pkgid", "PATH"              }
    }))
                      .Does(PathMessage::kSetsRow, kCurrentFaceRows[0] + " = PATH", kClassic)
                      .MaySet(kCurrentFaceRows)
                      .After(BeginRestore)
                      .Logs(kRestoreLogged));
}

void AddValues(Messages& all)
{
    std::vector<std::string> prepared = kCurrentFaceRows;
    prepared.emplace_back("PREFERENCES:wfs-watch-name-world-clock-update");
    all.push_back(
        PathMessage("the face whose world clock is set", kHome,
                    {
                        {"type",                              "watch-setting-update-world-clock"},
                        {"data/worldclock/complication_name", "city"                            },
                        {"data/worldclock/cityname",          "Lima"                            },
                        {"data/worldclock/country",           "Peru"                            },
                        {"data/worldclock/timezone",          "PET"                             },
                        {"data/worldclock/timezone_path",     "America/Lima"                    }
    })
            .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-c4/watchface.xml"), kWorldClock)
            .After(MakeCurrent)
            .MaySet(prepared)
            .Logs("messageType = [watch-setting-update-world-clock]")
            .IsRefused());
    all.push_back(PathMessage("its timezone_path", kHome,
                              {
                                  {"type",                              "watch-setting-update-world-clock"},
                                  {"data/worldclock/complication_name", "city"                            },
                                  {"data/worldclock/timezone_path",     "PATH"                            }
    })
                      .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-c4/watchface.xml"),
                            "/usr/share/zoneinfo/America/Lima")
                      .After(MakeWorldClockCurrent)
                      .MaySet(prepared)
                      .Logs("messageType = [watch-setting-update-world-clock]"));
    all.push_back(
        PathMessage("the face whose world clock is asked for", kManager,
                    {
                        {"type",       "watch-dual-clock-data"},
                        {"pkgid",      "PATH"                 },
                        {"group/name", "city"                 }
    })
            .Does(PathMessage::kAnswers, "success", kWorldClock)
            .Answers("fail", "fail"));
    all.push_back(
        PathMessage("its group/name", kManager,
                    {
                        {"type",       "watch-dual-clock-data"},
                        {"pkgid",      kWorldClock            },
                        {"group/name", "PATH"                 }
    })
            .Does(PathMessage::kAnswers, "success", "city")
            .Answers("fail", "fail"));
    all.push_back(PathMessage("the face whose evaluation is saved", kFace,
                              {
                                  {"evaluation-helper-op",             "evaluation-helper-op-save-duration"},
                                  {"evaluation-helper-watchface-name", "PATH"                              },
                                  {"evaluation-helper-data-duration",  "12"                                }
    })
                      .Does(PathMessage::kSetsRow,
                            "PREFERENCES:com.example.face+PATH+evaluation-helper-data-duration = 12", "face")
                      .MaySet({"PREFERENCES:com.example.face+"})
                      .Answers("0", "0"));
    all.push_back(PathMessage("the face whose evaluation is loaded", kFace,
                              {
                                  {"evaluation-helper-op",             "evaluation-helper-op-load-duration"},
                                  {"evaluation-helper-watchface-name", "PATH"                              }
    })
                      .Does(PathMessage::kAnswers, "0", "face")
                      .Answers("0", "0"));  // of what was saved under it
}

}  // namespace

PathMessage::PathMessage(const char* fieldAttacked, const Identity& sender, Values messageValues)
    : field(fieldAttacked),
      from(sender),
      values(std::move(messageValues)),
      paths(&kPaths),
      prepare(PrepareNothing)
{
}

PathMessage& PathMessage::Does(Effect what, std::string which, std::string withValue)
{
    effect = what;
    effectOn = std::move(which);
    harmless = std::move(withValue);
    return *this;
}

PathMessage& PathMessage::Tries(const std::vector<Path>& others)
{
    paths = &others;
    return *this;
}

PathMessage& PathMessage::After(Preparation step)
{
    prepare = step;
    return *this;
}

PathMessage& PathMessage::Answers(const char* toOneThatLeadsOut, const char* toLink)
{
    answer = toOneThatLeadsOut;
    answerToLink = toLink;
    return *this;
}

PathMessage& PathMessage::IsRefused()
{
    isRefused = true;
    return *this;
}

PathMessage& PathMessage::Logs(const char* text)
{
    logged = text;
    return *this;
}

PathMessage& PathMessage::MaySet(std::vector<std::string> beginnings)
{
    rows = std::move(beginnings);
    return *this;
}

PathMessage& PathMessage::WithArray(const char* key)
{
    arrayKey = key;
    return *this;
}

std::vector<PathMessage> PathMessages(const PathStage& stage)
{
    Messages all;
    AddFaces(stage, all);
    AddPictures(all);
    AddRestored(stage, all);
    AddValues(all);
    return all;
}

}  // namespace Campaign
