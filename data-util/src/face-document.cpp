#include "face-document.h"

#include <algorithm>
#include <utility>

#include "face-checks.h"
#include "face-schema.h"
#include "xml-gate.h"

namespace DataUtil {

ParseResult ParseFace(std::string_view resultXml)
{
    Findings findings;
    FaceDocument document;
    document.tree = XmlTree::Load(resultXml, findings);
    if (document.tree && ReadNodes(*document.tree, FaceSchema(), document.root, findings)) {
        CheckDefinitions(document.root, findings);
        FillDocument(document, findings);
        if (const Node* selection = document.root.Child(Element::kSelection))
            FillSelection(*selection, document, findings);
        CheckTexts(document.root, document.texts, UnusedTexts::kReported, findings);
        CheckConditions(document, findings);
        CheckScene(document, findings);
    }
    ParseResult result;
    if (!findings.HasErrors()) result.document = std::move(document);
    result.findings = findings.Take();
    return result;
}

bool Resolution::Holds(const std::vector<Term>& terms) const
{
    return std::all_of(terms.begin(), terms.end(), [this](const Term& term) {
        const auto seen = shown.find(term.subject);
        if (seen == shown.end() || !seen->second) return false;
        const auto option = options.find(term.subject);
        const std::string& value = option != options.end() ? option->second : sources.at(term.subject).source;
        return (value == term.value) != term.negated;
    });
}

namespace {

// Settles what is shown in the order of dependence; the checks have refused circles.
class Resolver {
public:
    Resolver(const FaceDocument& document, Resolution& resolution) : mResolution(resolution)
    {
        for (const Group& group : document.groups) mWhen[group.id] = &group.when;
        for (const Photos& photos : document.photos) mWhen[photos.id] = &photos.when;
        for (const Slot& slot : document.slots) mWhen[slot.name] = &slot.when;
    }

    void Settle()
    {
        for (const auto& [subject, when] : mWhen) Settle(subject);
    }

private:
    void Settle(const std::string& subject)
    {
        if (mResolution.shown.count(subject) != 0) return;
        const std::vector<Term>& when = *mWhen.at(subject);
        for (const Term& term : when) Settle(term.subject);
        mResolution.shown[subject] = mResolution.Holds(when);
    }

    Resolution& mResolution;
    std::map<std::string, const std::vector<Term>*> mWhen;
};

// The first selection that has an entry for `id`, or nothing.
template <typename Value>
const Value* FirstEntry(const std::map<std::string, Value>& picked,
                        const std::map<std::string, Value>& preset, const std::string& id)
{
    for (const auto* entries : {&picked, &preset}) {
        if (const auto at = entries->find(id); at != entries->end()) return &at->second;
    }
    return nullptr;
}

// A world clock with what it lacks taken from the offer.
Placement Completed(Placement placement, const Slot& slot)
{
    const Offer* offer = slot.OfferOf(placement.source);
    if (placement.source != kWorldClockSource || offer == nullptr) return placement;
    WorldClock clock = placement.worldClock.value_or(WorldClock());
    for (const auto text :
         {&WorldClock::city, &WorldClock::country, &WorldClock::timezone, &WorldClock::timezonePath}) {
        if ((clock.*text).empty()) clock.*text = offer->worldClock.*text;
    }
    placement.worldClock = std::move(clock);
    return placement;
}

}  // namespace

const Offer* Slot::OfferOf(std::string_view source) const
{
    return FindById(offers, &Offer::source, source);
}

Resolution Resolve(const FaceDocument& document)
{
    const Selection none;
    const Preset* preset = FindById(document.presets, &Preset::id, document.selection.preset);
    const Selection& choices = preset == nullptr ? none : preset->choices;
    Resolution resolution;
    for (const Group& group : document.groups) {
        const std::string* pick = FirstEntry(document.selection.picks, choices.picks, group.id);
        const std::string& chosen = pick == nullptr ? group.defaultOption : *pick;
        resolution.options[group.id] = chosen;
        for (const Option& option : group.options) {
            if (option.id == chosen) resolution.colors.insert(option.colors.begin(), option.colors.end());
        }
    }
    for (const Slot& slot : document.slots) {
        const Placement* placed = FirstEntry(document.selection.places, choices.places, slot.name);
        resolution.sources[slot.name] =
            Completed(placed == nullptr ? Placement{slot.fallbacks.front(), std::nullopt} : *placed, slot);
    }
    Resolver(document, resolution).Settle();
    return resolution;
}

}  // namespace DataUtil
