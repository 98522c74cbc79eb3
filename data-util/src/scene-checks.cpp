#include <algorithm>
#include <set>

#include "face-checks.h"
#include "nearest-name.h"

namespace DataUtil {

namespace {

int Thousandths(std::string_view canonical)
{
    return ParseThousandths(canonical).value_or(0);
}

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
        for (const Node& child : mDocument.root.children) {
            if (child.Is(Element::kScene)) CheckChildren(child);
        }
        CheckUnusedRoles();
    }

private:
    void CheckChildren(const Node& parent)
    {
        for (const Node& node : parent.children) {
            if (mFindings.IsFull()) return;
            CheckColors(node);
            if (node.rule->Is(kIsShape)) CheckPaint(node);
            CheckKind(node);
            CheckChildren(node);
        }
    }

    void CheckKind(const Node& node)
    {
        switch (node.Kind()) {
            case Element::kTicks:
                return CheckTicks(node);
            case Element::kLinearGradient:
            case Element::kRadialGradient:
                return CheckStops(node);
            case Element::kSlot:
                return CheckSlot(node);
            default:
                return;
        }
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

    void CheckPaint(const Node& node)
    {
        const bool gradient = !node.children.empty();
        if (gradient && node.Has("fill")) {
            mFindings.Add("E-ATTRIBUTE-CHOICE", node.Where("fill"),
                          "the gradient is the fill; remove \"fill\" or the gradient");
        }
        const bool painted = gradient || Paints(node, "fill") || Paints(node, "stroke");
        if (!painted) {
            mFindings.Add(
                "W-INVISIBLE", node.Where(),
                "\"" + std::string(node.rule->name) + "\" has neither fill nor stroke and paints nothing");
        }
    }

    static bool Paints(const Node& node, const char* attribute)
    {
        return node.Has(attribute) && node.Get(attribute) != "none";
    }

    void CheckTicks(const Node& node)
    {
        if (node.Mentions("length") && !node.Has("length")) return;  // refused already
        if (node.GetOrDefault("shape") == "bar" && Thousandths(node.GetOrDefault("length")) == 0) {
            mFindings.Add("E-VALUE", node.Where("length"),
                          "ticks of the shape \"bar\" need a length above 0");
        }
    }

    void CheckStops(const Node& node)
    {
        int last = 0;
        for (const Node& stop : node.children) {
            const int offset = Thousandths(stop.GetOrDefault("offset"));
            if (stop.Has("offset") && offset < last) {
                mFindings.Add("E-VALUE", stop.Where("offset"),
                              "the offsets of a gradient's stops may not fall");
            }
            last = offset;
        }
    }

    void CheckSlot(const Node& node)
    {
        CheckChain(node);
        const std::string& role = node.Get("role");
        if (role == "gauge" || role == "arc") {
            for (const Node& child : node.children) {
                const Source* source = FindSource(child.Get("source"));
                if (!child.Is(Element::kOffer) || source == nullptr || source->hasShare) continue;
                mFindings.Add("E-ROLE-SOURCE", child.Where("source"),
                              Quoted(source->name) + " has no share to draw as \"" + role +
                                  "\"; remove the offer or choose another role");
            }
        }
        const auto outside = [&](const char* from, const char* extent, const char* side) {
            const int begin = Thousandths(node.GetOrDefault(from));
            return begin < 0 || begin + Thousandths(node.GetOrDefault(extent)) >
                                    Thousandths(mDocument.root.GetOrDefault(side));
        };
        if (outside("x", "width", "width") || outside("y", "height", "height")) {
            mFindings.Add("W-OFF-CANVAS", node.Where(), "the slot reaches beyond the canvas");
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
            if ((source == "empty") != (&child == last)) {
                mFindings.Add("E-FALLBACK", child.Where("source"),
                              "a chain of fallbacks ends in \"empty\", and only its end is \"empty\"");
            } else if (source != "empty" && std::find(offers.begin(), offers.end(), source) == offers.end()) {
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

    const FaceDocument& mDocument;
    Findings& mFindings;
    std::vector<std::string_view> mRoles;  // sorted
    std::set<std::string_view> mUsedRoles;
};

}  // namespace

void CheckScene(const FaceDocument& document, Findings& findings)
{
    SceneChecks(document, findings).Run();
}

}  // namespace DataUtil
