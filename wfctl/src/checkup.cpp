#include "checkup.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

#include "application-table.h"
#include "areas.h"
#include "asset-checks.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "flat-checks.h"
#include "flat-origin.h"
#include "folder-entries.h"
#include "missing-assets.h"
#include "photo-files.h"
#include "preview-state.h"
#include "private-watch.h"
#include "reading-files.h"
#include "shell-command.h"
#include "world-clock-fields.h"
#include "writable-path-posix.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr char kMarker[] = "without_result_xml";

constexpr AilmentKind kKinds[] = {
    {"preview-missing",     "lists show the face without a picture",                         Remedy::kPreview},
    {"preview-no-png",      "lists show the face without a picture",                         Remedy::kPreview},
    {"preview-blank",       "lists show one colour for the face",                            Remedy::kPreview},
    {"preview-older",       "lists show the face as it was before it was changed",           Remedy::kPreview},
    {"no-flat-document",    "there is nothing to draw the face from",                        Remedy::kPreview},
    {"stale-flat-document", "the face is drawn as it was before it was changed",             Remedy::kPreview},
    {"no-document",         "the service sees no face there, and nobody ever looks at it",   Remedy::kMove   },
    {"bad-document",        "the face cannot be edited or drawn",                            Remedy::kAdvice },
    {"bad-flat-document",   "the face cannot be drawn",                                      Remedy::kPreview},
    {"asset-missing",       "the face is shown without it",                                  Remedy::kAdvice },
    {"photo-missing",       "the face shows its own picture instead, once it is drawn anew", Remedy::kAdvice },
    {"photo-damaged",       "the face shows its own picture instead, once it is drawn anew", Remedy::kAdvice },
    {"left-over",           "a program was killed while it wrote, and nobody reads it",      Remedy::kMove   },
    {"unknown-file",        "nobody reads it, and it takes room",                            Remedy::kMove   },
    {"no-current-face",     "the watch has nothing to show",                                 Remedy::kAdvice },
    {"stale-preference",    "it names a face that is gone",                                  Remedy::kAdvice },
};

const AilmentKind* Kind(std::string_view code)
{
    return std::ranges::find(kKinds, code, &AilmentKind::code);
}

