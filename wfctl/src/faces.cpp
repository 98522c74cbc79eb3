#include "faces.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "application-table.h"
#include "areas.h"
#include "face-document.h"

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
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(Watchlist(writable), error)) {
        Face face = WritableFace(entry.path().filename().string());
        face.folder = entry.path().string() + "/";
        if (!Exists(face.ResultXml()) && !Exists(face.folder + "without_result_xml")) continue;
        face.writable = writable;
        face.shipped = !writable || faces.contains(face.name);
        face.hasPreview = Exists(face.Preview());
        faces[face.name] = face;  // the read/write copy, listed last, wins
    }
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

std::optional<Face> FindFace(const std::string& name)
{
    for (Face& face : ListFaces()) {
        if (face.name == name) return std::move(face);
    }
    return std::nullopt;
}

std::string TitleOf(const std::string& resultXml)
{
    std::ifstream file(resultXml, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    if (!parsed.document) return {};
    const auto texts = parsed.document->texts.find(parsed.document->defaultLanguage);
    if (texts == parsed.document->texts.end()) return {};
    const auto title = texts->second.find(parsed.document->titleKey);
    return title == texts->second.end() ? std::string() : title->second;
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
