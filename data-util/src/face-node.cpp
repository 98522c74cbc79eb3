#include "face-node.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <pugixml.hpp>
#include <utility>

#include "nearest-name.h"
#include "xml-gate.h"

namespace DataUtil {

namespace {

// What is misspelled is a finding, and read as what it probably means: so nothing follows from it that ends
// once it is mended, and what else is wrong with it is told too.
class Reader {
public:
    Reader(const XmlTree& tree, const Schema& schema, Findings& findings)
        : mTree(tree), mSchema(schema), mFindings(findings)
    {
    }

    // Depth is bounded by the gate, so recursion is too.
    Node Read(const pugi::xml_node& xml, const ElementRule& rule)
    {
        Node node;
        node.rule = &rule;
        node.origin = Origin(mTree, xml);
        ReadAttributes(xml, node);
        ReadChildren(xml, node);
        return node;
    }

private:
    using Counts = std::array<int, kElementCount>;  // of an element's children of each kind

    void ReadAttributes(const pugi::xml_node& xml, Node& node)
    {
        node.attributes.reserve(
            static_cast<std::size_t>(std::distance(xml.attributes_begin(), xml.attributes_end())));
        for (const pugi::xml_attribute& attribute : xml.attributes()) {
            if (mFindings.IsFull()) return;
            const std::string_view name = attribute.name();
            const AttributeRule* rule = AttributeRuleOf(*node.rule, name);
            if (rule == nullptr) {
                const auto known = AttributeNames(*node.rule);
                const std::string_view meant = mFindings.Nearest(name, known);
                mFindings.Add("E-ATTRIBUTE-UNKNOWN", node.Where(name),
                              Quoted(node.rule->name) + " has no attribute " + Quoted(name) +
                                  MeantOrKnown(meant, known));
                rule = MeantRule(meant, xml, node);
                if (rule == nullptr) {
                    mFindings.Refuse(attribute.value());
                    continue;
                }
            }
            std::string expected;
            auto value = CanonicalValue(*rule, attribute.value(), expected);
            if (!value || value->empty()) {
                const char* code = rule->kind == ValueKind::kAsset ? "E-ASSET-PATH" : "E-VALUE";
                if (value) expected = "a value that is not empty";
                mFindings.Add(code, node.Where(name),
                              std::string(name) + "=" + Quoted(attribute.value()) + " must be " + expected);
                value = ProbableValue(*rule, attribute.value());
                if (value->empty()) mFindings.Refuse(attribute.value());
            }
            node.attributes.push_back({rule, std::move(*value)});
        }
        for (const AttributeRule& rule : node.rule->attributes) {
            if (rule.fallback != kRequired || node.Mentions(rule.name)) continue;
            mFindings.Add("E-ATTRIBUTE-MISSING", node.Where(),
                          Quoted(node.rule->name) + " needs the attribute " + Quoted(rule.name));
        }
        CheckChoice(node);
    }

    // The rule of the attribute that an unknown one means, unless that is there itself; or null.
    static const AttributeRule* MeantRule(std::string_view meant, const pugi::xml_node& xml, const Node& node)
    {
        const AttributeRule* rule = AttributeRuleOf(*node.rule, meant);
        return rule == nullptr || xml.attribute(rule->name.data()) || node.Mentions(rule->name) ? nullptr
                                                                                                : rule;
    }

    void CheckChoice(const Node& node)
    {
        const AttributeChoice& choice = node.rule->choice;
        int present = 0;
        std::string names;
        for (const char* name : choice.names) {
            present += node.Mentions(name) ? 1 : 0;
            names += (names.empty() ? "\"" : ", \"") + std::string(name) + "\"";
        }
        const bool good = choice.exactlyOne ? present == 1 : present >= 1;
        if (choice.names.empty() || good) return;
        mFindings.Add("E-ATTRIBUTE-CHOICE", node.Where(),
                      Quoted(node.rule->name) + " needs " +
                          (choice.exactlyOne ? "exactly one of " : "at least one of ") + names);
    }

    void ReadChildren(const pugi::xml_node& xml, Node& node)
    {
        node.children.reserve(static_cast<std::size_t>(std::distance(xml.begin(), xml.end())));
        Counts counts{};
        for (const pugi::xml_node& child : xml.children()) {
            if (mFindings.IsFull()) return;
            if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
                ReadText(child, node);
            } else if (child.type() == pugi::node_element) {
                ReadElement(child, node, counts);
            }
        }
        if (node.rule->Is(kHasText) && node.text.find_first_not_of(" \t\r\n") == std::string::npos) {
            mFindings.Add("E-TEXT", node.Where(), Quoted(node.rule->name) + " needs a text");
        }
        CheckCounts(node, counts);
        CheckTotal(node);
    }

    void ReadText(const pugi::xml_node& text, Node& node)
    {
        if (node.rule->Is(kHasText)) {
            node.text += text.value();
        } else {
            mFindings.Add("E-TEXT", node.Where(),
                          Quoted(node.rule->name) + " takes no text, but has " + Quoted(text.value()));
        }
    }

