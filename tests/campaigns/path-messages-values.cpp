#include "path-message-groups.h"

namespace Campaign {

namespace {

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

void AddWorldClocks(PathMessageList& all)
{
    std::vector<std::string> prepared = CurrentFaceRows();
    prepared.emplace_back("PREFERENCES:wfs-watch-name-world-clock-update");
    all.emplace_back("the face whose world clock is set", kHome,
                     Values{
                         {"type",                              "watch-setting-update-world-clock"},
                         {"data/worldclock/complication_name", "city"                            },
                         {"data/worldclock/cityname",          "Lima"                            },
                         {"data/worldclock/country",           "Peru"                            },
                         {"data/worldclock/timezone",          "PET"                             },
                         {"data/worldclock/timezone_path",     "America/Lima"                    },
    })
        .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-c4/watchface.xml"), kWorldClock)
        .After(MakeCurrent)
        .MaySet(prepared)
        .Logs("messageType = [watch-setting-update-world-clock]")
        .IsRefused();
    all.emplace_back("its timezone_path", kHome,
                     Values{
                         {"type",                              "watch-setting-update-world-clock"},
                         {"data/worldclock/complication_name", "city"                            },
                         {"data/worldclock/timezone_path",     "PATH"                            },
    })
        .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-c4/watchface.xml"),
              "/usr/share/zoneinfo/America/Lima")
        .After(MakeWorldClockCurrent)
        .MaySet(prepared)
        .Logs("messageType = [watch-setting-update-world-clock]");
    all.emplace_back("the face whose world clock is asked for", kManager,
                     Values{
                         {"type",       "watch-dual-clock-data"},
                         {"pkgid",      "PATH"                 },
                         {"group/name", "city"                 },
    })
        .Does(PathMessage::kAnswers, "success", kWorldClock)
        .Answers("fail", "fail");
    all.emplace_back("its group/name", kManager,
                     Values{
                         {"type",       "watch-dual-clock-data"},
                         {"pkgid",      kWorldClock            },
                         {"group/name", "PATH"                 },
    })
        .Does(PathMessage::kAnswers, "success", "city")
        .Answers("fail", "fail");
}

void AddEvaluations(PathMessageList& all)
{
    all.emplace_back("the face whose evaluation is saved", kFace,
                     Values{
                         {"evaluation-helper-op",             "evaluation-helper-op-save-duration"},
                         {"evaluation-helper-watchface-name", "PATH"                              },
                         {"evaluation-helper-data-duration",  "12"                                },
    })
        .Does(PathMessage::kSetsRow, "PREFERENCES:com.example.face+PATH+evaluation-helper-data-duration = 12",
              "face")
        .MaySet({"PREFERENCES:com.example.face+"})
        .Answers("0", "0");
    all.emplace_back("the face whose evaluation is loaded", kFace,
                     Values{
                         {"evaluation-helper-op",             "evaluation-helper-op-load-duration"},
                         {"evaluation-helper-watchface-name", "PATH"                              },
    })
        .Does(PathMessage::kAnswers, "0", "face")
        .Answers("0", "0");  // of what was saved under it
}

}  // namespace

void AddValues(PathMessageList& all)
{
    AddWorldClocks(all);
    AddEvaluations(all);
}

}  // namespace Campaign
