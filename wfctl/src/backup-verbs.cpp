// Playing the backup agent: backup, restore.

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "application-table.h"
#include "area-copy.h"
#include "areas.h"
#include "backup-agent.h"
#include "backup-folder.h"
#include "data-util.h"
#include "exit-status.h"
#include "faces.h"
#include "json-text.h"
#include "private-watch.h"
#include "progress.h"
#include "service-peer.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr char kViewerId[] = "com.corvane.watchface";
constexpr char kGalleryFace[] = "com.corvane.watchface-mirel-u1";
constexpr char kAgentId[] = "com.corvane.watch-utils.service";
constexpr int kMostBeginnings = 5;  // with a service that ends in the middle

struct BackupArguments {
    std::string folder;
    bool yes = false;
    bool isCheck = false;
};

// Where the pictures of a kind lie, with "/" at the end.
std::string PicturesFolder(const std::string& bgType)
{
    const std::string theme = Platform::CurrentAreas().TrustedOf(std::string(Platform::kFacesId)) + "theme/";
    return theme + (bgType == kThemePictures ? "Backgrounds/" : "GalleryBackgrounds/U1/");
}

std::map<std::string, std::string> PicturesOf(const std::string& bgType)
{
    std::map<std::string, std::string> paths;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(PicturesFolder(bgType), error)) {
        if (entry.is_regular_file(error)) paths[entry.path().filename()] = entry.path();
    }
    return paths;
}

bool IsFile(const std::string& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error);
}

std::string Quoted(const std::string& name)
{
    return JsonLine(BytesToJson(name));
}

std::string Counted(std::size_t count, const std::string& one, const std::string& many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

// "2 faces and 1 picture", without what there is none of.
std::string CountedItems(std::size_t faces, std::size_t pictures)
{
    const std::string face = Counted(faces, "face", "faces");
    const std::string picture = Counted(pictures, "picture", "pictures");
    if (faces == 0 || pictures == 0) return faces == 0 ? picture : face;
    return face + " and " + picture;
}

// Backup

// What the conversation does not carry and a backup cannot hold.
std::vector<std::string> NotCarried()
{
    std::vector<std::string> notes;
    std::error_code error;
    const fs::path gallery = fs::path(PicturesFolder(kGalleryPictures)).parent_path().parent_path();
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(gallery, error)) {
        if (entry.is_regular_file(error) && entry.path().parent_path() != gallery / "U1")
            notes.push_back("the picture " + Quoted(fs::relative(entry.path(), gallery)) +
                            ": only those of u1 and of the theme are backed up");
    }
    for (const Face& face : ListFaces()) {
        if (!face.writable || !IsFile(face.ResultXml()) || !IsFile(face.WatchfaceXml())) continue;
        const std::unique_ptr<char, decltype(&free)> flat(
            data_util_resultxml_memory_converter(ReadNamedFile(face.ResultXml()).c_str()), &free);
        if (flat && ReadNamedFile(face.WatchfaceXml()) != flat.get())
            notes.push_back("what only the watchface.xml of " + Quoted(face.name) +
                            " has: a world clock or a limited complication");
    }
    return notes;
}

// Puts what the service sends into a folder.
class BackingUp {
public:
    explicit BackingUp(BackupWriter& writer)
        : mWriter(writer), mProgress("backing up", std::max<std::size_t>(Expected(), 1))
    {
    }

    void Begin()
    {
        mWriter.Clear();
        mNotes.clear();
    }

    void Take(const bundle& item)
    {
        const std::string type = TextOf(item, "type");
        if (type == "watch") {
            Add(TextOf(item, "pkgid"), "", TextOf(item, "result_xml"));
        } else if (type == "image") {
            const std::string path = TextOf(item, "file_path");
            if (IsFile(path)) Add(TextOf(item, "file_name"), TextOf(item, "bg_type"), ReadNamedFile(path));
        }
        mProgress.Show(std::min(mWriter.Items().size(), Expected()));
    }

    // The service takes pictures back only after the face that shows them; a face that nobody changed is not
    // sent.
    void AddGalleryFace()
    {
        const auto isPicture = [](const BackupItem& item) { return !item.IsFace(); };
        if (std::ranges::none_of(mWriter.Items(), isPicture) || Has(kGalleryFace)) return;
        const std::string shipped = ShippedFaces() + kGalleryFace + "/" + kGalleryFace + "_result.xml";
        if (IsFile(shipped)) Add(kGalleryFace, "", ReadNamedFile(shipped));
    }

