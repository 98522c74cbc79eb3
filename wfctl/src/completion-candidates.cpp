#include "completion-candidates.h"

#include <CLI/Formatter.hpp>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <sstream>

#include "application-table.h"
#include "arguments.h"
#include "face-document.h"
#include "faces.h"
#include "help-text.h"
#include "hint.h"
#include "locales-icu.h"
#include "lost-and-found.h"
#include "photo-files.h"
#include "reading-files.h"
#include "service-words.h"
#include "system-setting-table.h"
#include "value-store-sqlite.h"

namespace Wfctl {

namespace {

using Place = Completions;

constexpr char kLanguages[] = "en_GB en_US de_DE ko_KR ja_JP ar_EG";

std::vector<std::string> WordsOf(std::string_view text)
{
    std::istringstream words{std::string(text)};
    return {std::istream_iterator<std::string>(words), {}};
}

template <typename Words>
Place Of(const Words& words, const std::string& before = "", const std::string& behind = "")
{
    Place place;
    for (const auto& word : words) place.words.push_back({before + std::string(word) + behind, ""});
    return place;
}

Place Files(const Line&)
{
    return {{}, true};
}

// By their names; by the ends of these where no whole name begins as it is typed.
Place FacesOf(const Line& line)
{
    Place place, ends;
    bool isWhole = false;
    for (const Face& face : ListFaces()) {
        const std::string title = TitleOf(face.ResultXml());
        place.words.push_back({face.name, title});
        isWhole = isWhole || face.name.starts_with(line.typed);
        for (std::size_t at = 0; (at = face.name.find_first_of("-.", at)) != std::string::npos;)
            ends.words.push_back({face.name.substr(++at), title});
    }
    return isWhole ? place : ends;
}

Place FacesAndFiles(const Line& line)
{
    Place place = FacesOf(line);
    place.files = true;
    return place;
}

Place Applications(const Line&)
{
    return Of(ApplicationIds());
}

// The ports, too, of the only application that goes on as it is typed.
Place ApplicationsAndPorts(const Line& line)
{
    const std::string id = line.typed.substr(0, line.typed.find(':'));
    const bool isWhole = id.size() != line.typed.size();
    const Platform::Application* only = nullptr;
    Place place;
    for (const Platform::Application& app : Platform::kApplications) {
        if (isWhole ? app.id != id : !app.id.starts_with(id)) continue;
        only = place.words.empty() ? &app : nullptr;
        place.words.push_back({std::string(app.id), ""});
    }
    const auto add = [&](std::string_view port) {
        if (!port.empty()) place.words.push_back({std::string(only->id) + ":" + std::string(port), ""});
    };
    if (only) std::ranges::for_each(only->trustedPorts, add);
    if (only) std::ranges::for_each(only->openPorts, add);
    return place;
}

// A store that is only looked at is not made.
std::optional<Platform::ValueStore> StoreAt(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return std::nullopt;
    return std::optional<Platform::ValueStore>(std::in_place, path, 0600);
}

// Of the platform; of an application where the word before names one.
Place Keys(const Line& line)
{
    const bool isPreference = line.verb->name.starts_with("pref");
    if (isPreference && line.arguments.empty()) return {};
    Place place;
    auto store = StoreAt(isPreference ? Platform::PreferencesPath(line.arguments[0]) : Platform::KeysPath());
    if (!store) return {};
    for (const auto& [key, value] : store->List()) place.words.push_back({key, ""});
    return place;
}

// The values of a setting, each behind what stands in front of it.
Place ValuesOf(std::string_view setting, const std::string& before)
{
    if (setting == "timezone") return Of(Timezones(), before);
    if (setting == "24-hour") return Of(WordsOf("true false"), before);
    return Of(WordsOf(kLanguages), before);
}

Place Settings(const Line& line)
{
    Names names;
    for (const Platform::SystemSetting& setting : Platform::kSystemSettings) names.push_back(setting.name);
    if (line.verb->name != "setting set") return Of(names);
    const std::string name = line.typed.substr(0, line.typed.find('='));
    if (name.size() != line.typed.size()) return ValuesOf(name, name + "=");
    const bool isValue = line.arguments.size() == 1 && std::ranges::count(names, line.arguments[0]) > 0;
    return isValue ? ValuesOf(line.arguments[0], "") : Of(names, "", "=");
}

Place Assignments(const Line& line)
{
    const bool isLaunch = line.verb->name == "launch";
    const auto equals = line.typed.find('=');
    if (equals == std::string::npos) return Of(isLaunch ? LaunchKeys() : MessageKeys(), "", "=");
    const std::string before = line.typed.substr(0, equals + 1);
    if (isLaunch) return Of(LaunchValues(), before);
    return before == "type=" ? Of(MessageTypes(), before) : Place();
}

std::optional<DataUtil::FaceDocument> DocumentOf(const std::string& face)
{
    return DataUtil::ParseFace(ReadNamedFile(RequireFace(face).ResultXml())).document;
}

// The document of the face that the line names.
std::optional<DataUtil::FaceDocument> NamedFace(const Line& line)
{
    return line.arguments.empty() ? std::nullopt : DocumentOf(line.arguments[0]);
}

std::vector<const DataUtil::Slot*> WorldClocksOf(const DataUtil::FaceDocument& face)
{
    std::vector<const DataUtil::Slot*> slots;
    for (const DataUtil::Slot& slot : face.slots) {
        if (slot.OfferOf(std::string(DataUtil::kWorldClockSource))) slots.push_back(&slot);
    }
    return slots;
}

Place Picks(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    for (const auto& group : face->groups) {
        for (const auto& option : group.options) place.words.push_back({group.id + "=" + option.id, ""});
    }
    return place;
}

Place Placements(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    const std::string atZone = line.typed.substr(0, line.typed.find('@'));
    if (atZone.size() != line.typed.size()) return Of(Timezones(), atZone + "@");
    for (const auto& slot : face->slots) {
        for (const auto& offer : slot.offers) {
            place.words.push_back({slot.name + "=" + offer.source, ""});
            if (offer.source == DataUtil::kWorldClockSource)
                place.words.push_back({slot.name + "=" + offer.source + "@", "of a time zone"});
        }
        place.words.push_back({slot.name + "=empty", ""});
    }
    return place;
}

Place Presets(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    for (const auto& preset : face->presets) place.words.push_back({preset.id, ""});
    return place;
}

Place Zones(const Line&)
{
    return Of(Timezones());
}

Place Groups(const Line& line)
{
    const auto face = NamedFace(line);
    if (!face) return {};
    std::set<std::string> groups;
    for (const DataUtil::Slot* slot : WorldClocksOf(*face)) groups.insert(slot->group);
    return Of(groups);
}

Place WorldClocks(const Line&)
{
    auto preferences = StoreAt(Platform::PreferencesPath(std::string(Platform::kServiceId)));
    if (!preferences) return {};
    const auto face =
        DocumentOf(Platform::GetAs<std::string>(*preferences, kWorldClockTargetPref).value_or(""));
    Place place;
    if (!face) return place;
    for (const DataUtil::Slot* slot : WorldClocksOf(*face)) place.words.push_back({slot->name, ""});
    return place;
}

Place Photos(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    for (const auto& photos : face->photos) {
        for (const std::string& name : PicturesIn(PhotoPath(photos, "")))
            place.words.push_back({photos.id + "=" + name, ""});
        place.words.push_back({photos.id + "=", "its default"});
    }
    return place;
}

Place Pictures(const Line& line)
{
    return Of(PicturesIn(PicturesFolder(line.type.empty() ? kUsualPictures : line.type)));
}

Place LostTimes(const Line&)
{
    return Of(TimesOfLost());
}

Place VerbNames(const Line& line)
{
    return {VerbWords(line.arguments)};
}

// What is complete for which option: by its name, or by what it takes; a positional by its name. The first
// row counts whose verb the line's begins with.
struct Completer {
    std::string_view verb, option;
    Place (*complete)(const Line&);  // null: the words
    std::string_view words = {};
};

// clang-format off
constexpr Completer kCompleters[] = {
    {"setting",  "NAME",       Settings},
    {"set",      "NAME",       FacesOf},
    {"evaluate", "NAME",       FacesOf},
    {"bg del",   "NAME",       Pictures},
    {"bg",       "--type",     nullptr, "gallery-u1 gallery digital"},
    {"doctor",   "--undo",     LostTimes},
    {"",         "VERB",       VerbNames},
    {"",         "NAME=VALUE", Settings},
    {"",         "KEY=VALUE",  Assignments},
    {"",         "--type",     nullptr, "string int bool"},
    {"",         "--language", nullptr, kLanguages},
    {"",         "--hours",    nullptr, "12 24"},
    {"",         "SHELL",      nullptr, "bash zsh fish"},
    {"",         "FACE",       FacesOf},
    {"",         "FACE|FILE",  FacesAndFiles},
    {"",         "FILE|FACE",  FacesAndFiles},
    {"",         "FILE|NAME",  FacesAndFiles},
    {"",         "APP",        Applications},
    {"",         "APP[:PORT]", ApplicationsAndPorts},
    {"",         "KEY",        Keys},
    {"",         "--pick",     Picks},
    {"",         "--place",    Placements},
    {"",         "--preset",   Presets},
    {"",         "--photo",    Photos},
    {"",         "--timezone", Zones},
    {"",         "AREA/CITY[:CITY]", Zones},
    {"",         "GROUP",      Groups},
    {"",         "SLOT",       WorldClocks},
    {"",         "DIR",        Files},
    {"",         "PNG",        Files},
    {"",         "-o",         Files},
    {"",         "PICTURE",    Files},
    {"",         "RESULT.xml", Files},
};
// clang-format on

// Behind what is typed of a list up to its last comma, what it does not have yet.
void ContinueList(const std::string& typed, Place& place)
{
    const std::string begun = typed.substr(0, typed.rfind(',') + 1);
    std::erase_if(place.words, [&](const Completion& one) {
        return ("," + begun).find("," + one.word + ",") != std::string::npos;
    });
    for (Completion& one : place.words) one.word.insert(0, begun);
}

// Of what is repeated, what the line does not have yet: a key has one value.
void DropRepeated(const std::vector<std::string>& arguments, bool hasValues, Place& place)
{
    const auto nameOf = [&](const std::string& word) {
        return hasValues ? word.substr(0, word.find('=')) : word;
    };
    std::erase_if(place.words, [&](const Completion& one) {
        return std::ranges::count(arguments, nameOf(one.word), nameOf) > 0;
    });
}

}  // namespace

std::vector<Completion> VerbWords(std::span<const std::string> complete)
{
    std::string before;
    for (const std::string& word : complete) before += word + " ";
    std::vector<Completion> words;
    for (const Verb& verb : Verbs()) {
        if (!verb.name.starts_with(before)) continue;
        const std::string_view rest = verb.name.substr(before.size());
        const std::string_view word = rest.substr(0, rest.find(' '));
        const bool isLast = word.size() == rest.size();
        if (words.empty() || words.back().word != word)
            words.push_back({std::string(word), isLast ? std::string(verb.help) : ""});
    }
    return words;
}

bool IsNamed(const CLI::Option& option, std::string_view name)
{
    const auto has = [&](const std::vector<std::string>& names, std::string_view dashes) {
        return std::ranges::any_of(names,
                                   [&](const std::string& one) { return std::string(dashes) + one == name; });
    };
    return has(option.get_lnames(), "--") || has(option.get_snames(), "-");
}

Completions CandidatesFor(const CLI::Option& option, const Line& line)
{
    const std::string takes = option.get_positional() ? option.get_name(true) : TypeOf(option);
    const auto isFor = [&](const Completer& completer) {
        return (completer.option == takes || IsNamed(option, completer.option)) &&
               line.verb->name.starts_with(completer.verb);
    };
    const auto* row = std::ranges::find_if(kCompleters, isFor);
    if (row == std::end(kCompleters)) return {};
    Place place = row->complete ? row->complete(line) : Of(WordsOf(row->words));
    if (takes.find(',') != std::string::npos) ContinueList(line.typed, place);
    if (option.get_positional() && option.get_items_expected_max() > 1)
        DropRepeated(line.arguments, takes.ends_with("=VALUE"), place);
    return place;
}

}  // namespace Wfctl
