#include "element-checks.h"

#include "nearest-name.h"
#include "shared-rules.h"

namespace DataUtil {

namespace {

int Thousandths(std::string_view canonical)
{
    return ParseThousandths(canonical).value_or(0);
}

bool Paints(const Node& node, const char* attribute)
{
    return node.Has(attribute) && node.Get(attribute) != "none";
}

void CheckPaint(const Node& node, Findings& findings)
{
    const bool gradient = !node.children.empty();
    if (gradient && node.Has("fill")) {
        findings.Add("E-ATTRIBUTE-CHOICE", node.Where("fill"),
                     "the gradient is the fill; remove \"fill\" or the gradient");
    }
    if (gradient || node.hasUnknownChild || Paints(node, "fill") || Paints(node, "stroke")) return;
    findings.Add("W-INVISIBLE", node.Where(),
                 Quoted(node.rule->name) + " has neither fill nor stroke and paints nothing");
}

void CheckTicks(const Node& node, Findings& findings)
{
    if (node.Mentions("length") && !node.Has("length")) return;  // refused already
    if (node.GetOrDefault("shape") != "bar" || Thousandths(node.GetOrDefault("length")) != 0) return;
    findings.Add("E-VALUE", node.Where("length"), "ticks of the shape \"bar\" need a length above 0");
}

void CheckStops(const Node& node, Findings& findings)
{
    int last = 0;
    for (const Node& stop : node.children) {
        const int offset = Thousandths(stop.GetOrDefault("offset"));
        if (stop.Has("offset") && offset < last) {
            findings.Add("E-VALUE", stop.Where("offset"), "the offsets of a gradient's stops may not fall");
        }
        last = offset;
    }
}

void CheckPhotoFolder(const Node& node, Findings& findings)
{
    if (node.Get("background") != "theme" || !node.Mentions("prefix")) return;
    findings.Add("E-ATTRIBUTE-CHOICE", node.Where("prefix"),
                 "only the gallery has folders; remove \"prefix\" or choose background=\"gallery\"");
}

// An offer and a complication must say what to show, a placement may leave it to the offer.
void CheckWorldClock(const Node& node, bool complete, Findings& findings)
{
    const std::string& source = node.Get("source");
    if (source.empty()) return;
    if (source == kWorldClockSource) {
        for (const char* attribute : {"city", "timezone-path"}) {
            if (!complete || node.Mentions(attribute)) continue;
            findings.Add("E-ATTRIBUTE-MISSING", node.Where(),
                         "a world clock needs the attribute \"" + std::string(attribute) + "\"");
        }
        return;
    }
    for (const AttributeRule& rule : kWorldClock) {
        if (!node.Mentions(rule.name)) continue;
        findings.Add("E-ATTRIBUTE-CHOICE", node.Where(rule.name),
                     Quoted(rule.name) + " is a world clock's; remove it, or choose the source " +
                         Quoted(kWorldClockSource));
    }
}

void CheckLayer(const Node& node, Findings& findings)
{
    if (!node.Mentions("clock")) return;
    for (const AttributeRule& rule : kZone) {
        if (!node.Mentions(rule.name)) continue;
        findings.Add(
            "E-ATTRIBUTE-CHOICE", node.Where(rule.name),
            "the zone is that of the slot's world clock; remove " + Quoted(rule.name) + " or \"clock\"");
    }
}

void CheckComplication(const Node& node, Findings& findings)
{
    CheckWorldClock(node, true, findings);
    const std::string& role = node.Get("role");
    const std::string& source = node.Get("source");
    if (role.empty() || source.empty()) return;
    if (!CanShow(role, source)) {
        findings.Add("E-ROLE-SOURCE", node.Where("role"),
                     Quoted(source) + " cannot be drawn as \"" + role + "\"; choose another role");
    }
    if (!node.Mentions("color")) {
        findings.Add("E-ATTRIBUTE-MISSING", node.Where(),
                     "a complication with a role needs the attribute \"color\"");
    }
}

}  // namespace

bool TakeId(std::set<std::string>& known, const Node& node, const char* attribute, const char* what,
            Findings& findings)
{
    const std::string& id = node.Get(attribute);
    if (id.empty()) return false;
    if (known.insert(id).second) return true;
    findings.Add("E-ID-DUPLICATE", node.Where(attribute),
                 std::string("there is already a ") + what + " " + Quoted(id) + "; choose another name");
    return false;
}

bool CanShow(std::string_view role, std::string_view source)
{
    const Source* known = FindSource(source);
    if (known == nullptr) return false;
    if (role == "gauge" || role == "arc") return known->hasShare;
    if (role == "city" || role == "dial") return source == kWorldClockSource;
    return true;
}

void CheckElement(const Node& node, Findings& findings)
{
    if (node.rule->Is(kIsShape)) CheckPaint(node, findings);
    switch (node.Kind()) {
        case Element::kTicks:
            return CheckTicks(node, findings);
        case Element::kLinearGradient:
        case Element::kRadialGradient:
            return CheckStops(node, findings);
        case Element::kLayer:
            return CheckLayer(node, findings);
        case Element::kPhotos:
        case Element::kPhoto:
            return CheckPhotoFolder(node, findings);
        case Element::kOffer:
            return CheckWorldClock(node, true, findings);
        case Element::kPresetPlace:
        case Element::kPlace:
            return CheckWorldClock(node, false, findings);
        case Element::kComplication:
            return CheckComplication(node, findings);
        default:
            return;
    }
}

void CheckBox(const Node& node, const Node& root, Findings& findings)
{
    // The canvas may lack a side, which is a finding of its own.
    const auto outside = [&](const char* from, const char* extent, const char* side) {
        const int begin = Thousandths(node.GetOrDefault(from));
        return begin < 0 || (root.Has(side) && begin + Thousandths(node.GetOrDefault(extent)) >
                                                   Thousandths(root.GetOrDefault(side)));
    };
    if (!outside("x", "width", "width") && !outside("y", "height", "height")) return;
    findings.Add("W-OFF-CANVAS", node.Where(),
                 "the " + std::string(node.rule->name) + " reaches beyond the canvas");
}

}  // namespace DataUtil
