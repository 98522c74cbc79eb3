// From checked nodes to groups, photos, presets, slots and texts.

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

#include "element-checks.h"
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
        mDocument.complicationUsage = root.Get("complication-usage");
        mDocument.texts = ReadTexts(root, mFindings);
        for (const Node& child : root.children) {
            if (child.Is(Element::kOptions)) AddOptions(child);
            if (child.Is(Element::kScene)) AddSlots(child, {});
        }
        CheckLimit(mDocument.groups, kMostGroups, "groups of options");
        CheckLimit(mDocument.slots, kMostSlots, "slots");
        // A preset may stand before what it names.
        for (const Node& child : root.children) {
            if (child.Is(Element::kOptions)) AddPresets(child);
        }
    }

private:
    bool IsNew(std::set<std::string>& known, const Node& node, const char* attribute, const char* what)
    {
        return TakeId(known, node, attribute, what, mFindings);
    }

    void AddOptions(const Node& options)
    {
        for (const Node& node : options.children) {
            switch (node.Kind()) {
                case Element::kStyle:
                    AddGroup(node, GroupKind::kStyle);
                    break;
                case Element::kPalette:
                    AddGroup(node, GroupKind::kPalette);
                    break;
                case Element::kSwitch:
                    AddGroup(node, GroupKind::kSwitch);
                    break;
                case Element::kPhotos:
                    AddPhotos(node);
                    break;
                default:
                    break;
            }
        }
    }

    void AddGroup(const Node& node, GroupKind kind)
    {
        Group group;
        group.kind = kind;
        IsNew(mIds, node, "id", "group, slot or photos");
        group.id = node.Get("id");
        group.labelKey = node.Get("label-key");
        group.usage = node.Get("usage");
        group.when = TermsOf(node);
        group.origin = node.origin;
        if (kind == GroupKind::kSwitch) {
            group.options = {
                {"on",  "", {}, node.origin},
                {"off", "", {}, node.origin}
            };
            group.defaultOption = node.Get("default");
        } else {
            AddOptions(node, group);
        }
        if (!group.usage.empty() && ++mUsages == kMostUsages + 1) {
            mFindings.Add("E-LIMIT-COUNT", node.Where("usage"),
                          "the picks of more than " + std::to_string(kMostUsages) +
                              " groups cannot be reported; remove one \"usage\"");
        }
        mDocument.groups.push_back(std::move(group));
    }

    void AddPhotos(const Node& node)
    {
        IsNew(mIds, node, "id", "group, slot or photos");
        mDocument.photos.push_back({node.Get("id"), node.Get("label-key"), node.Get("default"),
                                    node.Get("background"), node.Get("prefix"), TermsOf(node), node.origin});
    }

    void AddOptions(const Node& node, Group& group)
    {
        std::set<std::string> ids;
        const Node* first = nullptr;
        bool isKnown = !node.hasUnknownChild;  // a refused value may be the default
        for (const Node& child : node.children) {
            IsNew(ids, child, "id", "option");
            isKnown = isKnown && (child.Has("default") || !child.Mentions("default"));
            Option option{child.Get("id"), child.Get("label-key"), {}, child.origin};
            if (child.Get("default") == "true") {
                if (first != nullptr) {
                    mFindings.Add("E-DEFAULT", child.Where("default"),
                                  NameOf(group) + " already has the default " + Quoted(first->Get("id")) +
                                      "; keep one");
                } else {
                    first = &child;
                    group.defaultOption = option.id;
                }
            }
            AddColors(child, option);
            group.options.push_back(std::move(option));
        }
        if (first == nullptr && !node.children.empty() && isKnown) {
            mFindings.Add("E-DEFAULT", node.Where(),
                          NameOf(group) + " has no default; mark one option with default=\"true\"");
        }
        if (group.kind == GroupKind::kPalette) CheckPalette(group);
    }

    // An id that was refused is no name.
    static std::string NameOf(const Group& group)
    {
        return group.id.empty() ? "this group" : Quoted(group.id);
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
                if (option.colors.count(role) != 0 || mFindings.IsRefused(role)) continue;
                mFindings.Add("E-COVERAGE", option.origin.Where(),
                              (option.id.empty() ? "this option" : "the option " + Quoted(option.id)) +
                                  " has no colour for the role " + Quoted(role) +
                                  ", which another option sets");
            }
        }
        for (const std::string& role : roles) {
            if (mRoles.insert(role).second) continue;
            mFindings.Add("E-ID-DUPLICATE", group.origin.Where(),
                          "another palette already sets the role " + Quoted(role) + "; choose another name");
        }
    }

    void AddSlots(const Node& parent, const std::vector<Term>& outer)
    {
        for (const Node& node : parent.children) {
            if (!node.Is(Element::kLayer) && !node.Is(Element::kSlot)) continue;
            std::vector<Term> when = outer;
            const auto own = TermsOf(node);
            when.insert(when.end(), own.begin(), own.end());
            if (node.Is(Element::kLayer)) {
                AddSlots(node, when);
            } else {
                AddSlot(node, std::move(when));
            }
        }
    }

    void AddSlot(const Node& node, std::vector<Term> when)
    {
        IsNew(mIds, node, "name", "group, slot or photos");
        Slot slot{node.Get("name"), node.Get("group"), node.Get("label-key"), node.Get("role"), {}, {},
                  std::move(when),  node.origin};
        std::set<std::string> offered;
        std::set<std::string> tried;
        for (const Node& child : node.children) {
            const bool offer = child.Is(Element::kOffer);
            if (!IsNew(offer ? offered : tried, child, "source", offer ? "offer" : "fallback")) continue;
            if (offer) {
                slot.offers.push_back(OfferOf(child));
            } else {
                slot.fallbacks.push_back(child.Get("source"));
            }
        }
        mDocument.slots.push_back(std::move(slot));
    }

    static Offer OfferOf(const Node& node)
    {
        const Source* source = FindSource(node.Get("source"));
        const bool always = source != nullptr && source->needsPhone;
        return {node.Get("source"), always || node.Get("needs") == "phone", WorldClockOf(node)};
    }

    void AddPresets(const Node& options)
    {
        std::set<std::string> ids;
        for (const Node& node : options.children) {
            if (!node.Is(Element::kPreset)) continue;
            IsNew(ids, node, "id", "preset");
            Preset preset{node.Get("id"), node.Get("label-key"), {}, node.origin};
            std::set<std::string> named;
            for (const Node& child : node.children) {
                if (child.Is(Element::kPresetPick)) {
                    if (IsNew(named, child, "group", "choice for")) AddPick(child, preset);
                } else {
                    if (IsNew(named, child, "slot", "choice for")) AddPlacement(child, preset);
                }
            }
            mDocument.presets.push_back(std::move(preset));
        }
    }

    void AddPick(const Node& node, Preset& preset)
    {
        const std::string& id = node.Get("group");
        const std::string& option = node.Get("option");
        if (mFindings.IsRefused(id)) return;
        const Group* group = FindOrMeant(mDocument.groups, &Group::id, node, "group");
        if (group != nullptr && !mFindings.IsRefused(option) &&
            FindById(group->options, &Option::id, option) == nullptr) {
            mFindings.Add("E-REF-UNKNOWN", node.Where("option"),
                          Quoted(group->id) + " has no option " + Quoted(option) +
                              mFindings.Suggestion(option, NamesOf(group->options, &Option::id)));
        }
        preset.choices.picks[id] = option;
    }

    void AddPlacement(const Node& node, Preset& preset)
    {
        const std::string& name = node.Get("slot");
        const std::string& source = node.Get("source");
        if (mFindings.IsRefused(name)) return;
        const Slot* slot = FindOrMeant(mDocument.slots, &Slot::name, node, "slot");
        if (slot != nullptr && source != kEmptySource && !mFindings.IsRefused(source) &&
            slot->OfferOf(source) == nullptr) {
            const auto offers = NamesOf(slot->offers, &Offer::source);
            mFindings.Add("E-REF-UNKNOWN", node.Where("source"),
                          NotOffered(Quoted(slot->name), source, mFindings.Nearest(source, offers), offers));
        }
        preset.choices.places[name] = PlacementOf(node);
    }

    // What the attribute names; else that is told, and what it is near to is taken instead, or null.
    template <typename Item>
    const Item* FindOrMeant(const std::vector<Item>& items, const std::string Item::*id, const Node& node,
                            const char* attribute)
    {
        const std::string& name = node.Get(attribute);
        if (const Item* item = FindById(items, id, name)) return item;
        const auto names = NamesOf(items, id);
        const std::string_view meant = mFindings.Nearest(name, names);
        mFindings.Add(
            "E-REF-UNKNOWN", node.Where(attribute),
            "there is no " + std::string(attribute) + " " + Quoted(name) + MeantOrKnown(meant, names));
        return meant.empty() ? nullptr : FindById(items, id, meant);
    }

    template <typename Item>
    void CheckLimit(const std::vector<Item>& items, std::size_t most, const char* what)
    {
        if (items.size() <= most) return;
        mFindings.Add("E-LIMIT-COUNT", items[most].origin.Where(),
                      "more than " + std::to_string(most) + " " + what + "; remove some");
    }

    FaceDocument& mDocument;
    Findings& mFindings;
    std::set<std::string> mIds;
    std::set<std::string> mRoles;
    std::size_t mUsages = 0;
};

}  // namespace

void FillDocument(FaceDocument& document, Findings& findings)
{
    Model(document, findings).Fill();
}

}  // namespace DataUtil
