// The drawing of a result XML, and with it everything that one element alone can have wrong.

#include <algorithm>
#include <set>

#include "element-checks.h"
#include "face-checks.h"
#include "nearest-name.h"

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
            if (attribute.rule->kind != ValueKind::kColor || value.empty() || value == "none" ||
                value.starts_with('#'))
                continue;
            mUsedRoles.insert(value);
            if (std::binary_search(mRoles.begin(), mRoles.end(), value)) continue;
            mFindings.Add("E-REF-UNKNOWN", node.Where(attribute.rule->name),
                          "no palette sets the role " + Quoted(value) + Suggestion(value, mRoles));
        }
    }

    void CheckPhoto(const Node& node)
    {
        const std::string& id = node.Get("photos");
        if (id.empty()) return;
        mUsedPhotos.insert(id);
        if (FindById(mDocument.photos, &Photos::id, id) != nullptr) return;
        mFindings.Add(
            "E-REF-UNKNOWN", node.Where("photos"),
            "there are no photos " + Quoted(id) + Suggestion(id, NamesOf(mDocument.photos, &Photos::id)));
    }

    void CheckSlot(const Node& node)
    {
        CheckChain(node);
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
            } else if (source != kEmptySource &&
                       std::find(offers.begin(), offers.end(), source) == offers.end()) {
                mFindings.Add("E-REF-UNKNOWN", child.Where("source"),
                              "the slot does not offer " + Quoted(source) + Suggestion(source, offers));
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
                if (mUsedRoles.count(role) != 0) continue;
                mFindings.Add("W-UNUSED", group.origin.Where(),
                              "nothing is painted in the role " + Quoted(role) + "; remove it");
            }
        }
    }

    void CheckUnusedPhotos()
    {
        for (const Photos& photos : mDocument.photos) {
            if (photos.id.empty() || mUsedPhotos.count(photos.id) != 0) continue;
            mFindings.Add("W-UNUSED", photos.origin.Where(),
                          "no \"photo\" shows " + Quoted(photos.id) + "; remove it");
        }
    }

    const FaceDocument& mDocument;
    Findings& mFindings;
    std::vector<std::string_view> mRoles;  // sorted
    std::set<std::string_view> mUsedRoles;
    std::set<std::string_view> mUsedPhotos;
};

}  // namespace

void CheckScene(const FaceDocument& document, Findings& findings)
{
    SceneChecks(document, findings).Run();
}

}  // namespace DataUtil
