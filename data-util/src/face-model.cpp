// From checked nodes to groups, slots, texts and the selection.

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

#include "face-checks.h"
#include "nearest-name.h"

namespace DataUtil {

namespace {

class Model {
public:
    Model(FaceDocument& document, Findings& findings) : mDocument(document), mFindings(findings) {}

    void Fill()
    {
        const Node& root = mDocument.root;
        mDocument.id = root.Get("id");
        mDocument.version = root.Get("version");
        mDocument.titleKey = root.Get("title-key");
        mDocument.defaultLanguage = root.Get("default-language");
        for (const Node& child : root.children) {
            if (child.Is(Element::kStrings)) AddStrings(child);
            if (child.Is(Element::kOptions)) AddGroups(child);
            if (child.Is(Element::kScene)) AddSlots(child, {});
        }
        CheckLimit(mDocument.groups, kMostGroups, "groups of options");
        CheckLimit(mDocument.slots, kMostSlots, "slots");
    }

private:
    // True for an id that is new among `known`.
    bool IsNew(std::set<std::string>& known, const Node& node, const char* attribute, const char* what)
    {
        const std::string& id = node.Get(attribute);
        if (id.empty()) return false;
        if (known.insert(id).second) return true;
        mFindings.Add("E-ID-DUPLICATE", node.PlaceOf(attribute),
                      std::string("there is already a ") + what + " " + Quoted(id) + "; choose another name");
        return false;
    }

