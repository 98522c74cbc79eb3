// What the backup agent asks for.

#include "peer-messages-model.h"
#include "service-config-mirel.h"

namespace PeerMessages {

namespace {

constexpr const char* kBackedUpPictures[] = {"watch-bg-digital", kGalleryU1};

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

}  // namespace

Expected Model::ExpectedOfAgent()
{
    const std::string operation = Text("operation"), step = Text("message");
    if (step == "restore_start") mRestore = kNoGalleryFace;
    Expected expected = operation == "corvane_cloud_restore" ? Item() : Expected();
    Told before;
    if (step == "restore_finished") before.push_back({kBackupAgent, {{"message", "restore_finished"}}});
    if (operation == "corvane_cloud_backup") AddBackup(&before);
    expected.inAnyOrder = true;
    for (Outcome& outcome : expected.outcomes) {
        outcome.told.insert(outcome.told.begin(), before.begin(), before.end());
        Order(outcome.told);
    }
    const auto sent = mPlatform.SentTo(kBackupAgent);
    Require(operation != "corvane_cloud_backup" ||
                (!sent.empty() && sent.back().Text("message") == "backup_finished"),
            "a backup does not end with its end");
    return expected;
}

void Model::AddBackup(Told* told) const
{
    const std::string faces = Relative(mPlatform.RW("watchlist")) + "/";
    for (const auto& [path, what] : mBefore) {
        const std::string face = path.starts_with(faces) ? path.substr(faces.size()) : "";
        const auto document = mBefore.find(path + "/" + face + "_result.xml");
        if (!IsPlain(face) || document == mBefore.end() || document->second.front() != '=') continue;
        told->push_back({
            kBackupAgent, {{"type", "watch"}, {"pkgid", face}, {"result_xml", document->second.substr(1)}}
        });
    }
    for (const std::string bgType : kBackedUpPictures) {
        for (const std::string& name : PicturesIn(bgType)) {
            told->push_back({
                kBackupAgent,
                {{"type", "image"},
                  {"file_name", name},
                  {"file_path", Pictures(bgType) + name},
                  {"bg_type", bgType}}
            });
        }
    }
    told->push_back({kBackupAgent, {{"message", "backup_finished"}}});
}

void Model::RemoveOldPictures(Expected* expected)
{
    mRestore = kOldPicturesRemoved;
    expected->change.removes = true;
    for (const std::string bgType : kBackedUpPictures) {
        const Strings names = PicturesIn(bgType);
        for (const std::string& name : names)
            expected->change.below.push_back(Relative(Pictures(bgType) + name));
        if (names.empty()) continue;
        for (Outcome& outcome : expected->outcomes) {
            outcome.told.push_back({
                kManager, {{"type", "watch-bg-del"}, {"bg_type", bgType}, {"bg_list", names}}
            });
        }
    }
}

Expected Model::Item()
{
    const std::string kind = Text("type");
    const std::string face = Name().empty() ? "" : WatchfaceService::GetWatchfaceFamily(Name());
    const bool isBehindGallery = mRestore == kGalleryFaceRestored;
    Expected expected = kind == "watch" && !face.empty() ? RestoredFace(face) : Expected();
    if (isBehindGallery) {
        const RestoreState next = mRestore;
        RemoveOldPictures(&expected);
        if (kind == "watch" && face == kGalleryFace) mRestore = next;
    }
    if (kind == "image" && mRestore == kOldPicturesRemoved) RestorePicture(&expected);
    if (kind == "watch-idle-changed" && !face.empty()) {
        Outcome& outcome = expected.outcomes.front();
        outcome.stores.push_back(std::string("pref set ") + kRequesterPref + "=" + kBackupAgent);
        AddSetFace(&outcome, face);
        outcome.told.push_back({
            kManager, {{"type", "watch-idle-changed"}, {"pkgid", face}}
        });
    }
    return expected;
}

Expected Model::RestoredFace(const std::string& face)
{
    if (face == kGalleryFace) mRestore = kGalleryFaceRestored;
    const std::string document = Replaced(Text("result_xml"), Name(), face);
    if (document.empty()) return {};
    Outcome success;
    success.told.push_back({
        kEditor, {{"type", "watch-setting-updated"}, {"pkgid", face}}
    });
    Message notice{
        {"type",          "watch-setting-updated"},
        {"pkgid",         face                   },
        {"data/xml_data", document               }
    };
    const std::string label = WatchfaceService::GetLabelId(face);
    if (!label.empty()) notice["data/label"] = label;
    success.told.emplace_back(kManager, notice);
    return {
        {success, {false}},
        { {Relative(FaceFile(face, ""))},   true,   false},
        [this, face, document](bool isDone) {
            if (isDone) return RequireStored(face, document);
            Require(!HasNewFiles(), "a refused document changes a file");
         }
    };
}

// The manager is told however it went.
void Model::RestorePicture(Expected* expected)
{
    if (Text("file_path").empty()) return;
    const std::string bgType = Text("bg_type");
    const std::string place = Pictures(bgType) + LastComponent(Text("file_path"));
    expected->outcomes.front().told.push_back({
        kManager, {{"type", "watch-bg-add"}, {"bg_type", bgType}, {"bg_list", place}}
    });
    expected->change.below.push_back(Relative(Pictures(bgType)));
    expected->change.adds = true;
}

}  // namespace PeerMessages
