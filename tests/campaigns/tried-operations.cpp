// What is done to a tried watch, as its peers do it.

#include "a-tried-watch.h"

namespace Campaign {

namespace {

std::string NumberedDocument(const TriedWatch& watch, int number)
{
    constexpr std::string_view kInscription = "AUTOMATIC";
    std::string text = watch.ShippedDocument(kClassicFace);
    char shown[16];
    std::snprintf(shown, sizeof shown, "NO %06d", number);
    return text.replace(text.find(kInscription), kInscription.size(), shown);
}

}  // namespace

Answer InstallDigitalFace(TriedWatch& watch)
{
    const std::string document = watch.ShippedDocument(kDigitalFace);
    const std::string preview = watch.ShippedPreview(kDigitalFace);
    return watch.Ask(kManager, {
                                   {"type",           "watch-setting-created"},
                                   {"pkgid",          kDigitalFace           },
                                   {"data/label",     "Mirel"                },
                                   {"data/xml_data",  document               },
                                   {"data/icon_path", preview                }
    });
}

Answer UpdateTo(TriedWatch& watch, int number, const std::string& preview)
{
    const std::string document = NumberedDocument(watch, number);
    return watch.Ask(kEditor, {
                                  {"type",           "watch-setting-updated"},
                                  {"pkgid",          kClassicFace           },
                                  {"data/label",     "Mirel"                },
                                  {"data/xml_data",  document               },
                                  {"data/icon_path", preview                }
    });
}

namespace {

constexpr char kVariant[] = "watch-bg-gallery-u1";
constexpr char kPending[] = "watch-bg-pending";

}  // namespace

Answer SaveHeldBackgrounds(TriedWatch& watch)
{
    return watch.Ask(kEditor, {
                                  {"type",    "watch-bg-save"},
                                  {"bg_type", kVariant       }
    });
}

namespace {

Answer Update(TriedWatch& watch)
{
    return UpdateTo(watch, 2, watch.ShippedPreview(kDigitalFace));
}

Answer Delete(TriedWatch& watch)
{
    return watch.Ask(kManager, {
                                   {"type",  "watch-setting-deleted"},
                                   {"pkgid", kClassicFace           }
    });
}

}  // namespace

// What an earlier one held is let go of first, so that it begins like the first.
Answer SaveBackgrounds(TriedWatch& watch)
{
    SaveHeldBackgrounds(watch);
    const std::string picture = watch.Picture("new.png", "a new picture");
    const Answer added = watch.Ask(
        kEditor,
        {
            {"type",    "watch-bg-add"},
            {"bg_type", kVariant      },
            {kPending,  "true"        },
            {"bg_list", picture       }
    });
    const Answer deleted = watch.Ask(
        kEditor,
        {
            {"type",    "watch-bg-del"},
            {"bg_type", kVariant      },
            {kPending,  "true"        },
            {"bg_list", "old.png"     }
    });
    const Answer saved = SaveHeldBackgrounds(watch);
    Answer all = Answer::kSuccess;
    for (const Answer answer : {added, deleted, saved}) {
        if (answer == Answer::kFailure) return answer;
        if (answer == Answer::kNone) all = answer;
    }
    return all;
}

namespace {

Answer DeleteBackground(TriedWatch& watch)
{
    return watch.Ask(kEditor, {
                                  {"type",    "watch-bg-del"},
                                  {"bg_type", kVariant      },
                                  {"bg_list", "old.png"     }
    });
}

void GiveBack(TriedWatch& watch, Values item)
{
    item.emplace_back("operation", "corvane_cloud_restore");
    watch.Ask(kBackupAgent, item);
}

// The gallery face, a picture in place of those that are there, and the current face.
Answer Restore(TriedWatch& watch)
{
    const std::string picture = watch.Picture("new.png", "a new picture");
    const std::string document = watch.ShippedDocument(kGalleryFace);
    GiveBack(watch, {
                        {"message", "restore_start"}
    });
    GiveBack(watch, {
                        {"type",       "watch"     },
                        {"pkgid",      kGalleryFace},
                        {"result_xml", document    }
    });
    GiveBack(watch,
             {
                 {"type",      "image"  },
                 {"file_name", "new.png"},
                 {"file_path", picture  },
                 {"bg_type",   kVariant }
    });
    GiveBack(watch, {
                        {"type",  "watch-idle-changed"},
                        {"pkgid", kGalleryFace        }
    });
    GiveBack(watch, {
                        {"message", "restore_finished"}
    });
    return Answer::kNone;
}

Answer BackUp(TriedWatch& watch)
{
    return watch.Ask(kBackupAgent, {
                                       {"operation", "corvane_cloud_backup"}
    });
}

Answer ChangeCurrentFace(TriedWatch& watch)
{
    return watch.Ask(kHome, {
                                {"type",  "watch-idle-changed"},
                                {"pkgid", kDigitalFace        }
    });
}

Answer SaveDuration(TriedWatch& watch, const char* duration)
{
    return watch.Ask(kEvaluator, {
                                     {"evaluation-helper-op",             "evaluation-helper-op-save-duration"},
                                     {"evaluation-helper-watchface-name", kClassicFace                        },
                                     {"evaluation-helper-data-duration",  duration                            }
    });
}

Answer SaveNewDuration(TriedWatch& watch)
{
    return SaveDuration(watch, "350");
}

constexpr const char* kFilesOfAFace[] = {"_result.xml", "/watchface.xml", ".png"};
constexpr const char* kDeletedPicture[] = {"/U1/old.png"};

// clang-format off
constexpr Operation kOperations[] = {
    {"install",             InstallDigitalFace, true,  kFilesOfAFace  },
    {"update",              Update,             true,  kFilesOfAFace  },
    {"delete",              Delete,             true,  {}             },
    {"background save",     SaveBackgrounds,    true,  kDeletedPicture},
    {"background deletion", DeleteBackground,   true,  kDeletedPicture},
    {"restore",             Restore,            false, {}             },
    {"backup",              BackUp,             false, {}             },
    {"evaluation save",     SaveNewDuration,    true,  {}             },
    {"current face",        ChangeCurrentFace,  false, {}             },
};
// clang-format on

// Whether this is there, with that content.
bool Holds(const State& state, const std::string& path, const std::string& content)
{
    const auto found = state.find(path);
    return found != state.end() && found->second == content;
}

}  // namespace

std::vector<std::string> Undone(const State& now, const State& latter)
{
    std::vector<std::string> undone;
    for (const auto& [path, content] : now) {
        if (!Holds(latter, path, content)) undone.push_back(path);
    }
    for (const auto& [path, content] : latter) {
        if (!now.contains(path)) undone.push_back(path);
    }
    return undone;
}

std::vector<std::string> Damage(const State& now, const State& former, const State& latter,
                                const Allowance& isAllowed)
{
    std::vector<std::string> damage;
    for (const auto& [path, content] : now) {
        const bool isWhole = Holds(former, path, content) || Holds(latter, path, content) ||
                             (isAllowed && isAllowed(path, content));
        if (!isWhole) damage.push_back("is neither as before nor as after: " + path);
    }
    for (const auto& [path, content] : former) {
        if (latter.contains(path) && !now.contains(path)) damage.push_back("is lost: " + path);
    }
    return damage;
}

std::span<const Operation> Operations()
{
    return kOperations;
}

State FormerState(TriedWatch& watch)
{
    const auto require = [&watch](Answer answer) {
        if (answer != Answer::kSuccess)
            throw std::runtime_error("the watch does not work\n" + watch.LogFrom(0));
    };
    require(UpdateTo(watch, 1, watch.ShippedPreview(kClassicFace)));
    const std::string picture = watch.Picture("old.png", "an old picture");
    const Answer added =
        watch.Ask(kEditor, {
                               {"type",    "watch-bg-add"},
                               {"bg_type", kVariant      },
                               {"bg_list", picture       }
    });
    require(added);
    require(SaveDuration(watch, "1"));
    watch.Ask(kEditor, {
                           {"type",  "watch-idle-changed"},
                           {"pkgid", kClassicFace        }
    });
    watch.Settle();
    return watch.Look();
}

}  // namespace Campaign
