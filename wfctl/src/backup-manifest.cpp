#include "backup-manifest.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

#include "digest.h"
#include "exit-status.h"
#include "json-text.h"

namespace Wfctl {

namespace {

constexpr int kFormat = 1;
constexpr std::size_t kMostItems = 10'000;
constexpr int kMostDepth = 4;                // the text of a name in base64
constexpr std::size_t kMostNameBytes = 255;  // of a file

[[noreturn]] void Refuse(const std::string& what)
{
    throw Stop(Exit::kError, what);
}

// Reading a manifest: each takes what stands under a key, or refuses it.

std::string BytesOf(const Json& value)
{
    if (value.is_string()) return value.get<std::string>();
    if (value.is_object() && value.contains("base64") && value["base64"].is_string()) {
        if (const auto bytes = FromBase64(value["base64"].get<std::string>())) return *bytes;
    }
    Refuse("the manifest is damaged: a name is neither a text nor base64");
}

std::string TextUnder(const Json& object, const char* key)
{
    if (!object.contains(key) || !object[key].is_string())
        Refuse(std::string("the manifest is damaged: an item has no \"") + key + "\"");
    return object[key].get<std::string>();
}

// Of a watch face or a picture; it becomes a file's on the watch.
bool IsTakenAsName(const std::string& name)
{
    constexpr std::string_view kNowhereInNames{"/\0", 2};
    return !name.empty() && name.size() <= kMostNameBytes && name != "." && name != ".." &&
           name.find_first_of(kNowhereInNames) == std::string::npos;
}

std::string BgTypeUnder(const Json& object)
{
    const std::string kind = TextUnder(object, "kind");
    if (kind == "face") return "";
    const std::string type = kind == "picture" ? TextUnder(object, "type") : "";
    if (type != kGalleryPictures && type != kThemePictures)
        Refuse("the manifest is damaged: nobody knows the kind " + JsonLine(kind) + " " + JsonLine(type));
    return type;
}

BackupItem ItemOf(const Json& object)
{
    if (!object.is_object() || !object.contains("name"))
        Refuse("the manifest is damaged: an item has no \"name\"");
    BackupItem item{BytesOf(object["name"]), BgTypeUnder(object), TextUnder(object, "file"), 0,
                    TextUnder(object, "sha256")};
    if (!IsTakenAsName(item.name)) Refuse(item.Title() + " has a name that no watch takes");
    const std::string_view folder = FolderOf(item);
    if (!item.file.starts_with(folder) || !IsPlainName(std::string_view(item.file).substr(folder.size())))
        Refuse(item.Title() + " has a file that is not below " + std::string(folder));
    if (!object.contains("size") || !object["size"].is_number_unsigned())
        Refuse(item.Title() + " has no size");
    item.size = object["size"].get<uint64_t>();
    return item;
}

}  // namespace

bool IsPlainName(std::string_view name)
{
    const auto isPlain = [](char c) { return isalnum(static_cast<unsigned char>(c)) || strchr("-_. ", c); };
    return !name.empty() && name.size() <= 200 && name.front() != '.' && std::ranges::all_of(name, isPlain);
}

std::string_view FolderOf(const BackupItem& item)
{
    return item.IsFace() ? "faces/" : item.bgType == kThemePictures ? "pictures/theme/" : "pictures/u1/";
}

std::string BackupItem::Title() const
{
    return (IsFace() ? "the face " : "the picture ") + JsonLine(BytesToJson(name));
}

BackupManifest ParseManifest(const std::string& text)
{
    // A value within values without end would take more stack than there is.
    const auto isNotDeeper = [](int depth, Json::parse_event_t, Json&) { return depth <= kMostDepth; };
    const Json json = Json::parse(text, isNotDeeper, false);
    if (!json.is_object() || !json.contains("format") || !json["format"].is_number())
        Refuse("the manifest is damaged: it is no JSON of a backup");
    if (json["format"] != kFormat)
        Refuse("the manifest has format " + json["format"].dump() + ", and this program knows format " +
               std::to_string(kFormat) + " only");
    BackupManifest manifest;
    if (json.contains("made") && json["made"].is_string()) manifest.made = json["made"];
    if (json.contains("current")) {
        manifest.current = BytesOf(json["current"]);
        if (!IsTakenAsName(manifest.current))
            Refuse("the manifest is damaged: the current face has a name that no watch takes");
    }
    if (!json.contains("items") || !json["items"].is_array() || json["items"].size() > kMostItems)
        Refuse("the manifest is damaged: it has no items, or more than " + std::to_string(kMostItems));
    std::set<std::pair<std::string, std::string>> names;
    std::set<std::string> files;
    for (const Json& object : json["items"]) {
        BackupItem item = ItemOf(object);
        if (!names.emplace(item.bgType, item.name).second || !files.insert(item.file).second)
            Refuse(item.Title() + " is in the manifest twice");
        manifest.items.push_back(std::move(item));
    }
    return manifest;
}

std::string ManifestText(const BackupManifest& manifest)
{
    Json items = Json::array();
    for (const BackupItem& item : manifest.items) {
        Json object{
            {"kind", item.IsFace() ? "face" : "picture"}
        };
        if (!item.IsFace()) object["type"] = item.bgType;
        object["name"] = BytesToJson(item.name);
        object["file"] = item.file;
        object["size"] = item.size;
        object["sha256"] = item.sha256;
        items.push_back(std::move(object));
    }
    Json json{
        {"format", kFormat      },
        {"made",   manifest.made},
    };
    if (!manifest.current.empty()) json["current"] = BytesToJson(manifest.current);
    json["items"] = std::move(items);
    return json.dump(2) + "\n";
}

}  // namespace Wfctl
