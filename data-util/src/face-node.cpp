#include "face-node.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <pugixml.hpp>
#include <utility>

#include "nearest-name.h"
#include "xml-gate.h"

namespace DataUtil {

namespace {

// What tells elements of one name apart in a path.
constexpr const char* kIdentifying[] = {"id", "name", "key", "language", "role"};

class Reader {
public:
    Reader(const XmlTree& tree, Findings& findings) : mTree(tree), mFindings(findings) {}

    // Depth is bounded by the gate, so recursion is too.
    Node Read(const pugi::xml_node& xml, const ElementRule& rule, std::string path)
    {
        Node node;
        node.rule = &rule;
        node.place = mTree.PlaceOf(xml, std::move(path));
        ReadAttributes(xml, node);
        ReadChildren(xml, node);
        return node;
    }

private:
    void ReadAttributes(const pugi::xml_node& xml, Node& node)
    {
        const std::string& path = node.place.path;
        for (const pugi::xml_attribute& attribute : xml.attributes()) {
            if (mFindings.IsFull()) return;
            const std::string_view name = attribute.name();
            const Place place = mTree.PlaceOf(xml, name, path + "/@" + std::string(name));
            const AttributeRule* rule = AttributeRuleOf(*node.rule, name);
            if (rule == nullptr) {
                mFindings.Add("E-ATTRIBUTE-UNKNOWN", place,
                              "\"" + std::string(node.rule->name) + "\" has no attribute " + Quoted(name) +
                                  Suggestion(name, AttributeNames(*node.rule)));
                continue;
            }
            std::string expected;
            auto value = CanonicalValue(*rule, attribute.value(), expected);
            if (!value || value->empty()) {
                const char* code = rule->kind == ValueKind::kAsset ? "E-ASSET-PATH" : "E-VALUE";
                if (value) expected = "a value that is not empty";
                mFindings.Add(code, place,
                              std::string(name) + "=" + Quoted(attribute.value()) + " must be " + expected);
                value = std::string();
            }
            node.attributes.push_back({rule, std::move(*value), place.line, place.column});
        }
        for (const AttributeRule& rule : node.rule->attributes) {
            if (rule.fallback != kRequired || xml.attribute(rule.name)) continue;
            mFindings.Add(
                "E-ATTRIBUTE-MISSING", node.place,
                "\"" + std::string(node.rule->name) + "\" needs the attribute \"" + rule.name + "\"");
        }
    }

    std::string PathOf(const pugi::xml_node& xml, const std::string& parent,
                       std::map<std::string_view, int>& counts)
    {
        const std::string_view name = xml.name();
        const int index = ++counts[name];
        std::string path = parent + "/" + std::string(name);
        for (const char* attribute : kIdentifying) {
            const std::string_view value = xml.attribute(attribute).value();
            if (!value.empty() && value.size() <= 64) return path + "[" + std::string(value) + "]";
        }
        return path + "[" + std::to_string(index) + "]";
    }

    void ReadChildren(const pugi::xml_node& xml, Node& node)
    {
        std::map<std::string_view, int> counts;
        for (const pugi::xml_node& child : xml.children()) {
            if (mFindings.IsFull()) return;
            if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
                ReadText(child, node);
            } else if (child.type() == pugi::node_element) {
                ReadElement(child, node, PathOf(child, node.place.path, counts));
            }
        }
        if (node.rule->hasText && node.text.empty()) {
            mFindings.Add("E-TEXT", node.place, "\"" + std::string(node.rule->name) + "\" needs a text");
        }
        CheckCounts(node);
    }

    void ReadText(const pugi::xml_node& text, Node& node)
    {
        if (node.rule->hasText) {
            node.text += text.value();
        } else {
            mFindings.Add(
                "E-TEXT", mTree.PlaceOf(text.parent(), node.place.path),
                "\"" + std::string(node.rule->name) + "\" takes no text, but has " + Quoted(text.value()));
        }
    }

