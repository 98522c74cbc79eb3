#include "planted-faults.h"

#include <stdexcept>

namespace {

// clang-format off
constexpr PlantedFault kFaults[] = {
    {"E-ELEMENT-UNKNOWN", "<line x1=\"0\" y1=\"160\"", "<lime x1=\"0\" y1=\"160\"", "<lime", true},
    {"E-PLACE", "  <options>", "  <options><offer source=\"date\"/>", "<options>", true},
    {"E-PLACE", "<bar length=\"20\" width=\"2\" fill=\"main\"/>",
     "<bar length=\"20\" width=\"2\" fill=\"main\"/><arc cx=\"1\" cy=\"1\" r=\"1\" start=\"0\" sweep=\"9\" stroke=\"main\"/>",
     "<bar length=\"20\"", true},
    {"E-CHILD-COUNT", "<radial-gradient cx=\"200\" cy=\"160\" r=\"150\">\n        <stop offset=\"0\" color=\"main\"/>",
     "<radial-gradient cx=\"200\" cy=\"160\" r=\"150\">\n", "<radial-gradient", true},
    {"E-CHILD-COUNT", "      <fallback source=\"worldclock\"/>\n      <fallback source=\"empty\"/>\n", "",
     "<slot name=\"place\"", true},
    {"E-ATTRIBUTE-UNKNOWN", "skip=\"5\"", "skipping=\"5\"", "skipping", true},
    {"E-ATTRIBUTE-UNKNOWN", "<stop offset=\"0.5\"", "<stop when=\"dial=bars\" offset=\"0.5\"", "<stop when", true},
    {"E-ATTRIBUTE-MISSING", "<arc cx=\"200\" cy=\"160\" r=\"140\"", "<arc cx=\"200\" cy=\"160\"", "<arc", true},
    {"E-ATTRIBUTE-MISSING", "timezone=\"JST\" timezone-path=\"Asia/Tokyo\"", "timezone=\"JST\"", "JST", false},
    {"E-ATTRIBUTE-CHOICE", "<text text-key=\"title\" x=\"200\"", "<text text-key=\"title\" skeleton=\"d\" x=\"200\"",
     "skeleton=\"d\"", true},
    {"E-ATTRIBUTE-CHOICE", "<offer source=\"battery\"/>", "<offer source=\"battery\" city=\"Rome\"/>", "Rome", false},
    {"E-TEXT", "<scene>", "<scene>stray", "<scene>", true},
    {"E-TEXT", "<string key=\"seconds\">Segundos</string>", "<string key=\"seconds\"/>", "<string key=\"seconds\"/>", true},
    {"E-VALUE", "version=\"7\"", "version=\"seven\"", "seven", true},
    {"E-VALUE", "max-width=\"120\"", "max-width=\"-1\"", "max-width=\"-1\"", true},
    {"E-VALUE", "count=\"12\" shape=\"dot\"", "count=\"12\"", "count=\"12\"", false},
    {"E-VALUE", "file=\"beach 1.jpg\"", "file=\"../beach.jpg\"", "../beach.jpg", true},
    {"E-ASSET-PATH", "src=\"dial/rim.png\"", "src=\"../rim.png\"", "../rim.png", false},
    {"E-ASSET-PATH", "default=\"bg/plain.png\"", "default=\"/bg/plain.png\"", "\"/bg", true},
    {"E-ID-DUPLICATE", "<preset id=\"far\"", "<preset id=\"calm\" label-key=\"calm\"><pick group=\"dial\" "
     "option=\"bars\"/></preset>\n    <preset id=\"far\"", "option=\"bars\"/></preset>", false},
    {"E-ID-DUPLICATE", "<string key=\"ring\">Anel</string>",
     "<string key=\"ring\">Anel</string>\n<string key=\"ring\">Argola</string>", "Argola", false},
    {"E-DEFAULT", "<option id=\"dots\" label-key=\"dial.dots\"/>",
     "<option id=\"dots\" label-key=\"dial.dots\" default=\"true\"/>", "id=\"dots\"", false},
    {"E-COVERAGE", "        <color role=\"dim\" value=\"#0000FF80\"/>\n", "", "<option id=\"blue\"", false},
    {"E-REF-UNKNOWN", "<polygon points=\"-4,10 4,10 0,-80\" fill=\"#FFFFFF\"/>",
     "<polygon points=\"-4,10 4,10 0,-80\" fill=\"mane\"/>", "mane", false},
    {"E-REF-UNKNOWN", "<layer clock=\"place\">", "<layer clock=\"ring\">", "clock=\"ring\"", false},
    {"E-REF-UNKNOWN", "<place slot=\"info\" source=\"empty\"/>", "<place slot=\"info\" source=\"alarm\"/>", "alarm", false},
    {"E-CIRCLE", "<switch id=\"seconds\" label-key=\"seconds\" default=\"on\" usage=\"SEC9\" when=\"dial=bars\"/>",
     "<switch id=\"seconds\" label-key=\"seconds\" default=\"on\" usage=\"SEC9\" when=\"seconds=on\"/>", "<switch", false},
    {"E-FALLBACK", "<fallback source=\"date\"/>\n      <fallback source=\"empty\"/>", "<fallback source=\"date\"/>",
     "<fallback source=\"date\"/>", false},
    {"E-LIMIT-COUNT", "<palette id=\"tone\"", "<palette usage=\"TONE\" id=\"tone\"", "SEC9", false},
    {"W-UNTRANSLATED", "    <string key=\"far\">Longe</string>\n", "", "<strings language=\"pt-BR\">", false},
    {"W-UNUSED", "    <photo photos=\"portrait\" x=\"20\" y=\"20\" width=\"80\" height=\"80\" fit=\"contain\" "
     "opacity=\"0.75\"/>\n", "", "<photos id=\"portrait\"", false},
    {"W-SAME", "<style id=\"dial\" label-key=\"dial\" usage=\"DIAL\">\n",
     "<style id=\"dial\" label-key=\"dial\" usage=\"DIAL\">\n<option id=\"bare\" label-key=\"calm\"/>\n"
     "<option id=\"nude\" label-key=\"calm\"/>\n", "id=\"nude\"", false},
    {"W-INVISIBLE", "<rect x=\"-2\" y=\"-120\" width=\"4\" height=\"130\" fill=\"#FFFFFF\"/>",
     "<rect x=\"-2\" y=\"-120\" width=\"4\" height=\"130\"/>", "height=\"130\"", false},
    {"W-OFF-CANVAS", "x=\"20\" y=\"220\" width=\"90\"", "x=\"-1\" y=\"220\" width=\"90\"", "x=\"-1\"", false},
    {"N-PICK-UNKNOWN", "<selection preset=\"far\">", "<selection preset=\"wild\">", "wild", false},
    {"N-PICK-REPEATED", "<pick group=\"tone\" option=\"blue\"/>",
     "<pick group=\"tone\" option=\"blue\"/>\n<pick group=\"tone\" option=\"red\"/>", "option=\"red\"", false},
    {"E-ROLE-SOURCE", "role=\"gauge\" x=\"290\"", "role=\"dial\" x=\"290\"", "<offer source=\"battery\"", false},
};
// clang-format on

}  // namespace

std::span<const PlantedFault> PlantedFaults()
{
    return kFaults;
}

std::string Plant(std::string text, const PlantedFault& fault)
{
    const std::string_view from = fault.from;
    const std::size_t at = text.find(from);
    if (at == std::string::npos || text.find(from, at + 1) != std::string::npos)
        throw std::invalid_argument("not exactly once: " + std::string(from));
    return text.replace(at, from.size(), fault.to);
}
