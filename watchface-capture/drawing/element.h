// One element of a document: what it holds checked against the format's tables, its attributes read as what
// they are.

#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "drawing.h"
#include "flat-schema.h"
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

class Element {
public:
    // Throws DocumentError when an attribute is missing or has no good value, and when the element holds what
    // it may not. Attributes that the rules do not know are passed over with a warning, so that a later minor
    // addition to the format does not cost the picture.
    Element(const DataUtil::XmlTree& tree, pugi::xml_node node, const DataUtil::ElementRule& rule,
            std::vector<Finding>& warnings);
    Element(const DataUtil::XmlTree& tree, pugi::xml_node node, DataUtil::Element kind,
            std::vector<Finding>& warnings)
        : Element(tree, node, DataUtil::FlatSchema().RuleOf(kind), warnings)
    {
    }

    DataUtil::Element Kind() const { return mRule.element; }
    const DataUtil::ElementRule& Rule() const { return mRule; }
    pugi::xml_node Node() const { return mNode; }
    bool Has(std::string_view attribute) const { return Find(attribute) != nullptr; }

    // The elements that it holds, in order; texts and comments are passed over.
    std::vector<Element> Children(std::vector<Finding>& warnings) const;
    bool HoldsAny() const;

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
    void ReadAttributes(std::vector<Finding>& warnings);
    void CheckChoice() const;
    void CheckChildren() const;

    const DataUtil::XmlTree& mTree;
    pugi::xml_node mNode;
    const DataUtil::ElementRule& mRule;
    std::vector<Value> mValues;
};

}  // namespace Drawing
