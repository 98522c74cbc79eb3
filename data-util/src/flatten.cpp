// From a checked document to the flat one. Nothing can fail here: whatever could was a finding.

#include <algorithm>
#include <utility>

#include "face-checks.h"
#include "flat-schema.h"
#include "xml-text.h"

namespace DataUtil {

namespace {

class Flattener {
public:
    explicit Flattener(const FaceDocument& document) : mDocument(document), mResolution(Resolve(document)) {}

    std::string Run()
    {
        mText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        const Node& root = mDocument.root;
        AppendStart(mText, 0, FlatSchema().Root().name, AttributesOf(root, Element::kFace));
        for (const Node& child : root.children) {
            if (child.Is(Element::kStrings)) WriteStrings(child);
        }
        WriteChildren(*root.Child(Element::kScene), 1);
        AppendEnd(mText, 0, FlatSchema().Root().name);
        return std::move(mText);
    }

private:
    // Values that are not those of the node. An empty one leaves the attribute out.
    using Overrides = std::vector<std::pair<std::string_view, std::string>>;

    // What the flat document's table has, in its order, without what has its default.
    XmlAttributes AttributesOf(const Node& node, Element element, const Overrides& overrides = {}) const
    {
        XmlAttributes attributes;
        for (const AttributeRule& rule : FlatSchema().RuleOf(element).attributes) {
            const std::string_view value = ValueOf(node, rule, overrides);
            if (value.empty() || (rule.fallback != nullptr && value == rule.fallback)) continue;
            attributes.emplace_back(rule.name, value);
        }
        return attributes;
    }

    std::string_view ValueOf(const Node& node, const AttributeRule& rule, const Overrides& overrides) const
    {
        for (const auto& [name, value] : overrides) {
            if (name == rule.name) return value;
        }
        const std::string& value = node.Get(rule.name);
        if (rule.kind != ValueKind::kPaint) return value;
        const auto color = mResolution.colors.find(value);
        return color == mResolution.colors.end() ? value : color->second;
    }

    void WriteStrings(const Node& strings)
    {
        AppendStart(mText, 1, "strings", AttributesOf(strings, Element::kStrings));
        for (const Node& string : strings.children) {
            mText += "    <string key=\"" + string.Get("key") + "\">" + Escaped(string.text, false) +
                     "</string>\n";
        }
        AppendEnd(mText, 1, "strings");
    }

    void WriteChildren(const Node& parent, int depth)
    {
        for (const Node& node : parent.children) {
            if (mResolution.Holds(TermsOf(node))) WriteNode(node, depth);
        }
    }

    void WriteNode(const Node& node, int depth)
    {
        switch (node.Kind()) {
            case Element::kSlot:
                return WriteComplication(node, depth);
            case Element::kLayer:
                return WriteLayer(node, depth);
            case Element::kText:
                return WriteText(node, depth);
            case Element::kPhoto:
                return WritePhoto(node, depth);
            default:
                return WriteElement(node, depth, {});
        }
    }

    void WriteElement(const Node& node, int depth, const Overrides& overrides)
    {
        const XmlAttributes attributes = AttributesOf(node, node.Kind(), overrides);
        if (node.children.empty()) return AppendElement(mText, depth, node.rule->name, attributes);
        AppendStart(mText, depth, node.rule->name, attributes);
        WriteChildren(node, depth + 1);
        AppendEnd(mText, depth, node.rule->name);
    }

    // A layer that changes nothing of what it holds is replaced by that.
    void WriteLayer(const Node& layer, int depth)
    {
        if (layer.Has("clock")) {
            const WorldClock clock = WorldClockOf(layer.Get("clock"));
            WriteElement(layer, depth,
                         {
                             {"timezone",      clock.timezone    },
                             {"timezone-path", clock.timezonePath}
            });
        } else if (AttributesOf(layer, Element::kLayer).empty()) {
            WriteChildren(layer, depth);
        } else {
            WriteElement(layer, depth, {});
        }
    }

    void WriteText(const Node& text, int depth)
    {
        if (!text.Has("city")) return WriteElement(text, depth, {});
        WriteElement(text, depth,
                     {
                         {"text", WorldClockOf(text.Get("city")).city}
        });
    }

    void WritePhoto(const Node& photo, int depth)
    {
        const std::string& id = photo.Get("photos");
        if (!mResolution.shown.at(id)) return;
        const Photos& photos = *FindById(mDocument.photos, &Photos::id, id);
        const auto file = mDocument.selection.photos.find(id);
        WriteElement(photo, depth,
                     {
                         {"background", photos.background                                           },
                         {"prefix",     photos.prefix                                               },
                         {"file",       file == mDocument.selection.photos.end() ? "" : file->second},
                         {"default",    photos.defaultImage                                         },
        });
    }

    // An empty slot keeps its name and box, so that tools can point at it, but has no role: nothing is drawn.
    void WriteComplication(const Node& slot, int depth)
    {
        constexpr std::string_view ofEmpty[] = {"name", "group", "source", "x", "y", "width", "height"};
        const Placement& shown = mResolution.sources.at(slot.Get("name"));
        const WorldClock clock = shown.worldClock.value_or(WorldClock());
        const Source* source = FindSource(shown.source);
        const bool isDefault =
            source != nullptr && source->skeleton != nullptr && slot.Get("skeleton") == source->skeleton;
        const Overrides overrides = {
            {"source",        shown.source                         },
            {"city",          clock.city                           },
            {"country",       clock.country                        },
            {"timezone",      clock.timezone                       },
            {"timezone-path", clock.timezonePath                   },
            {"skeleton",      isDefault ? "" : slot.Get("skeleton")},
        };
        XmlAttributes attributes = AttributesOf(slot, Element::kComplication, overrides);
        if (source == nullptr) {
            std::erase_if(attributes, [&](const auto& attribute) {
                return std::find(std::begin(ofEmpty), std::end(ofEmpty), attribute.first) ==
                       std::end(ofEmpty);
            });
        }
        AppendElement(mText, depth, FlatSchema().RuleOf(Element::kComplication).name, attributes);
    }

    WorldClock WorldClockOf(const std::string& slot) const
    {
        return mResolution.sources.at(slot).worldClock.value_or(WorldClock());
    }

    const FaceDocument& mDocument;
    const Resolution mResolution;
    std::string mText;
};

}  // namespace

std::string Flatten(const FaceDocument& document)
{
    return Flattener(document).Run();
}

}  // namespace DataUtil