    void ReadElement(const pugi::xml_node& xml, Node& node, Counts& counts)
    {
        const std::string_view name = xml.name();
        if (const ElementRule* rule = mSchema.ChildRuleOf(*node.rule, name)) {
            ReadChild(xml, *rule, node, counts);
            return;
        }
        const Place place = Origin(mTree, xml).Where();
        const auto parents = mSchema.ParentNames(name);
        if (parents.empty()) {
            const auto known = mSchema.ChildNames(*node.rule);
            const std::string_view meant = mFindings.Nearest(name, known);
            mFindings.Add("E-ELEMENT-UNKNOWN", place,
                          "there is no element " + Quoted(name) + MeantOrKnown(meant, known));
            if (const ElementRule* rule = mSchema.ChildRuleOf(*node.rule, meant)) {
                ReadChild(xml, *rule, node, counts);
            } else {
                node.hasUnknownChild = true;
                RefuseNames(xml);
            }
            return;
        }
        RefuseNames(xml);
        std::string where;
        for (const std::string_view parent : parents)
            where += (where.empty() ? "" : ", ") + std::string(parent);
        mFindings.Add("E-PLACE", place,
                      Quoted(name) + " may not stand in " + Quoted(node.rule->name) +
                          "; move it into one of: " + where);
    }

    // What is more than may be is left out: everything that is read has a limit.
    void ReadChild(const pugi::xml_node& xml, const ElementRule& rule, Node& node, Counts& counts)
    {
        const int most = ChildRuleOf(*node.rule, rule.element).most;
        const int count = ++counts[static_cast<std::size_t>(rule.element)];
        if (most == 0 || count <= most) {
            node.children.push_back(Read(xml, rule));
            return;
        }
        RefuseNames(xml);
        if (count > most + 1) return;
        mFindings.Add(
            "E-CHILD-COUNT", Origin(mTree, xml).Where(),
            Quoted(node.rule->name) + " takes at most " + std::to_string(most) + " " + Quoted(rule.name));
    }

    static const ChildRule& ChildRuleOf(const ElementRule& parent, Element child)
    {
        return *std::find_if(parent.children.begin(), parent.children.end(),
                             [child](const ChildRule& rule) { return rule.element == child; });
    }

    void RefuseNames(const pugi::xml_node& xml)
    {
        for (const pugi::xml_attribute& attribute : xml.attributes()) mFindings.Refuse(attribute.value());
        for (const pugi::xml_node& child : xml.children()) RefuseNames(child);
    }

    void CheckCounts(const Node& node, const Counts& counts)
    {
        if (node.hasUnknownChild) return;
        for (const ChildRule& child : node.rule->children) {
            if (counts[static_cast<std::size_t>(child.element)] >= child.least) continue;
            mFindings.Add("E-CHILD-COUNT", node.Where(),
                          Quoted(node.rule->name) + " needs at least " + std::to_string(child.least) + " " +
                              Quoted(mSchema.RuleOf(child.element).name));
        }
    }

    void CheckTotal(const Node& node)
    {
        const ChildTotal& total = node.rule->total;
        const auto count = static_cast<int>(node.children.size());
        if (count < total.least && !node.hasUnknownChild) {
            mFindings.Add("E-CHILD-COUNT", node.Where(),
                          Quoted(node.rule->name) + " needs at least " + std::to_string(total.least) +
                              " of what may stand in it");
        } else if (total.most != 0 && count > total.most) {
            mFindings.Add("E-CHILD-COUNT", node.children[static_cast<std::size_t>(total.most)].Where(),
                          Quoted(node.rule->name) + " takes at most " + std::to_string(total.most) +
                              " of these; remove all others");
        }
    }

    const XmlTree& mTree;
    const Schema& mSchema;
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

const Node* Node::Child(Element element) const
{
    const auto at =
        std::find_if(children.begin(), children.end(), [&](const Node& child) { return child.Is(element); });
    return at == children.end() ? nullptr : &*at;
}

bool ReadNodes(const XmlTree& tree, const Schema& schema, Node& root, Findings& findings)
{
    const ElementRule& rule = schema.Root();
    const pugi::xml_node xml = tree.Root();
    const Origin origin(tree, xml);
    if (std::string_view(xml.name()) != rule.name) {
        findings.Add("E-ROOT", origin.Where(),
                     "the root is " + Quoted(xml.name()) + ", not " + Quoted(rule.name));
        return false;
    }
    const std::string_view format = xml.attribute("format").value();
    if (!format.empty() && format != "1" && ParseThousandths(format)) {
        findings.Add("E-FORMAT-VERSION", origin.Where("format"),
                     "format " + Quoted(format) + " is not known; this library reads format 1");
        return false;
    }
    root = Reader(tree, schema, findings).Read(xml, rule);
    return true;
}

}  // namespace DataUtil