    // What was not sent: a face that fits into no message.
    void NoteMissing()
    {
        mProgress.Clear();
        for (const Face& face : ListFaces()) {
            const bool isSent = Has(face.name) || mLeftOut.contains(face.name);
            if (face.writable && IsFile(face.ResultXml()) && !isSent)
                mNotes.push_back("the face " + Quoted(face.name) + kNotSent);
        }
        for (const char* bgType : {kThemePictures, kGalleryPictures}) {
            for (const auto& picture : PicturesOf(bgType)) {
                if (!Has(picture.first, bgType) && !mLeftOut.contains(picture.first))
                    mNotes.push_back("the picture " + Quoted(picture.first) + kNotSent);
            }
        }
    }

    const std::vector<std::string>& Notes() const { return mNotes; }

private:
    static std::size_t Expected()
    {
        const auto faces = ListFaces();
        return static_cast<std::size_t>(std::ranges::count_if(faces, &Face::writable)) +
               PicturesOf(kThemePictures).size() + PicturesOf(kGalleryPictures).size();
    }

    bool Has(const std::string& name, const std::string& bgType = "") const
    {
        return std::ranges::any_of(mWriter.Items(), [&](const BackupItem& item) {
            return item.bgType == bgType && item.name == name;
        });
    }

    void Add(const std::string& name, const std::string& bgType, const std::string& bytes)
    {
        if (mWriter.Add(name, bgType, bytes)) return;
        mLeftOut.insert(name);
        mNotes.push_back((bgType.empty() ? "the face " : "the picture ") + Quoted(name) +
                         (bgType.empty() ? ": its document is one that no watch takes"
                                         : ": it is neither a PNG nor a JPEG, or too large"));
    }

    static constexpr char kNotSent[] = ": the service did not send it";

    BackupWriter& mWriter;
    const Progress mProgress;
    std::set<std::string> mLeftOut;
    std::vector<std::string> mNotes;
};

void PrintSummary(const Options& options, const char* what, const BackupManifest& manifest,
                  const std::string& folder, const std::vector<std::string>& notCarried)
{
    if (options.json) {
        Json faces = Json::array(), pictures = Json::array();
        for (const BackupItem& item : manifest.items)
            (item.IsFace() ? faces : pictures).push_back(BytesToJson(item.name));
        PrintLine(JsonLine(Json{
            {"folder",     BytesToJson(folder)          },
            {"faces",      faces                        },
            {"pictures",   pictures                     },
            {"current",    BytesToJson(manifest.current)},
            {"notCarried", notCarried                   }
        }));
        return;
    }
    const auto faces = static_cast<std::size_t>(std::ranges::count_if(manifest.items, &BackupItem::IsFace));
    PrintLine(std::string(what) + " " + Counted(faces, "face", "faces") + " and " +
              Counted(manifest.items.size() - faces, "picture", "pictures") +
              (manifest.current.empty() ? "" : "; the current face is " + Quoted(manifest.current)));
}

Exit BackUp(const Options& options, const BackupArguments& arguments)
{
    SelectWatch(options.root);
    BackupWriter writer(arguments.folder);
    Connection connection;
    RequireService(connection);
    BackupAgent agent(connection);
    BackingUp backup(writer);
    int beginnings = 0;
    do {
        if (++beginnings > kMostBeginnings)
            throw Stop(Exit::kError,
                       "the service ended in the middle, again and again; look for watchface-service in " +
                           LogPlace("watchface-service"));
        backup.Begin();
    } while (!agent.AskForBackup([&](const bundle& item) { backup.Take(item); }));
    backup.AddGalleryFace();
    backup.NoteMissing();
    std::vector<std::string> notes = backup.Notes();
    for (std::string& note : NotCarried()) notes.push_back(std::move(note));
    const Current current = CurrentFace();
    const std::string face = current.app == kViewerId ? current.face : "";
    const BackupManifest manifest = writer.Finish(face);
    for (const std::string& note : notes) Warn("not in the backup: " + note);
    PrintSummary(options, "backed up", manifest, arguments.folder, notes);
    return Exit::kDone;
}

// Restore

// What of this watch is the user's and does not stay: by name, by path.
struct Lost {
    std::vector<std::string> faces, pictures;  // that the backup has otherwise
    std::vector<std::string> removed;          // pictures that it has not
};

