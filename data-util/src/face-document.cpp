#include "face-document.h"

#include <algorithm>
#include <utility>

#include "face-checks.h"
#include "xml-gate.h"

namespace DataUtil {

ParseResult ParseFace(std::string_view resultXml)
{
    Findings findings;
    FaceDocument document;
    if (const auto tree = XmlTree::Load(resultXml, findings);
        tree && ReadNodes(*tree, document.root, findings)) {
        FillDocument(document, findings);
        FillSelection(document, findings);
        CheckTexts(document, findings);
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
        auto value = options.find(term.subject);
        if (value == options.end()) value = sources.find(term.subject);
        return (value->second == term.value) != term.negated;
    });
}

namespace {

// Settles what is shown in the order of dependence; the checks have refused circles.
class Resolver {
public:
    Resolver(const FaceDocument& document, Resolution& resolution) : mResolution(resolution)
    {
        for (const Group& group : document.groups) mWhen[group.id] = &group.when;
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

}  // namespace

Resolution Resolve(const FaceDocument& document)
{
    Resolution resolution;
    for (const Group& group : document.groups) {
        const auto pick = document.picks.find(group.id);
        const std::string& chosen = pick == document.picks.end() ? group.defaultOption : pick->second;
        resolution.options[group.id] = chosen;
        for (const Option& option : group.options) {
            if (option.id == chosen) resolution.colors.insert(option.colors.begin(), option.colors.end());
        }
    }
    for (const Slot& slot : document.slots) {
        const auto placed = document.placed.find(slot.name);
        resolution.sources[slot.name] =
            placed == document.placed.end() ? slot.fallbacks.front() : placed->second;
    }
    Resolver(document, resolution).Settle();
    return resolution;
}

}  // namespace DataUtil