    void AddStrings(const Node& node)
    {
        std::string language = node.Get("language");
        std::transform(language.begin(), language.end(), language.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        if (!language.empty() && !mLanguages.insert(language).second) {
            mFindings.Add("E-ID-DUPLICATE", node.PlaceOf("language"),
                          "the texts of " + Quoted(node.Get("language")) +
                              " are already there; put all into one element");
        }
        std::set<std::string> keys;
        auto& texts = mDocument.texts[node.Get("language")];
        for (const Node& string : node.children) {
            if (IsNew(keys, string, "key", "text with the key"))
                texts.emplace(string.Get("key"), string.text);
        }
    }

    void AddGroups(const Node& options)
    {
        for (const Node& node : options.children) {
            Group group;
            group.kind = node.Is(Element::kStyle)     ? GroupKind::kStyle
                         : node.Is(Element::kPalette) ? GroupKind::kPalette
                                                      : GroupKind::kSwitch;
            IsNew(mIds, node, "id", "group or slot");
            group.id = node.Get("id");
            group.labelKey = node.Get("label-key");
            group.when = ParseCondition(node.Get("when")).value_or(std::vector<Term>());
            group.place = node.place;
            if (group.kind == GroupKind::kSwitch) {
                group.options = {
                    {"on",  "", {}, node.place},
                    {"off", "", {}, node.place}
                };
                group.defaultOption = node.Get("default");
            } else {
                AddOptions(node, group);
            }
            mDocument.groups.push_back(std::move(group));
        }
    }

    void AddOptions(const Node& node, Group& group)
    {
        std::set<std::string> ids;
        const Node* first = nullptr;
        for (const Node& child : node.children) {
            IsNew(ids, child, "id", "option");
            Option option{child.Get("id"), child.Get("label-key"), {}, child.place};
            if (child.Get("default") == "true") {
                if (first != nullptr) {
                    mFindings.Add("E-DEFAULT", child.PlaceOf("default"),
                                  Quoted(group.id) + " already has the default " + Quoted(first->Get("id")) +
                                      "; keep one");
                } else {
                    first = &child;
                    group.defaultOption = option.id;
                }
            }
            AddColors(child, option);
            group.options.push_back(std::move(option));
        }
        if (first == nullptr && !node.children.empty()) {
            mFindings.Add("E-DEFAULT", node.place,
                          Quoted(group.id) + " has no default; mark one option with default=\"true\"");
        }
        if (group.kind == GroupKind::kPalette) CheckPalette(group);
    }

    void AddColors(const Node& node, Option& option)
    {
        std::set<std::string> roles;
        for (const Node& color : node.children) {
            if (IsNew(roles, color, "role", "colour for the role")) {
                option.colors[color.Get("role")] = color.Get("value");
            }
        }
    }

    // All options of a palette set the same roles, and no other palette sets them too.
    void CheckPalette(const Group& group)
    {
        std::set<std::string> roles;
        for (const Option& option : group.options) {
            for (const auto& [role, color] : option.colors) roles.insert(role);
        }
        for (const Option& option : group.options) {
            for (const std::string& role : roles) {
                if (option.colors.count(role) != 0) continue;
                mFindings.Add("E-COVERAGE", option.place,
                              "the option " + Quoted(option.id) + " has no colour for the role " +
                                  Quoted(role) + ", which another option sets");
            }
        }
        for (const std::string& role : roles) {
            if (mRoles.insert(role).second) continue;
            mFindings.Add("E-ID-DUPLICATE", group.place,
                          "another palette already sets the role " + Quoted(role) + "; choose another name");
        }
    }

    void AddSlots(const Node& parent, const std::vector<Term>& outer)
    {
        for (const Node& node : parent.children) {
            std::vector<Term> when = outer;
            const auto own = ParseCondition(node.Get("when"));
            if (own) when.insert(when.end(), own->begin(), own->end());
            if (node.Is(Element::kLayer)) AddSlots(node, when);
            if (node.Is(Element::kSlot)) AddSlot(node, std::move(when));
        }
    }

    void AddSlot(const Node& node, std::vector<Term> when)
    {
        IsNew(mIds, node, "name", "group or slot");
        Slot slot{node.Get("name"), node.Get("group"), node.Get("label-key"), node.Get("role"), {}, {},
                  std::move(when),  node.place};
        std::set<std::string> offered;
        std::set<std::string> tried;
        for (const Node& child : node.children) {
            const bool offer = child.Is(Element::kOffer);
            if (!IsNew(offer ? offered : tried, child, "source", offer ? "offer" : "fallback")) continue;
            (offer ? slot.offers : slot.fallbacks).push_back(child.Get("source"));
        }
        mDocument.slots.push_back(std::move(slot));
    }

    template <typename Item>
    void CheckLimit(const std::vector<Item>& items, std::size_t most, const char* what)
    {
        if (items.size() <= most) return;
        mFindings.Add("E-LIMIT-COUNT", items[most].place,
                      "more than " + std::to_string(most) + " " + what + "; remove some");
    }

    FaceDocument& mDocument;
    Findings& mFindings;
    std::set<std::string> mIds;
    std::set<std::string> mLanguages;
    std::set<std::string> mRoles;
};

template <typename Item>
const Item* Find(const std::vector<Item>& items, const std::string Item::*name, const std::string& wanted)
{
    const auto at =
        std::find_if(items.begin(), items.end(), [&](const Item& item) { return item.*name == wanted; });
    return at == items.end() ? nullptr : &*at;
}

bool Contains(const std::vector<std::string>& names, const std::string& wanted)
{
    return std::find(names.begin(), names.end(), wanted) != names.end();
}

void AddPick(const Node& node, FaceDocument& document, Findings& findings)
{
    const std::string& id = node.Get("group");
    const std::string& option = node.Get("option");
    const Group* group = Find(document.groups, &Group::id, id);
    if (id.empty() || option.empty()) return;
    if (group == nullptr) {
        findings.Add("N-PICK-UNKNOWN", node.PlaceOf("group"),
                     "there is no group " + Quoted(id) + "; the pick is ignored");
    } else if (Find(group->options, &Option::id, option) == nullptr) {
        findings.Add("N-PICK-UNKNOWN", node.PlaceOf("option"),
                     Quoted(id) + " has no option " + Quoted(option) + "; its default " +
                         Quoted(group->defaultOption) + " is shown");
    } else if (!document.picks.insert_or_assign(id, option).second) {
        findings.Add("N-PICK-REPEATED", node.place,
                     Quoted(id) + " is picked more than once; the last counts");
    }
}

void AddPlacement(const Node& node, FaceDocument& document, Findings& findings)
{
    const std::string& name = node.Get("slot");
    const std::string& source = node.Get("source");
    const Slot* slot = Find(document.slots, &Slot::name, name);
    if (name.empty() || source.empty()) return;
    if (slot == nullptr) {
        findings.Add("N-PICK-UNKNOWN", node.PlaceOf("slot"),
                     "there is no slot " + Quoted(name) + "; the placement is ignored");
    } else if (source != "empty" && !Contains(slot->offers, source)) {
        findings.Add("N-PICK-UNKNOWN", node.PlaceOf("source"),
                     Quoted(name) + " does not offer " + Quoted(source) + "; its fallback is shown");
    } else if (!document.placed.insert_or_assign(name, source).second) {
        findings.Add("N-PICK-REPEATED", node.place,
                     Quoted(name) + " is placed more than once; the last counts");
    }
}

}  // namespace

void FillDocument(FaceDocument& document, Findings& findings)
{
    Model(document, findings).Fill();
}

void FillSelection(FaceDocument& document, Findings& findings)
{
    const Node* selection = document.root.Child(Element::kSelection);
    if (selection == nullptr) return;
    for (const Node& node : selection->children) {
        if (node.Is(Element::kPick)) {
            AddPick(node, document, findings);
        } else {
            AddPlacement(node, document, findings);
        }
    }
}

}  // namespace DataUtil