// Whether the user made something of the face: the service copies shipped ones as they are.
bool IsChanged(const Face& face)
{
    if (!IsFile(face.ResultXml())) return false;
    const std::string shipped = ShippedFaces() + face.name + "/" + face.name + "_result.xml";
    return !IsFile(shipped) || ReadNamedFile(shipped) != ReadNamedFile(face.ResultXml());
}

Lost LostTo(const Backup& backup)
{
    Lost lost;
    const std::vector<BackupItem>& items = backup.Manifest().items;
    for (const BackupItem& item : items) {
        const Face face = WritableFace(item.name);
        if (item.IsFace() && IsChanged(face) && ReadNamedFile(face.ResultXml()) != backup.Read(item))
            lost.faces.push_back(item.name);
    }
    if (std::ranges::none_of(items, IsGalleryFace)) return lost;
    for (const char* bgType : {kThemePictures, kGalleryPictures}) {
        for (const auto& [name, path] : PicturesOf(bgType)) {
            const auto isIt = [&, &name = name](const BackupItem& item) {
                return item.bgType == bgType && item.name == name;
            };
            const auto item = std::ranges::find_if(items, isIt);
            if (item == items.end())
                lost.removed.push_back(path);
            else if (backup.Read(*item) != ReadNamedFile(path))
                lost.pictures.push_back(path);
        }
    }
    return lost;
}

std::string RestoreCommand(const Options& options, const BackupArguments& arguments)
{
    return "wfctl restore --yes " +
           (options.root.empty() ? "" : "--root " + ShellQuoted(options.root) + " ") +
           ShellQuoted(arguments.folder);
}

std::string TitleAndNames(const std::string& title, const std::vector<std::string>& names)
{
    std::string text = title + ":\n";
    for (const std::string& name : names) text += "  " + Quoted(name) + "\n";
    return text;
}

// What is lost, for people; empty when nothing is.
std::string TextOf(const Lost& lost)
{
    std::string text;
    std::vector<std::string> replaced = lost.faces;
    replaced.insert(replaced.end(), lost.pictures.begin(), lost.pictures.end());
    if (!replaced.empty())
        text += TitleAndNames(CountedItems(lost.faces.size(), lost.pictures.size()) +
                                  " of this watch will be replaced by what the backup holds",
                              replaced);
    if (!lost.removed.empty())
        text += TitleAndNames(CountedItems(0, lost.removed.size()) +
                                  " of this watch will be removed, which the backup does not hold",
                              lost.removed);
    return text;
}

void AskForConsent(const Lost& lost, const Options& options, const BackupArguments& arguments)
{
    const std::string text = TextOf(lost);
    if (text.empty() || arguments.yes) return;
    if (!isatty(STDIN_FILENO))
        throw Stop(Exit::kUsage, text + "nothing was changed; type: " + RestoreCommand(options, arguments));
    std::cerr << text << "Go on? [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y" && answer != "yes")
        throw Stop(Exit::kNothingToDo, "nothing was changed");
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// Gives a backup to the watch, item by item.
class Restoring {
public:
    Restoring(BackupAgent& agent, const Backup& backup)
        : mAgent(agent),
          mBackup(backup),
          mItems(backup.Manifest().items),
          mProgress("restoring", mItems.size())
    {
        const auto rank = [](const BackupItem& item) {
            return IsGalleryFace(item) ? 0 : item.IsFace() ? 1 : 2;
        };
        std::ranges::stable_sort(mItems, {}, rank);
    }

    // False when the service ended in the middle.
    bool Run()
    {
        mGiven = 0;
        mAgent.BeginRestore();
        for (const BackupItem& item : mItems) {
            if (!Give(item)) return false;
            mProgress.Show(++mGiven);
        }
        const std::string& current = mBackup.Manifest().current;
        // Also without a face to show: whatever comes behind the face of the pictures makes room for them.
        if (!mAgent.Give(current.empty() ? "" : "watch-idle-changed", current)) return false;
        return mAgent.EndRestore();
    }

    std::size_t Given() const { return mGiven; }

    // What of the backup the watch does not hold.
    std::vector<std::string> Missing() const
    {
        mProgress.Clear();
        std::vector<std::string> missing;
        for (const BackupItem& item : mItems) {
            if (!(item.IsFace() ? HasFace(item) : HasPicture(item))) missing.push_back(item.Title());
        }
        const std::string& current = mBackup.Manifest().current;
        if (!current.empty() && !IsCurrent(current)) missing.push_back("the current face " + Quoted(current));
        return missing;
    }

private:
    bool Give(const BackupItem& item)
    {
        const std::string bytes = mBackup.Read(item);
        if (item.IsFace()) return mAgent.Give("watch", item.name, bytes);
        const AreaCopy copy(mBackup.PathOf(item), kAgentId, item.name);
        return mAgent.GivePicture(copy.Path(), item.bgType);
    }

