// One element of a document: its attributes checked against the format's tables, and read as what they are.

#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "attribute-values.h"
#include "drawing.h"
#include "xml-gate.h"

namespace Drawing {

// What is wrong with a document, thrown from wherever it is noticed and caught by Renderer::Draw().
class DocumentError : public std::runtime_error {
public:
    explicit DocumentError(Finding finding) : std::runtime_error(finding.text), mFinding(std::move(finding))
    {
    }
    const Finding& What() const { return mFinding; }

private:
    Finding mFinding;
};

struct Color {
    double red = 0, green = 0, blue = 0, alpha = 1;
};

using AttributeRules = std::span<const DataUtil::AttributeRule>;

class Element {
public:
    // Throws DocumentError when an attribute is missing or has no good value. Attributes that the rules do
    // not know are passed over with a warning, so that a later minor addition to the format does not cost the
    // picture.
    Element(const DataUtil::XmlTree& tree, pugi::xml_node node, AttributeRules rules,
            std::vector<Finding>& warnings);

    pugi::xml_node Node() const { return mNode; }
    bool Has(std::string_view attribute) const { return Find(attribute) != nullptr; }

    // The value, or the format's default. An attribute without both reads as 0, empty, or nothing.
    double Number(std::string_view attribute) const;
    double NumberOr(std::string_view attribute, double otherwise) const;
    int Integer(std::string_view attribute) const;
    std::string_view Text(std::string_view attribute) const;
    bool Is(std::string_view attribute, std::string_view value) const { return Text(attribute) == value; }
    std::optional<Color> Paint(std::string_view attribute) const;  // nothing for "none"
    Color PaintOr(std::string_view attribute, Color otherwise) const;

    Finding At(std::string text) const;
    [[noreturn]] void Fail(std::string text) const { throw DocumentError(At(std::move(text))); }

private:
    struct Value {
        std::string_view name;
        std::string text;
    };
    const Value* Find(std::string_view attribute) const;
    Finding AtAttribute(std::string_view attribute, std::string text) const;
    void ReadAttributes(AttributeRules rules, std::vector<Finding>& warnings);

    const DataUtil::XmlTree& mTree;
    pugi::xml_node mNode;
    std::vector<Value> mValues;
};

}  // namespace Drawing
