#include "path-message-groups.h"

namespace Campaign {

namespace {

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

void AddAdditions(PathMessageList& all)
{
    all.emplace_back("a picture of the theme that is added", kEditor,
                     Values{
                         {"type",    "watch-bg-add"    },
                         {"bg_type", "watch-bg-digital"},
                         {"bg_list", "PATH"            },
    })
        .Does(PathMessage::kMakes, std::string(kPictures) + "/harmless.png", kHarmlessPicture)
        .Tries(SourcePaths())
        .Answers("fail", "");
    all.emplace_back("a picture of a gallery that is added", kEditor,
                     Values{
                         {"type",    "watch-bg-add"},
                         {"bg_type", kVariant      },
                         {"bg_list", "PATH"        },
    })
        .Does(PathMessage::kMakes, InVariant("harmless.png"), kHarmlessPicture)
        .Tries(SourcePaths())
        .Answers("fail", "");
    all.emplace_back("the bg_type of a picture that is added", kEditor,
                     Values{
                         {"type",    "watch-bg-add"  },
                         {"bg_type", kAnyVariant     },
                         {"bg_list", kHarmlessPicture},
    })
        .Does(PathMessage::kMakes, InVariant("harmless.png"), "u1")
        .Answers("fail", "fail")
        .IsRefused();
}

void AddDeletions(PathMessageList& all)
{
    all.emplace_back("a picture of the theme that is deleted", kEditor,
                     Values{
                         {"type",    "watch-bg-del"    },
                         {"bg_type", "watch-bg-digital"},
                         {"bg_list", "PATH"            },
    })
        .Does(PathMessage::kRemoves, std::string(kPictures) + "/harmless.png", "harmless.png")
        .After(AddHarmless)
        .Answers("success", "success")
        .IsRefused();
    for (const char* arrayKey : {"", "bg_list"}) {
        const char* status = *arrayKey ? "" : "success";  // it stands behind the array, where nobody reads
        all.emplace_back("a picture of a gallery that is deleted", kEditor,
                         Values{
                             {"type",    "watch-bg-del"},
                             {"bg_type", kVariant      },
                             {"bg_list", "PATH"        },
        })
            .Does(PathMessage::kRemoves, InVariant("harmless.png"), "harmless.png")
            .After(AddHarmless)
            .WithArray(arrayKey)
            .Answers(status, status)
            .Logs("messageType = [watch-bg-del]")
            .IsRefused();
    }
    all.emplace_back("the bg_type of a picture that is deleted", kEditor,
                     Values{
                         {"type",    "watch-bg-del"},
                         {"bg_type", kAnyVariant   },
                         {"bg_list", "kept"        },
    })
        .Does(PathMessage::kRemoves, InVariant("kept"), "u1")
        .After(AddToVariant)
        .Answers("success", "success")
        .IsRefused();
}

void AddHeld(PathMessageList& all)
{
    all.emplace_back("the bg_type of what is saved", kEditor,
                     Values{
                         {"type",    "watch-bg-save"},
                         {"bg_type", kAnyVariant    },
    })
        .Does(PathMessage::kRemoves, InVariant("kept"), "u1")
        .After(HoldDeletion)
        .Answers("success", "success")
        .IsRefused();
    all.emplace_back("the bg_type of what is cancelled", kEditor,
                     Values{
                         {"type",    "watch-bg-cancel"},
                         {"bg_type", kAnyVariant      },
    })
        .Does(PathMessage::kRemoves, InVariant("kept"), "u1")
        .After(HoldAddition)
        .Answers("success", "success")
        .IsRefused();
}

}  // namespace

void AddPictures(PathMessageList& all)
{
    AddAdditions(all);
    AddDeletions(all);
    AddHeld(all);
}

}  // namespace Campaign