bool Exists(const std::string& path)
{
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

bool IsLeftOver(const fs::path& path)
{
    return path.filename().string().starts_with(Platform::kUnfinishedPrefix);
}

class Checkup {
public:
    std::vector<Ailment> Run()
    {
        for (const Face& face : mFaces) LookAtFace(face);
        LookAtWatchlist();
        LookForLeftOvers();
        LookAtNames();
        return std::move(mFound);
    }

private:
    void Add(const std::string& code, const std::string& path, const std::string& face, std::string what,
             std::string advice)
    {
        mFound.push_back({Kind(code), path, face, std::move(what), std::move(advice)});
    }

    void LookAtFace(const Face& face)
    {
        const std::string redraw = Exists(face.ResultXml()) ? RedrawCommand(face) : DeleteCommand(face);
        const bool isBad = LookAtDocuments(face);
        if (!isBad && !Exists(face.WatchfaceXml()))
            Add("no-flat-document", face.WatchfaceXml(), face.name, "has no watchface.xml", redraw);
        if (!isBad && IsStale(face))
            Add("stale-flat-document", face.WatchfaceXml(), face.name,
                "is not what the face's result XML gives", redraw);
        LookAtImages(face);
        if (isBad) return;
        const PreviewReport preview = CheckPreview(face);
        if (preview.state == PreviewState::kGood) return;
        Add("preview-" + std::string(NameOf(preview.state)), face.Preview(), face.name,
            "its preview is " + std::string(TextOf(preview.state)), redraw);
    }

    // Only where the service makes it, and not of a copy of what was shipped.
    static bool IsStale(const Face& face)
    {
        const auto document = DocumentOf(face);
        const auto flat = ReadText(face.WatchfaceXml());
        return face.writable && document && flat && !DataUtil::IsMadeFrom(*flat, *document) &&
               !IsAsShipped(face);
    }

    static bool IsAsShipped(const Face& face)
    {
        const Face shipped{face.name, false, true, false, ShippedFaces() + face.name + "/"};
        return ReadText(shipped.ResultXml()) == ReadText(face.ResultXml()) &&
               ReadText(shipped.WatchfaceXml()) == ReadText(face.WatchfaceXml());
    }

    std::string RedrawCommand(const Face& face) const
    {
        return RunningWatchCommand("preview request " + ShellWord(face.name));
    }

    std::string DeleteCommand(const Face& face) const
    {
        return RunningWatchCommand("delete " + ShellWord(face.name)) +
               (face.shipped ? "  # what was changed of it is lost" : "  # the face is lost");
    }

    // Whether one of them is not accepted.
    bool LookAtDocuments(const Face& face)
    {
        const bool hasResult = Exists(face.ResultXml());
        if (hasResult && !IsGood(face.ResultXml(), true)) {
            AddBadDocument(face, face.ResultXml());
            return true;
        }
        if (!Exists(face.WatchfaceXml()) || IsGood(face.WatchfaceXml(), false)) return false;
        if (hasResult)
            Add("bad-flat-document", face.WatchfaceXml(), face.name, "is not accepted", RedrawCommand(face));
        else
            AddBadDocument(face, face.WatchfaceXml());
        return true;
    }

    // What nobody can make anew: a shipped face has another, of one's own the user has.
    void AddBadDocument(const Face& face, const std::string& path)
    {
        const std::string quoted = ShellQuoted(path);
        const std::string mend = face.writable && face.shipped
                                     ? ", mend it, or: " + DeleteCommand(face)
                                     : ", mend it, then: " + RunningWatchCommand("install " + quoted);
        Add("bad-document", path, face.name, "is not accepted", WatchCommand("validate " + quoted) + mend);
    }

    void LookAtImages(const Face& face)
    {
        const auto document = DocumentOf(face);
        if (!document) return;
        LookAtAssets(face, *document);
        LookAtPhotos(face, *document);
    }

    void LookAtAssets(const Face& face, const DataUtil::FaceDocument& document)
    {
        for (const std::string& asset : MissingAssets(face, DataUtil::AssetPaths(document))) {
            const std::string path = face.folder + asset;
            Add("asset-missing", path, face.name, "is not there, and [" + face.name + "] names it",
                "install -D -m 644 " + ShellQuoted(fs::path(asset).filename()) + " " + ShellQuoted(path) +
                    ", then: " + RedrawCommand(face));
        }
    }

    void LookAtPhotos(const Face& face, const DataUtil::FaceDocument& document)
    {
        for (const DataUtil::Photos& photos : document.photos) {
            const auto chosen = document.selection.photos.find(photos.id);
            if (chosen == document.selection.photos.end()) continue;
            const std::string path = PhotoPath(photos, chosen->second);
            const bool isThere = Exists(path);
            const std::string problem = isThere ? PhotoProblem(path) : "is gone";
            if (problem.empty()) continue;
            Add(isThere ? "photo-damaged" : "photo-missing", path, face.name,
                problem + ", and is chosen for [" + photos.id + "] of [" + face.name + "]",
                RunningWatchCommand("edit " + ShellWord(face.name) + " --photo " +
                                    ShellQuoted(photos.id + "=")) +
                    ", or: " + AddCommand(photos, chosen->second));
        }
    }

    // Nothing where it cannot be read.
    static std::optional<std::string> ReadText(const std::string& path)
    {
        try {
            return ReadNamedFile(path);
        } catch (const Stop&) {
            return std::nullopt;
        }
    }

    static bool IsGood(const std::string& path, bool isResultXml)
    {
        const auto text = ReadText(path);
        if (!text || isResultXml) return text && DataUtil::ParseFace(*text).document;
        return std::ranges::none_of(DataUtil::CheckFlat(*text), [](const DataUtil::Finding& finding) {
            return finding.severity == DataUtil::Severity::kError;
        });
    }

    void LookAtWatchlist()
    {
        const std::string list = fs::path(WritableFace("x").folder).parent_path().parent_path().string();
        for (const fs::path& path : EntriesOf(list)) {
            if (IsLeftOver(path)) continue;
            const Face face = WritableFace(path.filename().string());
            std::error_code error;
            if (!fs::is_directory(fs::symlink_status(path, error)))
                AddMovable("unknown-file", path, "", "is no face's folder");
            else if (!Exists(face.ResultXml()) && !Exists(face.folder + kMarker))
                AddMovable("no-document", path, face.name,
                           EntriesOf(face.folder).empty()
                               ? "is empty, as a face that was refused leaves it"
                               : "has neither " + face.name + "_result.xml nor " + kMarker);
            else
                LookAtFolder(face);
        }
    }

    void LookAtFolder(const Face& face)
    {
        const auto assets = AssetEntriesOf(face);
        if (!assets) return;
        const std::string known[] = {face.ResultXml(), face.WatchfaceXml(), face.Preview(),
                                     face.folder + kMarker};
        for (const fs::path& path : EntriesOf(face.folder)) {
            if (std::ranges::find(known, path.string()) == std::end(known) && !IsLeftOver(path) &&
                !assets->contains(path.filename().string()))
                AddMovable("unknown-file", path, face.name, "is no file of a face");
        }
    }

    // What of its folder the face's document may name as images; nothing where that is not known.
    static std::optional<std::set<std::string>> AssetEntriesOf(const Face& face)
    {
        const auto document = DocumentOf(face);
        if (!document) return std::nullopt;
        std::set<std::string> entries;
        for (const std::string& path : DataUtil::AssetPaths(*document))
            entries.insert(path.substr(0, path.find('/')));
        return entries;
    }

    // Nothing where it is missing or not accepted.
    static std::optional<DataUtil::FaceDocument> DocumentOf(const Face& face)
    {
        const auto text = ReadText(face.ResultXml());
        return text ? DataUtil::ParseFace(*text).document : std::nullopt;
    }

    void LookForLeftOvers()
    {
        std::error_code error;
        const std::string apps = Platform::CurrentAreas().root + "/apps";
        for (fs::recursive_directory_iterator at(apps, error), end; !error && at != end;
             at.increment(error)) {
            if (IsLeftOver(at->path())) AddMovable("left-over", at->path(), "", "is an unfinished file");
        }
    }

    void AddMovable(const std::string& code, const fs::path& path, const std::string& face,
                    const std::string& what)
    {
        Add(code, path.string(), face, what, WatchCommand("doctor --fix"));
    }

    void LookAtNames()
    {
        const Current current = CurrentFace();
        if (current.app == Platform::kFacesId && !current.face.empty() && !FindFace(current.face))
            Add("no-current-face", "", current.face, "is the current face and does not exist",
                WatchCommand("list") + ", then: " + RunningWatchCommand("set NAME"));
        const std::string service(Platform::kServiceId);
        const std::string path = Platform::PreferencesPath(service);
        if (!Exists(path)) return;
        Platform::ValueStore preferences(path, 0600);
        const auto target = Platform::GetAs<std::string>(preferences, kWorldClockTargetPref).value_or("");
        if (!target.empty() && !FindFace(target))
            Add("stale-preference", "", target, "is named by [" + std::string(kWorldClockTargetPref) + "]",
                RunningWatchCommand("pref unset " + service + " " + kWorldClockTargetPref));
        LookAtWorldClocks(preferences);
    }

    // One finding for each face and group, whatever is kept of it.
    void LookAtWorldClocks(Platform::ValueStore& preferences)
    {
        std::map<std::string, std::string> keys;  // by "FACE-GROUP"
        for (const auto& [key, value] : preferences.List()) {
            if (const auto clock = WorldClockOf(key); clock && !IsOfAFace(*clock))
                keys[*clock] += " " + ShellQuoted(key);
        }
        for (const auto& [clock, all] : keys) {
            Add("stale-preference", "", clock, "is a face and a group that a world clock is kept for",
                RunningWatchCommand("pref unset " + std::string(Platform::kServiceId) + all));
        }
    }

    // "FACE-GROUP" of a preference of a world clock.
    static std::optional<std::string> WorldClockOf(const std::string& key)
    {
        const auto dash = key.rfind('-');
        if (dash == std::string::npos || dash == 0) return std::nullopt;
        const bool isField = std::ranges::find(kWorldClockFields, key.substr(dash + 1),
                                               &WorldClockField::name) != std::end(kWorldClockFields);
        return isField ? std::optional(key.substr(0, dash)) : std::nullopt;
    }

    // Names of faces and groups have dashes of their own, so every face is tried.
    bool IsOfAFace(const std::string& clock) const
    {
        return std::ranges::any_of(mFaces,
                                   [&](const Face& face) { return clock.starts_with(face.name + "-"); });
    }

    const std::vector<Face> mFaces = ListFaces();
    std::vector<Ailment> mFound;
};

}  // namespace

std::span<const AilmentKind> AilmentKinds()
{
    return kKinds;
}

std::vector<Ailment> Examine()
{
    return Checkup().Run();
}

}  // namespace Wfctl
