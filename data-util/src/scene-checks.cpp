// The drawing of a result XML, and with it everything that one element alone can have wrong.

#include <algorithm>
#include <set>

#include "color-names.h"
#include "element-checks.h"
#include "face-checks.h"
#include "nearest-name.h"
#include "uses.h"

namespace DataUtil {

namespace {

class SceneChecks {
public:
    SceneChecks(const FaceDocument& document, Findings& findings) : mDocument(document), mFindings(findings)
    {
        std::set<std::string_view> roles;
        for (const Group& group : document.groups) {
            for (const Option& option : group.options) {
                for (const auto& [role, color] : option.colors) roles.insert(role);
            }
        }
        mRoles.assign(roles.begin(), roles.end());
    }

    void Run()
    {
        Check(mDocument.root);
        CheckUnusedRoles();
        CheckUnusedPhotos();
    }

private:
    void Check(const Node& node)
    {
        if (mFindings.IsFull()) return;
        CheckColors(node);
        CheckElement(node, mFindings);
        if (node.Is(Element::kSlot)) CheckSlot(node);
        if (node.Is(Element::kPhoto)) CheckPhoto(node);
        for (const Node& child : node.children) Check(child);
    }

    void CheckColors(const Node& node)
    {
        for (const Node::Attribute& attribute : node.attributes) {
            const std::string& value = attribute.value;
            if (attribute.rule->kind != ValueKind::kColor || !IsRole(value) || mFindings.IsRefused(value))
                continue;
            const bool exists = std::binary_search(mRoles.begin(), mRoles.end(), value);
            const std::string_view role = exists ? value : mFindings.Nearest(value, mRoles);
            mUsedRoles.Add(role);
            if (exists) continue;
            const std::string_view meant = role.empty() ? ValueOfColor(value) : role;
            mFindings.Add("E-REF-UNKNOWN", node.Where(attribute.rule->name),
                          Quoted(value) + " is neither #RRGGBB nor a role that a palette sets" +
                              MeantOrKnown(meant, mRoles));
        }
    }

    void CheckPhoto(const Node& node)
    {
        const std::string& id = node.Get("photos");
        if (mFindings.IsRefused(id)) return;
        if (FindById(mDocument.photos, &Photos::id, id) != nullptr) {
            mUsedPhotos.Add(id);
            return;
        }
        const auto known = NamesOf(mDocument.photos, &Photos::id);
        const std::string_view meant = mFindings.Nearest(id, known);
        mUsedPhotos.Add(meant);
        mFindings.Add("E-REF-UNKNOWN", node.Where("photos"),
                      "there are no photos " + Quoted(id) + MeantOrKnown(meant, known));
    }

    void CheckSlot(const Node& node)
    {
        if (!node.hasUnknownChild) CheckChain(node);
        CheckBox(node, mDocument.root, mFindings);
        const std::string& role = node.Get("role");
        if (role.empty()) return;
        for (const Node& child : node.children) {
            const std::string& source = child.Get("source");
            if (!child.Is(Element::kOffer) || source.empty() || CanShow(role, source)) continue;
            mFindings.Add("E-ROLE-SOURCE", child.Where("source"),
                          Quoted(source) + " cannot be drawn as \"" + role +
                              "\"; remove the offer or choose another role");
        }
    }

    // The chain names offers only, and ends in "empty".
    void CheckChain(const Node& slot)
    {
        std::vector<std::string_view> offers;
        const Node* last = nullptr;
        for (const Node& child : slot.children) {
            if (child.Is(Element::kOffer)) offers.emplace_back(child.Get("source"));
            if (child.Is(Element::kFallback)) last = &child;
        }
        for (const Node& child : slot.children) {
            const std::string& source = child.Get("source");
            if (!child.Is(Element::kFallback) || source.empty()) continue;
            if ((source == kEmptySource) != (&child == last)) {
                mFindings.Add("E-FALLBACK", child.Where("source"),
                              "a chain of fallbacks ends in \"empty\", and only its end is \"empty\"");
            } else if (source != kEmptySource && !mFindings.IsRefused(source) &&
                       std::find(offers.begin(), offers.end(), source) == offers.end()) {
                mFindings.Add("E-REF-UNKNOWN", child.Where("source"),
                              NotOffered("the slot", source, mFindings.Nearest(source, offers), offers));
            }
        }
    }

    void CheckUnusedRoles()
    {
        for (const Group& group : mDocument.groups) {
            std::set<std::string_view> roles;
            for (const Option& option : group.options) {
                for (const auto& [role, color] : option.colors) roles.insert(role);
            }
            for (const std::string_view role : roles) {
                if (mUsedRoles.Has(role) || mFindings.IsRefused(role)) continue;
                mFindings.Add("W-UNUSED", group.origin.Where(),
                              "nothing is painted in the role " + Quoted(role) + "; remove it");
            }
        }
    }

    void CheckUnusedPhotos()
    {
        for (const Photos& photos : mDocument.photos) {
            if (mUsedPhotos.Has(photos.id) || mFindings.IsRefused(photos.id)) continue;
            mFindings.Add("W-UNUSED", photos.origin.Where(),
                          "no \"photo\" shows " + Quoted(photos.id) + "; remove it");
        }
    }

    const FaceDocument& mDocument;
    Findings& mFindings;
    std::vector<std::string_view> mRoles;  // sorted
    Uses mUsedRoles;
    Uses mUsedPhotos;
};

}  // namespace

std::string NotOffered(const std::string& slot, std::string_view source, std::string_view meant,
                       const std::vector<std::string_view>& offers)
{
    // A source that exists is no slip of typing for another one.
    const bool exists = source == kEmptySource || FindSource(source) != nullptr;
    return slot + " does not offer " + Quoted(source) +
           (exists ? Listed("; it offers:", offers) : MeantOrKnown(meant, offers));
}

void CheckScene(const FaceDocument& document, Findings& findings)
{
    SceneChecks(document, findings).Run();
}

}  // namespace DataUtil
