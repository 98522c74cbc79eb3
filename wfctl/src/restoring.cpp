#include "restoring.h"

#include <algorithm>

#include "area-copy.h"
#include "asset-checks.h"
#include "backup-agent.h"
#include "backup-contents.h"
#include "backup-report.h"
#include "current-face.h"
#include "documents.h"
#include "exit-status.h"
#include "json-text.h"
#include "missing-assets.h"
#include "photo-files.h"
#include "reading-files.h"

namespace Wfctl {

namespace {

constexpr char kSettingsListId[] = "com.corvane.watch-utils.setting-list";

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

bool GiveItem(BackupAgent& agent, const Backup& backup, const BackupItem& item)
{
    const std::string bytes = backup.Read(item);
    if (item.IsFace()) return agent.Give("watch", item.name, bytes);
    const AreaCopy copy(backup.PathOf(item), BackupAgent::kId, item.name);
    return agent.GivePicture(copy.Path(), item.bgType);
}

// What is not done is told, and the rest goes on.
template <typename Work>
bool IsDone(const Work& work)
{
    try {
        work();
        return true;
    } catch (const Stop& stop) {
        if (stop.Status() == Exit::kInterrupted) throw;
        Warn(stop.what());
        return false;
    }
}

}  // namespace

Restoring::Restoring(Connection& connection, const Backup& backup)
    : mConnection(connection),
      mBackup(backup),
      mItems(backup.Manifest().items),
      mProgress("restoring", mItems.size())
{
    const auto rank = [](const BackupItem& item) { return IsGalleryFace(item) ? 0 : item.IsFace() ? 1 : 2; };
    std::ranges::stable_sort(mItems, {}, rank);
}

void Restoring::Run()
{
    try {
        GiveAll();
        mProgress.Clear();
        for (const BackupItem& item : mItems)
            if (item.IsFace() && !HasFace(item)) Install(item);
        DrawAgain();
        mUpdater.reset();  // one application at a time
        SetCurrent();
    } catch (const Stop& stop) {
        const bool isInterrupted = stop.Status() == Exit::kInterrupted;
        const auto held = std::ranges::count_if(mItems, [&](const BackupItem& item) { return Has(item); });
        throw Stop(stop.Status(), (isInterrupted ? "interrupted" : stop.what()) + std::string("; ") +
                                      std::to_string(held) + " of " + std::to_string(mItems.size()) +
                                      (mItems.size() == 1 ? " item is" : " items are") +
                                      " on the watch, each of them whole; restore once more for all");
    }
}

void Restoring::GiveAll()
{
    BackupAgent agent(mConnection);
    BackupAgent::UntilTheEnd([&] {
        std::size_t given = 0;
        agent.BeginRestore();
        for (const BackupItem& item : mItems) {
            if (!GiveItem(agent, mBackup, item)) return false;
            mProgress.Show(++given);
        }
        const std::string& current = mBackup.Manifest().current;
        // Also without a face to show: whatever comes behind the face of the pictures makes room for them.
        return agent.Give(current.empty() ? "" : "watch-idle-changed", current) && agent.EndRestore();
    });
}

// As the editor: then the phone is told of it, as of the other faces.
void Restoring::Install(const BackupItem& item)
{
    const std::string xml = mBackup.Read(item);
    const FaceUpdate update{kCreated,           item.name,           xml, FactsOf(xml).title, "", true,
                            Seconds(kPatience), mBackup.PathOf(item)};
    if (!IsDone([&] { AsEditor().Store(update); })) return;
    WarnOfMissingAssets(item.name, DataUtil::AssetPaths(*DataUtil::ParseFace(xml).document));
}

void Restoring::SetCurrent()
{
    const std::string& current = mBackup.Manifest().current;
    if (HasCurrent() || !FindFace(current)) return;
    IsDone([&] { MakeCurrent(mConnection, {kSettingsListId, ""}, current, Seconds(kPatience)); });
}

// The face of the pictures comes before them, and the service draws what it takes at once.
void Restoring::DrawAgain()
{
    const auto faces = static_cast<double>(std::ranges::count_if(mItems, &BackupItem::IsFace));
    const Seconds patience(kPatience + faces);  // what is asked for already is drawn first
    for (const Face& face : ListFaces()) {
        if (!ShowsPictures(face)) continue;
        if (!IsDone([&] { AsEditor().Store(SameAgain(face, patience)); })) mStale.push_back(face.name);
    }
}

FaceUpdater& Restoring::AsEditor()
{
    if (!mUpdater) mUpdater = std::make_unique<FaceUpdater>(mConnection, kEditorId);
    return *mUpdater;
}

std::vector<std::string> Restoring::Missing() const
{
    std::vector<std::string> missing;
    for (const BackupItem& item : mItems)
        if (!Has(item)) missing.push_back(item.Title());
    if (!HasCurrent()) missing.push_back("the current face " + QuotedName(mBackup.Manifest().current));
    return missing;
}

bool Restoring::Has(const BackupItem& item) const
{
    return item.IsFace() ? HasFace(item) : HasPicture(item);
}

// Under its own name, or under that of the face that takes its place in this watch's family.
bool Restoring::HasFace(const BackupItem& item) const
{
    const std::string text = mBackup.Read(item);
    const auto holds = [&](const Face& face) {
        return IsFile(face.ResultXml()) &&
               ReadNamedFile(face.ResultXml()) == Replaced(text, item.name, face.name);
    };
    if (holds(WritableFace(item.name))) return true;
    return std::ranges::any_of(ListFaces(), [&](const Face& face) { return face.writable && holds(face); });
}

bool Restoring::HasPicture(const BackupItem& item) const
{
    const std::string path = PathOfPicture(item.bgType, item.name);
    return IsFile(path) && ReadNamedFile(path) == mBackup.Read(item);
}

bool Restoring::HasCurrent() const
{
    const std::string& wanted = mBackup.Manifest().current;
    const Current current = CurrentFace();
    const auto last = [](const std::string& face) { return face.substr(face.rfind('-') + 1); };
    if (wanted.empty() || IsCurrent(current, wanted)) return true;
    return !FindFace(wanted) && IsCurrent(current, current.face) && last(current.face) == last(wanted);
}

// Whether one of its pictures is of the backup, or gone with those that the backup replaced.
bool Restoring::ShowsPictures(const Face& face) const
{
    if (!face.writable || !IsFile(face.ResultXml())) return false;
    const auto document = DataUtil::ParseFace(ReadNamedFile(face.ResultXml())).document;
    if (!document) return false;
    return std::ranges::any_of(document->photos, [&](const DataUtil::Photos& photos) {
        const auto chosen = document->selection.photos.find(photos.id);
        if (chosen == document->selection.photos.end()) return false;
        const std::string path = PhotoPath(photos, chosen->second);
        const auto isShown = [&](const BackupItem& item) {
            return !item.IsFace() && PathOfPicture(item.bgType, item.name) == path;
        };
        return !IsFile(path) || std::ranges::any_of(mItems, isShown);
    });
}

}  // namespace Wfctl
