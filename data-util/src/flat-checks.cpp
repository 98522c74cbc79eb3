#include "flat-checks.h"

#include <set>
#include <string>

#include "element-checks.h"
#include "face-checks.h"
#include "flat-schema.h"
#include "text-checks.h"

namespace DataUtil {

namespace {

class FlatChecks {
public:
    FlatChecks(const Node& root, Findings& findings) : mRoot(root), mFindings(findings) {}

    void Run()
    {
        CheckOrder();
        CheckTexts(mRoot, ReadTexts(mRoot, mFindings), UnusedTexts::kKept, mFindings);
        Check(mRoot);
    }

private:
    void CheckOrder()
    {
        bool drawing = false;
        for (const Node& child : mRoot.children) {
            if (!child.Is(Element::kStrings)) {
                drawing = true;
            } else if (drawing) {
                mFindings.Add("E-PLACE", child.Where(), "\"strings\" stand before the drawing; move it up");
            }
        }
    }

    void Check(const Node& node)
    {
        if (mFindings.IsFull()) return;
        CheckElement(node, mFindings);
        if (node.Is(Element::kComplication)) CheckComplication(node);
        for (const Node& child : node.children) Check(child);
    }

    void CheckComplication(const Node& node)
    {
        CheckBox(node, mRoot, mFindings);
        TakeId(mNames, node, "name", "complication", mFindings);
        if (++mComplications != kMostSlots + 1) return;
        mFindings.Add("E-LIMIT-COUNT", node.Where(),
                      "more than " + std::to_string(kMostSlots) + " complications; remove some");
    }

    const Node& mRoot;
    Findings& mFindings;
    std::set<std::string> mNames;
    std::size_t mComplications = 0;
};

}  // namespace

std::vector<Finding> CheckFlat(std::string_view watchfaceXml)
{
    Findings findings;
    Node root;
    const auto tree = XmlTree::Load(watchfaceXml, findings);
    if (tree && ReadNodes(*tree, FlatSchema(), root, findings)) FlatChecks(root, findings).Run();
    return findings.Take();
}

}  // namespace DataUtil
