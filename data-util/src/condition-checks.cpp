#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "face-checks.h"
#include "nearest-name.h"
#include "uses.h"

namespace DataUtil {

namespace {

class ConditionChecks {
public:
    ConditionChecks(const FaceDocument& document, Findings& findings)
        : mDocument(document), mFindings(findings)
    {
        for (const Group& group : document.groups) {
            if (group.id.empty()) continue;
            auto& values = mValues[group.id];
            for (const Option& option : group.options) values.emplace_back(option.id);
            mWhen[group.id] = {&group.when, &group.origin};
        }
        for (const Slot& slot : document.slots) {
            if (slot.name.empty()) continue;
            auto& values = mValues[slot.name];
            mSlots.insert(slot.name);
            for (const Offer& offer : slot.offers) values.emplace_back(offer.source);
            values.emplace_back(kEmptySource);
            mWhen[slot.name] = {&slot.when, &slot.origin};
        }
        for (const auto& [subject, values] : mValues) mNames.emplace_back(subject);
        for (const Photos& photos : document.photos) mPhotos.insert(photos.id);
    }

    void Run()
    {
        CheckReferences(mDocument.root);
        for (const auto& [subject, when] : mWhen) CheckCircle(subject);
        for (const Group& group : mDocument.groups) {
            if (group.kind != GroupKind::kPalette) CheckUse(group);
        }
    }

private:
    using Values = std::map<std::string, std::vector<std::string_view>>;
    struct When {
        const std::vector<Term>* terms;
        const Origin* origin;
    };
    enum class Visit { kNone, kOpen, kDone };

    void CheckReferences(const Node& node)
    {
        if (mFindings.IsFull()) return;
        for (const Condition& condition : ConditionsOf(node))
            CheckTerm(condition.term, node, condition.attribute);
        for (const Node& child : node.children) CheckReferences(child);
    }

    void CheckTerm(const Term& term, const Node& node, const char* attribute)
    {
        const bool exists = mValues.contains(term.subject);
        if (!exists && mFindings.IsRefused(term.subject)) return;
        const auto values = mValues.find(
            exists ? term.subject : std::string(ReportSubject(term.subject, node.Where(attribute))));
        if (values == mValues.end()) return;
        mSubjects.Add(values->first);
        CheckValue(term.value, *values, node, attribute);
    }

    // The group or slot that is meant by an unknown one; empty where there is none.
    std::string_view ReportSubject(const std::string& subject, const Place& place)
    {
        if (mPhotos.contains(subject)) {
            mFindings.Add("E-REF-UNKNOWN", place, "nothing can depend on the photos " + Quoted(subject));
            return {};
        }
        const std::string_view meant = mFindings.Nearest(subject, mNames);
        mSubjects.Add(meant);
        mFindings.Add("E-REF-UNKNOWN", place,
                      "there is no group or slot " + Quoted(subject) + MeantOrKnown(meant, mNames));
        return meant;
    }

    void CheckValue(const std::string& value, const Values::value_type& values, const Node& node,
                    const char* attribute)
    {
        const auto& [subject, known] = values;
        const auto at = std::find(known.begin(), known.end(), value);
        const bool exists = at != known.end();
        if (!exists && mFindings.IsRefused(value)) return;
        const std::string_view meant = exists ? *at : mFindings.Nearest(value, known);
        mMentioned[subject].Add(meant);
        if (exists) return;
        mFindings.Add("E-REF-UNKNOWN", node.Where(attribute),
                      mSlots.contains(subject)
                          ? NotOffered(Quoted(subject), value, meant, known)
                          : Quoted(subject) + " has no " + Quoted(value) + MeantOrKnown(meant, known));
    }

    // Depth first; an open subject that is met again closes a circle. At most kMostGroups + kMostSlots deep
    // in a document within its limits, and never deeper than the number of distinct ids.
    void CheckCircle(const std::string& subject)
    {
        const auto when = mWhen.find(subject);
        Visit& visit = mVisits[subject];
        if (when == mWhen.end() || visit == Visit::kDone) return;
        if (visit == Visit::kOpen) {
            mFindings.Add("E-CIRCLE", when->second.origin->Where(),
                          "the conditions of " + Quoted(subject) + " depend on itself; break the circle");
            return;
        }
        visit = Visit::kOpen;
        for (const Term& term : *when->second.terms) CheckCircle(term.subject);
        visit = Visit::kDone;
    }

    // Options that no condition names look alike: one is fine (it stands for "nothing"), two are a slip.
    void CheckUse(const Group& group)
    {
        if (!mSubjects.Has(group.id)) {
            if (mFindings.IsRefused(group.id)) return;
            mFindings.Add(
                "W-UNUSED", group.origin.Where(),
                "no condition depends on " + Quoted(group.id) + "; use it in a \"when\" or remove it");
            return;
        }
        // Without any, a condition that names an unknown group may be about this one.
        const auto mentioned = mMentioned.find(group.id);
        if (group.kind == GroupKind::kSwitch || mentioned == mMentioned.end()) return;
        const Option* first = nullptr;
        for (const Option& option : group.options) {
            if (mentioned->second.Has(option.id) || mFindings.IsRefused(option.id)) continue;
            if (first == nullptr) {
                first = &option;
            } else {
                mFindings.Add("W-SAME", option.origin.Where(),
                              "no condition tells the options " + Quoted(first->id) + " and " +
                                  Quoted(option.id) + " apart");
            }
        }
    }

    const FaceDocument& mDocument;
    Findings& mFindings;
    Values mValues;  // group or slot -> options or sources
    std::map<std::string, When> mWhen;
    std::map<std::string, Visit> mVisits;
    std::map<std::string, Uses> mMentioned;  // group or slot -> what conditions about it name
    Uses mSubjects;                          // groups and slots that conditions name
    std::vector<std::string_view> mNames;    // of groups and slots
    std::set<std::string_view> mSlots;
    std::set<std::string_view> mPhotos;
};

}  // namespace

std::vector<Condition> ConditionsOf(const Node& node)
{
    std::vector<Condition> conditions;
    if (node.Has("when")) {
        for (Term& term : ParseCondition(node.Get("when")).value_or(std::vector<Term>()))
            conditions.push_back({std::move(term), "when"});
    }
    const char* clock = node.Is(Element::kLayer) ? "clock" : node.Is(Element::kText) ? "city" : nullptr;
    if (clock != nullptr && node.Has(clock))
        conditions.push_back({
            {node.Get(clock), std::string(kWorldClockSource), false},
            clock
        });
    return conditions;
}

std::vector<Term> TermsOf(const Node& node)
{
    std::vector<Term> terms;
    for (Condition& condition : ConditionsOf(node)) terms.push_back(std::move(condition.term));
    return terms;
}

void CheckConditions(const FaceDocument& document, Findings& findings)
{
    ConditionChecks(document, findings).Run();
}

}  // namespace DataUtil