    void ReadElement(const pugi::xml_node& xml, Node& node, std::string path)
    {
        const std::string_view name = xml.name();
        if (const ElementRule* rule = ChildRuleOf(*node.rule, name)) {
            node.children.push_back(Read(xml, *rule, std::move(path)));
            return;
        }
        const Place place = mTree.PlaceOf(xml, std::move(path));
        const auto parents = ParentNames(name);
        if (parents.empty()) {
            mFindings.Add("E-ELEMENT-UNKNOWN", place,
                          "there is no element " + Quoted(name) + Suggestion(name, ChildNames(*node.rule)));
            return;
        }
        std::string where;
        for (const std::string_view parent : parents)
            where += (where.empty() ? "" : ", ") + std::string(parent);
        mFindings.Add(
            "E-PLACE", place,
            Quoted(name) + " may not stand in \"" + node.rule->name + "\"; move it into one of: " + where);
    }

    void CheckCounts(const Node& node)
    {
        for (const ChildRule& child : node.rule->children) {
            const char* name = RuleOf(child.element).name;
            int count = 0;
            for (const Node& present : node.children) {
                if (!present.Is(child.element)) continue;
                if (++count == child.most + 1 && child.most != 0) {
                    mFindings.Add("E-CHILD-COUNT", present.place,
                                  "\"" + std::string(node.rule->name) + "\" takes at most " +
                                      std::to_string(child.most) + " \"" + name + "\"");
                }
            }
            if (count < child.least) {
                mFindings.Add("E-CHILD-COUNT", node.place,
                              "\"" + std::string(node.rule->name) + "\" needs at least " +
                                  std::to_string(child.least) + " \"" + name + "\"");
            }
        }
    }

    const XmlTree& mTree;
    Findings& mFindings;
};

}  // namespace

const std::string& Node::Get(std::string_view name) const
{
    static const std::string kNone;
    const auto at = std::find_if(attributes.begin(), attributes.end(),
                                 [&](const Attribute& attribute) { return name == attribute.rule->name; });
    return at == attributes.end() ? kNone : at->value;
}

bool Node::Mentions(std::string_view name) const
{
    return std::any_of(attributes.begin(), attributes.end(),
                       [&](const Attribute& attribute) { return name == attribute.rule->name; });
}

std::string_view Node::GetOrDefault(std::string_view name) const
{
    if (const std::string& value = Get(name); !value.empty()) return value;
    const AttributeRule* attribute = AttributeRuleOf(*rule, name);
    if (attribute == nullptr || attribute->fallback == nullptr || attribute->fallback == kRequired) return {};
    return attribute->fallback;
}

Place Node::PlaceOf(std::string_view name) const
{
    const auto at = std::find_if(attributes.begin(), attributes.end(),
                                 [&](const Attribute& attribute) { return name == attribute.rule->name; });
    if (at == attributes.end()) return place;
    return {at->line, at->column, place.path + "/@" + std::string(name)};
}

const Node* Node::Child(Element element) const
{
    const auto at =
        std::find_if(children.begin(), children.end(), [&](const Node& child) { return child.Is(element); });
    return at == children.end() ? nullptr : &*at;
}

bool ReadNodes(const XmlTree& tree, Node& root, Findings& findings)
{
    const ElementRule& rule = RuleOf(Element::kFace);
    const pugi::xml_node xml = tree.Root();
    const std::string path = "/" + std::string(xml.name());
    if (std::string_view(xml.name()) != rule.name) {
        findings.Add(
            "E-ROOT", tree.PlaceOf(xml, path),
            "the root is " + Quoted(xml.name()) + "; a result XML has the root \"" + rule.name + "\"");
        return false;
    }
    const std::string_view format = xml.attribute("format").value();
    if (!format.empty() && format != "1" && ParseThousandths(format)) {
        findings.Add("E-FORMAT-VERSION", tree.PlaceOf(xml, "format", path + "/@format"),
                     "format " + Quoted(format) + " is not known; this library reads format 1");
        return false;
    }
    root = Reader(tree, findings).Read(xml, rule, path);
    return true;
}

}  // namespace DataUtil
