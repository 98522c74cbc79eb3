// A result XML after its structure was checked: only known elements and attributes, values canonical.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "face-schema.h"
#include "finding.h"

namespace DataUtil {

struct Node {
    struct Attribute {
        const AttributeRule* rule;
        std::string value;  // canonical; empty when it was refused
        int line = 0;
        int column = 0;
    };

    const ElementRule* rule = nullptr;
    Place place;
    std::vector<Attribute> attributes;  // in document order
    std::string text;
    std::vector<Node> children;

    Element Kind() const { return rule->element; }
    bool Is(Element element) const { return rule->element == element; }
    // The canonical value, or an empty text; no accepted value is empty.
    const std::string& Get(std::string_view name) const;
    bool Has(std::string_view name) const { return !Get(name).empty(); }
    // True also for an attribute whose value was refused.
    bool Mentions(std::string_view name) const;
    // The value, or its default.
    std::string_view GetOrDefault(std::string_view name) const;
    // Where the attribute stands, or the element without it.
    Place PlaceOf(std::string_view name) const;
    // The first child of that kind, or null.
    const Node* Child(Element element) const;
};

class XmlTree;

// The document of the tree into `root`. Every deviation from the tables of face-schema.h is a finding. False
// when the root is not a face's or its format is not known.
bool ReadNodes(const XmlTree& tree, Node& root, Findings& findings);

}  // namespace DataUtil
