#include "flat-origin.h"

#include <algorithm>

#include "flat-schema.h"
#include "limited-complications.h"
#include "sources.h"
#include "world-clock.h"

namespace DataUtil {

namespace {

// The complication of that name below `node`, or null.
const Node* FindComplication(const Node& node, const std::string& name)
{
    if (node.Is(Element::kComplication) && node.Get("name") == name) return &node;
    for (const Node& child : node.children) {
        if (const Node* found = FindComplication(child, name)) return found;
    }
    return nullptr;
}

const char* NullIfEmpty(const std::string& text)
{
    return text.empty() ? nullptr : text.c_str();
}

// What sets the world clock that the complication shows; a hidden one has none that could be seen.
WorldClockUpdate UpdateTo(const Node* complication)
{
    if (complication == nullptr) return {};
    return {NullIfEmpty(complication->Get("city")), complication->Get("country").c_str(),
            complication->Get("timezone").c_str(), NullIfEmpty(complication->Get("timezone-path"))};
}

bool IsWithoutLimited(std::string_view watchfaceXml, FaceDocument document)
{
    RemoveLimited(document, LimitRule(nullptr));
    return Flatten(document) == watchfaceXml;
}

bool IsWithWorldClock(std::string_view watchfaceXml, const Node& flat, FaceDocument document,
                      const std::string& slot)
{
    std::string problem;
    return UpdateWorldClock(document, slot.c_str(), UpdateTo(FindComplication(flat, slot)), problem) &&
           Flatten(document) == watchfaceXml;
}

}  // namespace

bool IsMadeFrom(std::string_view watchfaceXml, const FaceDocument& document)
{
    if (Flatten(document) == watchfaceXml || IsWithoutLimited(watchfaceXml, document)) return true;
    Findings findings;
    Node flat;
    const auto tree = XmlTree::Load(watchfaceXml, findings);
    if (!tree || !ReadNodes(*tree, FlatSchema(), flat, findings)) return false;
    return std::ranges::any_of(document.slots, [&](const Slot& slot) {
        return slot.OfferOf(kWorldClockSource) != nullptr &&
               IsWithWorldClock(watchfaceXml, flat, document, slot.name);
    });
}

}  // namespace DataUtil
