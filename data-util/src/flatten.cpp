// From a checked document to the flat one. Nothing can fail here: whatever could was a finding.

#include <algorithm>
#include <utility>

#include "face-document.h"

namespace DataUtil {

namespace {

std::string Escaped(std::string_view text, bool inAttribute)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += inAttribute ? "&quot;" : "\"";
                break;
            case '\r':  // a reader would make it a line feed
                escaped += "&#13;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

using Attributes = std::vector<std::pair<std::string_view, std::string_view>>;

class Flattener {
public:
    explicit Flattener(const FaceDocument& document) : mDocument(document), mResolution(Resolve(document)) {}

    std::string Run()
    {
        mText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        const Node& root = mDocument.root;
        Open(0, "watchface", AttributesOf(root), false);
        for (const Node& child : root.children) {
            if (child.Is(Element::kStrings)) WriteStrings(child);
        }
        WriteChildren(*root.Child(Element::kScene), 1);
        Close(0, "watchface");
        return std::move(mText);
    }

private:
    // In the order of the tables, without those that have their default.
    Attributes AttributesOf(const Node& node) const
    {
        Attributes attributes;
        for (const AttributeRule& rule : node.rule->attributes) {
            std::string_view value = node.Get(rule.name);
            if (rule.kind == ValueKind::kColor) {
                const auto color = mResolution.colors.find(std::string(value));
                if (color != mResolution.colors.end()) value = color->second;
            }
            if (value.empty() || (rule.fallback != nullptr && value == rule.fallback)) continue;
            attributes.emplace_back(rule.name, value);
        }
        return attributes;
    }

    void WriteStrings(const Node& strings)
    {
        Open(1, "strings", AttributesOf(strings), false);
        for (const Node& string : strings.children) {
            mText += "    <string key=\"" + string.Get("key") + "\">" + Escaped(string.text, false) +
                     "</string>\n";
        }
        Close(1, "strings");
    }

    void WriteChildren(const Node& parent, int depth)
    {
        for (const Node& node : parent.children) {
            if (node.Has("when") && !mResolution.Holds(*ParseCondition(node.Get("when")))) continue;
            if (node.Is(Element::kSlot)) {
                WriteComplication(node, depth);
            } else if (node.Is(Element::kLayer) && node.GetOrDefault("opacity") == "1") {
                WriteChildren(node, depth);
            } else {
                WriteElement(node, depth);
            }
        }
    }

    void WriteElement(const Node& node, int depth)
    {
        Open(depth, node.rule->name, AttributesOf(node), node.children.empty());
        if (node.children.empty()) return;
        WriteChildren(node, depth + 1);
        Close(depth, node.rule->name);
    }

    // An empty slot keeps its name and box, so that tools can point at it, but has no role: nothing is drawn.
    void WriteComplication(const Node& slot, int depth)
    {
        constexpr std::string_view ofEmpty[] = {"x", "y", "width", "height"};
        const std::string& source = mResolution.sources.at(slot.Get("name"));
        Attributes attributes = {
            {"name",   slot.Get("name") },
            {"group",  slot.Get("group")},
            {"source", source           }
        };
        for (const auto& [name, value] : AttributesOf(slot)) {
            if (name == "name" || name == "group" || name == "label-key") continue;
            if (source == "empty" &&
                std::find(std::begin(ofEmpty), std::end(ofEmpty), name) == std::end(ofEmpty))
                continue;
            attributes.emplace_back(name, value);
        }
        Open(depth, "complication", attributes, true);
    }

    void Open(int depth, std::string_view name, const Attributes& attributes, bool closed)
    {
        mText.append(2 * static_cast<std::size_t>(depth), ' ');
        mText += "<" + std::string(name);
        for (const auto& [key, value] : attributes) {
            mText += " " + std::string(key) + "=\"" + Escaped(value, true) + "\"";
        }
        mText += closed ? "/>\n" : ">\n";
    }

    void Close(int depth, std::string_view name)
    {
        mText.append(2 * static_cast<std::size_t>(depth), ' ');
        mText += "</" + std::string(name) + ">\n";
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
