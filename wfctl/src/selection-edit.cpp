#include "selection-edit.h"

#include <algorithm>
#include <string_view>

#include "exit-status.h"
#include "hint.h"
#include "locales-icu.h"
#include "photo-files.h"
#include "private-watch.h"

namespace Wfctl {

namespace {

using DataUtil::FaceDocument;
using DataUtil::Placement;
using DataUtil::Selection;
using DataUtil::WorldClock;

constexpr std::size_t kLongestFileName = 255;

[[noreturn]] void Misused(const std::string& text)
{
    throw Stop(Exit::kUsage, text);
}

// `what` as "option", `where` as " of [dial]" or nothing.
[[noreturn]] void Unknown(const char* what, const std::string& name, const std::string& where,
                          const Names& known)
{
    Misused(std::string("there is no ") + what + " [" + name + "]" + where +
            OrMeant(name, known, known.empty() ? "the face has none" : "known: " + Listed(known)));
}

template <typename Item>
Names NamesOf(const std::vector<Item>& items, const std::string Item::*name)
{
    Names names;
    names.reserve(items.size());
    for (const Item& item : items) names.emplace_back(item.*name);
    return names;
}

// The item of that name; stops where there is none.
template <typename Item>
const Item& Find(const std::vector<Item>& items, const std::string Item::*key, const char* what,
                 const std::string& name, const std::string& where = "")
{
    const auto at =
        std::find_if(items.begin(), items.end(), [&](const Item& one) { return one.*key == name; });
    if (at == items.end()) Unknown(what, name, where, NamesOf(items, key));
    return *at;
}

struct NameAndValue {
    std::string name, value;
};

NameAndValue Split(const std::string& text, const char* form)
{
    const auto equals = text.find('=');
    if (equals == std::string::npos || equals == 0) Misused("[" + text + "] is no " + form);
    return {text.substr(0, equals), text.substr(equals + 1)};
}

void ApplyPreset(const FaceDocument& document, const std::string& id, Selection& selection)
{
    selection.preset = id;
    if (id.empty()) return;
    const auto& preset = Find(document.presets, &DataUtil::Preset::id, "preset", id);
    for (const auto& [group, option] : preset.choices.picks) selection.picks.erase(group);
    for (const auto& [slot, placement] : preset.choices.places) selection.places.erase(slot);
}

void ApplyPick(const FaceDocument& document, const std::string& text, Selection& selection)
{
    const NameAndValue pick = Split(text, "GROUP=OPTION");
    const auto& group = Find(document.groups, &DataUtil::Group::id, "group", pick.name);
    if (pick.value.empty()) {
        selection.picks.erase(pick.name);
        return;
    }
    Find(group.options, &DataUtil::Option::id, "option", pick.value, " of [" + pick.name + "]");
    selection.picks[pick.name] = pick.value;
}

// "Buenos Aires" of "America/Argentina/Buenos_Aires".
std::string CityOf(const std::string& timezone)
{
    std::string city = timezone.substr(timezone.rfind('/') + 1);
    std::replace(city.begin(), city.end(), '_', ' ');
    return city;
}

void ApplyPlace(const FaceDocument& document, const std::string& text, Selection& selection)
{
    const NameAndValue place = Split(text, "SLOT=SOURCE");
    const auto& slot = Find(document.slots, &DataUtil::Slot::name, "slot", place.name);
    if (place.value.empty()) {
        selection.places.erase(place.name);
        return;
    }
    const auto at = place.value.find('@');
    Placement placement{place.value.substr(0, at), std::nullopt};
    if (placement.source != DataUtil::kEmptySource && !slot.OfferOf(placement.source)) {
        Names sources = NamesOf(slot.offers, &DataUtil::Offer::source);
        sources.push_back(DataUtil::kEmptySource);
        Unknown("source", placement.source, " for [" + place.name + "]", sources);
    }
    if (at != std::string::npos) {
        if (placement.source != DataUtil::kWorldClockSource)
            Misused("[" + placement.source + "] shows no time zone; only " +
                    std::string(DataUtil::kWorldClockSource) + " takes @AREA/CITY");
        placement.worldClock = ParseWorldClock(place.value.substr(at + 1));
    }
    selection.places[place.name] = std::move(placement);
}

void ApplyPhoto(const FaceDocument& document, const std::string& text, Selection& selection)
{
    const NameAndValue photo = Split(text, "PHOTOS=FILE");
    const auto& photos = Find(document.photos, &DataUtil::Photos::id, "place for a photo", photo.name);
    if (photo.value.empty()) {
        selection.photos.erase(photo.name);
        return;
    }
    const std::string& file = photo.value;
    const bool isBare = file != "." && file != ".." && file.size() <= kLongestFileName &&
                        std::none_of(file.begin(), file.end(), [](char c) {
                            return c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
                        });
    if (!isBare) {
        Misused("[" + file +
                "] is no bare file name; the picture lies among the watch's backgrounds, and "
                "the face names it without its folder; type: " +
                AddCommand(photos, file) + ", then: --photo " +
                ShellQuoted(photo.name + "=" + file.substr(file.rfind('/') + 1)));
    }
    selection.photos[photo.name] = file;
}

std::string ValueOr(const std::map<std::string, std::string>& values, const std::string& key,
                    const char* otherwise)
{
    const auto at = values.find(key);
    return at == values.end() || at->second.empty() ? otherwise : at->second;
}

}  // namespace

// AREA/CITY[:CITY]. The zone is named in both ways, so that nothing of the offer's own zone is left.
WorldClock ParseWorldClock(const std::string& text)
{
    const auto colon = text.find(':');
    WorldClock clock;
    clock.timezonePath = text.substr(0, colon);
    if (const std::string problem = TimezoneProblem(clock.timezonePath); !problem.empty()) Misused(problem);
    clock.timezone = clock.timezonePath;
    clock.country = CountryOfTimezone(clock.timezonePath);
    clock.city = colon == std::string::npos ? CityOf(clock.timezonePath) : text.substr(colon + 1);
    if (clock.city.empty()) Misused("[" + text + "] has no city behind the colon");
    return clock;
}

Selection Changed(const FaceDocument& document, const SelectionChanges& changes)
{
    Selection selection = changes.reset ? Selection() : DataUtil::SelectionOf(document);
    if (changes.preset) ApplyPreset(document, *changes.preset, selection);
    for (const std::string& text : changes.picks) ApplyPick(document, text, selection);
    for (const std::string& text : changes.places) ApplyPlace(document, text, selection);
    for (const std::string& text : changes.photos) ApplyPhoto(document, text, selection);
    return selection;
}

std::vector<Difference> DifferencesOf(const FaceDocument& before, const FaceDocument& after)
{
    const DataUtil::Resolution old = Resolve(before), now = Resolve(after);
    std::vector<Difference> differences;
    const auto compare = [&](const std::string& what, std::string was, std::string is) {
        const auto shown = now.shown.find(what);
        if (was == is) return;
        differences.push_back(
            {what, std::move(was), std::move(is), shown != now.shown.end() && !shown->second});
    };
    const std::string none = "none";
    compare("preset", before.selection.preset.empty() ? none : before.selection.preset,
            after.selection.preset.empty() ? none : after.selection.preset);
    for (const DataUtil::Group& group : after.groups)
        compare(group.id, ValueOr(old.options, group.id, ""), ValueOr(now.options, group.id, ""));
    for (const DataUtil::Slot& slot : after.slots)
        compare(slot.name, PlacementText(old.sources.at(slot.name)),
                PlacementText(now.sources.at(slot.name)));
    for (const DataUtil::Photos& photos : after.photos) {
        compare(photos.id, ValueOr(before.selection.photos, photos.id, "default"),
                ValueOr(after.selection.photos, photos.id, "default"));
    }
    return differences;
}

std::string PlacementText(const Placement& placement)
{
    if (!placement.worldClock) return placement.source;
    const WorldClock& clock = *placement.worldClock;
    const std::string& zone = clock.timezonePath.empty() ? clock.timezone : clock.timezonePath;
    return placement.source + ", " + clock.city + (zone.empty() ? "" : " (" + zone + ")");
}

}  // namespace Wfctl