    // Under its own name, or under that of the face that takes its place in this watch's family.
    bool HasFace(const BackupItem& item) const
    {
        const std::string text = mBackup.Read(item);
        const auto holds = [&](const Face& face) {
            return IsFile(face.ResultXml()) &&
                   ReadNamedFile(face.ResultXml()) == Replaced(text, item.name, face.name);
        };
        if (holds(WritableFace(item.name))) return true;
        return std::ranges::any_of(ListFaces(),
                                   [&](const Face& face) { return face.writable && holds(face); });
    }

    bool HasPicture(const BackupItem& item) const
    {
        const std::string path = PicturesFolder(item.bgType) + item.name;
        return IsFile(path) && ReadNamedFile(path) == mBackup.Read(item);
    }

    static bool IsCurrent(const std::string& name)
    {
        const Current current = CurrentFace();
        const auto last = [](const std::string& face) { return face.substr(face.rfind('-') + 1); };
        return current.app == kViewerId && (current.face == name || last(current.face) == last(name));
    }

    BackupAgent& mAgent;
    const Backup& mBackup;
    std::vector<BackupItem> mItems;
    const Progress mProgress;
    std::size_t mGiven = 0;
};

// Until the service has taken all without ending in between.
void RunToTheEnd(Restoring& restoring, std::size_t count)
{
    try {
        for (int beginnings = 0; beginnings < kMostBeginnings; ++beginnings) {
            if (restoring.Run()) return;
        }
    } catch (const Stop& stop) {
        const bool isInterrupted = stop.Status() == Exit::kInterrupted;
        throw Stop(stop.Status(), (isInterrupted ? "interrupted" : stop.what()) + std::string("; ") +
                                      std::to_string(restoring.Given()) + " of " +
                                      Counted(count, "item is", "items are") +
                                      " on the watch, each of them whole; restore once more for all");
    }
    throw Stop(Exit::kError,
               "the service ended in the middle, again and again; look for watchface-service in " +
                   LogPlace("watchface-service"));
}

Exit Restore(const Options& options, const BackupArguments& arguments)
{
    std::optional<Progress> checking;
    const Backup backup(arguments.folder, [&](std::size_t checked, std::size_t all) {
        if (!checking) checking.emplace("checking", all);
        checking->Show(checked);
    });
    checking.reset();
    const BackupManifest& manifest = backup.Manifest();
    if (arguments.isCheck) {
        PrintSummary(options, "whole:", manifest, arguments.folder, {});
        return Exit::kDone;
    }
    if (manifest.items.empty() && manifest.current.empty())
        throw Stop(Exit::kNothingToDo,
                   "[" + arguments.folder + "] is the backup of a watch that nobody had changed");
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    AskForConsent(LostTo(backup), options, arguments);
    BackupAgent agent(connection);
    Restoring restoring(agent, backup);
    RunToTheEnd(restoring, manifest.items.size());
    const std::vector<std::string> missing = restoring.Missing();
    if (!missing.empty()) {
        std::string text = "this watch did not take";
        for (const std::string& title : missing) text += (&title == &missing.front() ? " " : ", ") + title;
        throw Stop(Exit::kError, text + "; all else is restored; look for watchface-service in " +
                                     LogPlace("watchface-service"));
    }
    PrintSummary(options, "restored", manifest, arguments.folder, {});
    return Exit::kDone;
}

}  // namespace

Action DefineBackup(CLI::App& parser)
{
    const auto arguments = std::make_shared<BackupArguments>();
    parser.add_option("DIR", arguments->folder, "a new folder for the backup")->required();
    return [arguments](const Options& options) { return BackUp(options, *arguments); };
}

Action DefineRestore(CLI::App& parser)
{
    const auto arguments = std::make_shared<BackupArguments>();
    parser.add_option("DIR", arguments->folder, "the folder of a backup")->required();
    parser.add_flag("--yes", arguments->yes, "replace faces and pictures of this watch without asking");
    parser.add_flag("--check", arguments->isCheck,
                    "only look whether the backup is whole; no watch is needed");
    return [arguments](const Options& options) { return Restore(options, *arguments); };
}

}  // namespace Wfctl
