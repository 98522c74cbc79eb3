#include "relax-ng.h"

#include <algorithm>
#include <vector>

#include "xml-text.h"

namespace DataUtil {

namespace {

class Writer {
public:
    explicit Writer(const Schema& schema) : mSchema(schema) {}

    std::string Write()
    {
        mText =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!-- Generated; do not edit. The checks know more than this can say. -->\n"
            "<grammar xmlns=\"http://relaxng.org/ns/structure/1.0\"\n"
            "         datatypeLibrary=\"http://www.w3.org/2001/XMLSchema-datatypes\">\n";
        mDepth = 1;
        Open("start");
        Refer(mSchema.Root().element);
        Close("start");
        for (const ElementRule& rule : mSchema.Rules()) WriteElement(rule);
        Close("grammar");
        return std::move(mText);
    }

private:
    void Open(std::string_view name) { AppendStart(mText, mDepth++, name, {}); }
    void Open(std::string_view name, std::string_view attribute, std::string_view value)
    {
        AppendStart(mText, mDepth++, name, One(attribute, value));
    }
    void Close(std::string_view name) { AppendEnd(mText, --mDepth, name); }

    // An element with one attribute that holds a text.
    void Text(std::string_view name, std::string_view attribute, std::string_view value,
              std::string_view text)
    {
        AppendStart(mText, mDepth, name, One(attribute, value));
        mText.pop_back();  // the line feed
        mText.append(Escaped(text, false)).append("</").append(name).append(">\n");
    }

    void Refer(Element element)
    {
        const std::string name = NameOf(mSchema.RuleOf(element));
        AppendElement(mText, mDepth, "ref", One("name", name));
    }

    static XmlAttributes One(std::string_view name, std::string_view value)
    {
        return XmlAttributes(1, std::pair(name, value));
    }

    // Elements of one name that differ by their parent are named after both.
    std::string NameOf(const ElementRule& rule) const
    {
        const auto rules = mSchema.Rules();
        const auto same = [&](const ElementRule& other) { return other.name == rule.name; };
        if (std::count_if(rules.begin(), rules.end(), same) == 1) return std::string(rule.name);
        for (const ElementRule& parent : rules) {
            for (const ChildRule& child : parent.children) {
                if (child.element == rule.element)
                    return std::string(parent.name) + "." + std::string(rule.name);
            }
        }
        return std::string(rule.name);
    }

    void WriteElement(const ElementRule& rule)
    {
        Open("define", "name", NameOf(rule));
        Open("element", "name", rule.name);
        WriteAttributes(rule);
        if (rule.Is(kHasText)) {
            Open("data", "type", "string");
            Text("param", "name", "minLength", "1");
            Close("data");
        } else if (rule.children.empty()) {
            AppendElement(mText, mDepth, "empty", {});
        } else {
            WriteChildren(rule);
        }
        Close("element");
        Close("define");
    }

    void WriteAttributes(const ElementRule& rule)
    {
        const AttributeChoice& choice = rule.choice;
        for (const std::string_view name : AttributeNames(rule)) {
            const AttributeRule& attribute = *AttributeRuleOf(rule, name);
            const bool chosen =
                std::find(choice.names.begin(), choice.names.end(), name) != choice.names.end();
            if (!chosen) WriteAttribute(attribute, attribute.fallback == kRequired);
        }
        if (choice.names.empty()) return;
        Open("choice");
        for (const char* required : choice.names) {
            Open("group");
            for (const char* name : choice.names) {
                if (name == required || !choice.exactlyOne)
                    WriteAttribute(*AttributeRuleOf(rule, name), name == required);
            }
            Close("group");
        }
        Close("choice");
    }

    void WriteAttribute(const AttributeRule& rule, bool isRequired)
    {
        if (!isRequired) Open("optional");
        Open("attribute", "name", rule.name);
        WriteValue(SyntaxOf(rule));
        Close("attribute");
        if (!isRequired) Close("optional");
    }

    void WriteValue(const ValueSyntax& syntax)
    {
        if (!syntax.names.empty()) {
            Open("choice");
            for (const std::string_view name : syntax.names) Text("value", "type", "string", name);
            Close("choice");
        } else if (syntax.pattern != nullptr) {
            Open("data", "type", "string");
            Text("param", "name", "pattern", syntax.pattern);
            Close("data");
        } else {
            // All bounds are whole.
            Open("data", "type", "decimal");
            Text("param", "name", "pattern", "-?[0-9]{1,5}(\\.[0-9]{1,3})?");
            Text("param", "name", "minInclusive", std::to_string(syntax.least / 1000));
            Text("param", "name", "maxInclusive", std::to_string(syntax.most / 1000));
            Close("data");
        }
    }

    // Children may stand in any order. Those without a count of their own are as many as the total says.
    void WriteChildren(const ElementRule& rule)
    {
        std::vector<ChildRule> counted;
        std::vector<ChildRule> free;
        for (const ChildRule& child : rule.children)
            (child.least > 0 || child.most == 1 ? counted : free).push_back(child);
        const bool mixed = counted.size() + (free.empty() ? 0U : 1U) > 1;
        if (mixed) Open("interleave");
        for (const ChildRule& child : counted) WriteCounted(child);
        if (!free.empty()) WriteFree(free, rule.total);
        if (mixed) Close("interleave");
    }

    void WriteCounted(const ChildRule& child)
    {
        const char* quantity = child.most != 1 ? "oneOrMore" : child.least == 0 ? "optional" : "group";
        Open("group");
        for (int i = 1; i < child.least; ++i) Refer(child.element);
        Open(quantity);
        Refer(child.element);
        Close(quantity);
        Close("group");
    }

    void WriteFree(const std::vector<ChildRule>& children, const ChildTotal& total)
    {
        const char* quantity = total.most == 1 ? "optional" : total.least > 0 ? "oneOrMore" : "zeroOrMore";
        Open(quantity);
        Open("choice");
        for (const ChildRule& child : children) Refer(child.element);
        Close("choice");
        Close(quantity);
    }

    const Schema& mSchema;
    std::string mText;
    int mDepth = 0;
};

}  // namespace

std::string RelaxNg(const Schema& schema)
{
    return Writer(schema).Write();
}

}  // namespace DataUtil
