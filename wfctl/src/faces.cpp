#include "faces.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

#include "application-table.h"
#include "areas.h"
#include "documents.h"
#include "exit-status.h"
#include "folder-entries.h"
#include "hint.h"
#include "reading-files.h"
#include "shell-command.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

std::string Watchlist(bool writable)
{
    const Platform::Areas& areas = Platform::CurrentAreas();
    const std::string id(Platform::kFacesId);
    return (writable ? areas.DataOf(id) : areas.ResourceOf(id)) + "watchlist/";
}

bool Exists(const std::string& path)
{
    std::error_code error;
    return fs::exists(path, error);
}

void AddFaces(bool writable, std::map<std::string, Face>& faces)
{
    for (const fs::path& folder : EntriesOf(Watchlist(writable))) {
        Face face = WritableFace(folder.filename().string());
        face.folder = folder.string() + "/";
        if (!Exists(face.ResultXml()) && !Exists(face.folder + "without_result_xml")) continue;
        face.writable = writable;
        face.shipped = !writable || faces.contains(face.name);
        face.hasPreview = Exists(face.Preview());
        faces[face.name] = face;  // the read/write copy, listed last, wins
    }
}

// "c1" and "mirel-c1" for "com.corvane.watchface-mirel-c1".
bool IsShortFor(const std::string& name, const std::string& whole)
{
    return !name.empty() && (whole.ends_with("-" + name) || whole.ends_with("." + name));
}

std::string Lowered(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// The name of the face that has this title, or has it in its title; empty when none has.
std::string NameWithTitle(const std::string& typed, const std::vector<Face>& faces)
{
    constexpr std::size_t kShortest = 3;
    if (typed.size() < kShortest) return {};
    for (const Face& face : faces) {
        if (Lowered(TitleOf(face.ResultXml())).find(Lowered(typed)) != std::string::npos) return face.name;
    }
    return {};
}

// "; did you mean X?": a face's name, or the end of one where that is what was typed.
std::string FaceHint(const std::string& name, const std::vector<Face>& faces)
{
    Names names;
    for (const Face& face : faces) names.push_back(face.name);
    // A part of a long name is what people type first.
    const auto holds = [&](std::string_view known) { return known.find(name) != std::string_view::npos; };
    const auto part = std::ranges::find_if(names, holds);
    if (!name.empty() && part != names.end()) return "; did you mean " + std::string(*part) + "?";
    const std::string titled = NameWithTitle(name, faces);
    if (!titled.empty()) return "; did you mean " + titled + "?";
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const std::string_view whole = faces[i].name;
        for (auto at = whole.find_first_of("-."); at != whole.npos; at = whole.find_first_of("-.", at + 1))
            names.push_back(whole.substr(at + 1));
    }
    if (MeantName(name, names).empty()) {
        // "c111": the end of a name with more behind it.
        const auto isBeginning = [&](std::string_view known) {
            return known.size() > 1 && name.starts_with(known);
        };
        const auto end = std::ranges::find_if(names, isBeginning);
        if (end != names.end()) return "; did you mean " + std::string(*end) + "?";
    }
    return OrMeant(name, names);
}

}  // namespace

std::string ShippedFaces()
{
    return Watchlist(false);
}

Face WritableFace(const std::string& name)
{
    Face face;
    face.name = name;
    face.writable = true;
    face.folder = Watchlist(true) + name + "/";
    return face;
}

std::vector<Face> ListFaces()
{
    std::map<std::string, Face> faces;
    for (const bool writable : {false, true}) AddFaces(writable, faces);
    std::vector<Face> list;
    list.reserve(faces.size());
    for (auto& [name, face] : faces) list.push_back(std::move(face));
    return list;
}

std::vector<std::string> FaceNames()
{
    std::vector<std::string> names;
    for (Face& face : ListFaces()) names.push_back(std::move(face.name));
    return names;
}

std::vector<Face> RequireFaces()
{
    std::vector<Face> faces = ListFaces();
    if (!faces.empty()) return faces;
    throw Stop(Exit::kNotFound, "there is no watch face in [" + ShippedFaces() +
                                    "]; name a file where one is taken, or a watch with --root DIR");
}

std::optional<Face> FindFace(const std::string& name)
{
    for (Face& face : ListFaces()) {
        if (face.name == name) return std::move(face);
    }
    return std::nullopt;
}

Face RequireFace(const std::string& name, Beside beside)
{
    if (auto face = FindFace(name)) return *std::move(face);
    const std::vector<Face> faces = ListFaces();
    const auto isShortFor = [&](const Face& face) { return IsShortFor(name, face.name); };
    if (std::ranges::count_if(faces, isShortFor) == 1) return *std::ranges::find_if(faces, isShortFor);
    std::string hint = FaceHint(name, faces);
    if (hint.empty() && beside == Beside::kFiles) hint = OrMeantFile(name);
    throw Stop(Exit::kNotFound, "there is no watch face [" + name + "]" + hint + (hint.empty() ? "; " : " ") +
                                    "type: " + WatchCommand("list"));
}

std::string TitleOf(const std::string& resultXml)
{
    return FactsOf(ReadableBytes(resultXml)).title;
}

Current CurrentFace(Platform::ValueStore& keys)
{
    return {Platform::GetAs<std::string>(keys, kIdleClockKey).value_or(""),
            Platform::GetAs<std::string>(keys, kWatchfaceNameKey).value_or("")};
}

Current CurrentFace()
{
    if (!Exists(Platform::KeysPath())) return {};
    Platform::ValueStore keys(Platform::KeysPath(), 0660);
    return CurrentFace(keys);
}

}  // namespace Wfctl
