#include "path-message-groups.h"

#include <stdexcept>
#include <utility>

namespace Campaign {

namespace {

constexpr char kBlank[] = "com.corvane.watchface-mirel-c2";  // nothing else is said of this one

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

void InstallClassic(PathStage& stage, const std::string&)
{
    Install(stage, kClassicFace, stage.ShippedPreview(kClassicFace));
}

void AddInstallations(const PathStage& stage, PathMessageList& all)
{
    const std::string document = stage.ShippedDocument(kClassicFace);
    for (const auto& [type, from] : {
             std::pair{"watch-setting-created", kManager},
             std::pair{"watch-setting-updated", kEditor },
    }) {
        all.emplace_back("the face that is installed or updated", from,
                         Values{
                             {"type",          type    },
                             {"pkgid",         "PATH"  },
                             {"data/xml_data", document},
        })
            .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), kDigitalFace)
            .Answers("fail", "fail")
            .IsRefused();
        all.emplace_back("its icon_path", from,
                         Values{
                             {"type",           type        },
                             {"pkgid",          kClassicFace},
                             {"data/xml_data",  document    },
                             {"data/icon_path", "PATH"      },
        })
            .Does(PathMessage::kMakes,
                  FaceFile("com.corvane.watchface-mirel-c1/com.corvane.watchface-mirel-c1.png"),
                  stage.ShippedPreview(kDigitalFace))
            .Tries(SourcePaths())
            .Answers("success", "");
        all.emplace_back("its xml_data", from,
                         Values{
                             {"type",          type        },
                             {"pkgid",         kDigitalFace},
                             {"data/xml_data", "PATH"      },
        })
            .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), document)
            .Answers("fail", "fail");
    }
}

}  // namespace

void AddFaces(const PathStage& stage, PathMessageList& all)
{
    AddInstallations(stage, all);
    all.emplace_back("the face that is deleted", kManager,
                     Values{
                         {"type",  "watch-setting-deleted"},
                         {"pkgid", "PATH"                 },
    })
        .Does(PathMessage::kRemoves, FaceFile("com.corvane.watchface-mirel-c1/watchface.xml"), kClassicFace)
        .After(InstallClassic)
        .Answers("fail", "success")
        .IsRefused();
    all.emplace_back("the face that becomes current", kHome,
                     Values{
                         {"type",  "watch-idle-changed"},
                         {"pkgid", "PATH"              },
    })
        .Does(PathMessage::kSetsRow, CurrentFaceRows()[0] + " = PATH", kDigitalFace)
        .MaySet(CurrentFaceRows())
        .Logs("idle clock set done!!");
    all.emplace_back("the face that was drawn", kCapture,
                     Values{
                         {"type",  "watch-capture-finished"},
                         {"pkgid", "PATH"                  },
    })
        .Does(PathMessage::kAsks, kBlank, kBlank)
        .After(BreakPreview)
        .Logs("messageType = [watch-capture-finished]");
}

}  // namespace Campaign
