// A document after its structure was checked: only known elements and attributes, values canonical. What was
// misspelled, a finding, stands as what it probably means.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "finding.h"
#include "schema.h"
#include "xml-gate.h"

namespace DataUtil {

struct Node {
    struct Attribute {
        const AttributeRule* rule;
        std::string value;  // canonical; of a refused one what it probably means, or empty
    };

    const ElementRule* rule = nullptr;
    Origin origin;
    std::vector<Attribute> attributes;  // in document order
    std::string text;
    std::vector<Node> children;
    bool hasUnknownChild = false;  // left out; it may be any that seems to be lacking

    Element Kind() const { return rule->element; }
    bool Is(Element element) const { return rule->element == element; }
    // The canonical value, or an empty text; no accepted value is empty.
    const std::string& Get(std::string_view name) const;
    bool Has(std::string_view name) const { return !Get(name).empty(); }
    // True also for an attribute whose value is empty.
    bool Mentions(std::string_view name) const;
    // The value, or its default.
    std::string_view GetOrDefault(std::string_view name) const;
    Place Where() const { return origin.Where(); }
    // Where the attribute stands, or the element without it.
    Place Where(std::string_view attribute) const { return origin.Where(attribute); }
    // The first child of that kind, or null.
    const Node* Child(Element element) const;
};

// The document of the tree into `root`. Every deviation from the schema is a finding. False when the root is
// not the schema's or its format is not known.
bool ReadNodes(const XmlTree& tree, const Schema& schema, Node& root, Findings& findings);

}  // namespace DataUtil
