#include "path-message-groups.h"

namespace Campaign {

namespace {

constexpr char kLogged[] = "operation = corvane_cloud_restore";

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
    stage.Say(kBackupAgent, Given({
                                {"type",       "watch"                            },
                                {"pkgid",      kGalleryFace                       },
                                {"result_xml", stage.ShippedDocument(kGalleryFace)}
    }));
    stage.Say(kBackupAgent, Given({
                                {"type", "none"}
    }));
}

void AddRestoredFaces(const PathStage& stage, PathMessageList& all)
{
    const std::string document = stage.ShippedDocument(kDigitalFace);
    all.emplace_back("the face that is restored", kBackupAgent,
                     Given({
                         {"type",       "watch" },
                         {"pkgid",      "PATH"  },
                         {"result_xml", document},
    }))
        .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), kDigitalFace)
        .After(BeginRestore)
        .Logs(kLogged)
        .IsRefused();
    all.emplace_back("its result_xml", kBackupAgent,
                     Given({
                         {"type",       "watch"     },
                         {"pkgid",      kDigitalFace},
                         {"result_xml", "PATH"      },
    }))
        .Does(PathMessage::kMakes, FaceFile("com.corvane.watchface-mirel-e1/watchface.xml"), document)
        .After(BeginRestore)
        .Logs(kLogged);
    all.emplace_back("the current face that is restored", kBackupAgent,
                     Given({
                         {"type",  "watch-idle-changed"},
                         {"pkgid", "PATH"              },
    }))
        .Does(PathMessage::kSetsRow, CurrentFaceRows()[0] + " = PATH", kClassicFace)
        .MaySet(CurrentFaceRows())
        .After(BeginRestore)
        .Logs(kLogged);
}

void AddRestoredPictures(PathMessageList& all)
{
    all.emplace_back("the file_path of a picture that is restored", kBackupAgent,
                     Given({
                         {"type",      "image"       },
                         {"file_name", "harmless.png"},
                         {"file_path", "PATH"        },
                         {"bg_type",   kVariant      },
    }))
        .Does(PathMessage::kMakes, InVariant("harmless.png"), kHarmlessPicture)
        .Tries(SourcePaths())
        .After(BeginRestore)
        .Logs(kLogged);
    all.emplace_back("its file_name", kBackupAgent,
                     Given({
                         {"type",      "image"         },
                         {"file_name", "PATH"          },
                         {"file_path", kHarmlessPicture},
                         {"bg_type",   kVariant        },
    }))
        .Does(PathMessage::kMakes, InVariant("harmless.png"), "harmless.png")
        .After(BeginRestore)
        .Logs(kLogged);
    all.emplace_back("its bg_type", kBackupAgent,
                     Given({
                         {"type",      "image"         },
                         {"file_name", "harmless.png"  },
                         {"file_path", kHarmlessPicture},
                         {"bg_type",   kAnyVariant     },
    }))
        .Does(PathMessage::kMakes, InVariant("harmless.png"), "u1")
        .After(BeginRestore)
        .Logs(kLogged)
        .IsRefused();
}

}  // namespace

void AddRestored(const PathStage& stage, PathMessageList& all)
{
    AddRestoredFaces(stage, all);
    AddRestoredPictures(all);
}

}  // namespace Campaign
