#include "face-summary.h"

#include <strings.h>

#include <algorithm>
#include <functional>
#include <map>

#include "exit-status.h"
#include "face-document.h"
#include "locale-findings.h"
#include "xml-gate.h"

namespace Wfctl {

namespace {

using DataUtil::FaceDocument;
using DataUtil::Resolution;

using Texts = std::map<std::string, std::string>;

// The texts of a language tag, in whichever case; null when there are none.
const Texts* TextsOf(const FaceDocument& document, const std::string& tag)
{
    const auto at = std::find_if(document.texts.begin(), document.texts.end(), [&tag](const auto& one) {
        return strcasecmp(one.first.c_str(), tag.c_str()) == 0;
    });
    return at == document.texts.end() ? nullptr : &at->second;
}

// The label of a key: in the language, else in one that it is a form of, else in the document's own.
std::string LabelOf(const FaceDocument& document, const std::string& key, const std::string& language)
{
    std::vector<std::string> tags = {language};
    std::replace(tags[0].begin(), tags[0].end(), '_', '-');
    for (auto dash = tags[0].rfind('-'); dash != std::string::npos && dash > 0;
         dash = tags[0].rfind('-', dash - 1))
        tags.push_back(tags[0].substr(0, dash));
    tags.push_back(document.defaultLanguage);
    for (const std::string& tag : tags) {
        const Texts* texts = TextsOf(document, tag);
        if (texts && texts->contains(key)) return texts->at(key);
    }
    return {};
}

using Label = std::function<std::string(const std::string& key)>;

Json FactsJson(const DocumentFacts& facts)
{
    return Json::object({
        {"kind",      facts.root                        },
        {"id",        BytesToJson(facts.id)             },
        {"title",     BytesToJson(facts.title)          },
        {"version",   facts.version                     },
        {"canvas",    facts.width + "x" + facts.height  },
        {"shape",     facts.isRound ? "round" : "square"},
        {"languages", facts.languages                   }
    });
}

Json GroupJson(const DataUtil::Group& group, const Resolution& now, const Label& label)
{
    constexpr const char* kKinds[] = {"style", "palette", "switch"};
    Json options = Json::array();
    for (const DataUtil::Option& option : group.options) {
        Json one = Json::object({
            {"id",      option.id                            },
            {"label",   label(option.labelKey)               },
            {"picked",  now.options.at(group.id) == option.id},
            {"default", group.defaultOption == option.id     }
        });
        if (group.kind == DataUtil::GroupKind::kPalette) one["colors"] = option.colors;
        options.push_back(std::move(one));
    }
    return Json::object({
        {"id",      group.id                            },
        {"kind",    kKinds[static_cast<int>(group.kind)]},
        {"label",   label(group.labelKey)               },
        {"shown",   now.shown.at(group.id)              },
        {"options", std::move(options)                  }
    });
}

Json WorldClockJson(const DataUtil::WorldClock& clock)
{
    return Json::object({
        {"city",          clock.city        },
        {"country",       clock.country     },
        {"timezone",      clock.timezone    },
        {"timezone-path", clock.timezonePath}
    });
}

Json SlotJson(const DataUtil::Slot& slot, const Resolution& now, const Label& label)
{
    const DataUtil::Placement& placement = now.sources.at(slot.name);
    Json offers = Json::array();
    for (const DataUtil::Offer& offer : slot.offers) offers.push_back(offer.source);
    Json one = Json::object({
        {"name",   slot.name              },
        {"label",  label(slot.labelKey)   },
        {"role",   slot.role              },
        {"group",  slot.group             },
        {"shown",  now.shown.at(slot.name)},
        {"source", placement.source       },
        {"offers", std::move(offers)      }
    });
    if (placement.worldClock) one["world-clock"] = WorldClockJson(*placement.worldClock);
    return one;
}

Json PhotosJson(const DataUtil::Photos& photos, const FaceDocument& document, const Resolution& now,
                const Label& label)
{
    const auto file = document.selection.photos.find(photos.id);
    const bool isChosen = file != document.selection.photos.end();
    return Json::object({
        {"id",         photos.id                                           },
        {"label",      label(photos.labelKey)                              },
        {"background", photos.background                                   },
        {"shown",      now.shown.at(photos.id)                             },
        {"file",       isChosen ? BytesToJson(file->second) : Json(nullptr)},
        {"default",    photos.defaultImage                                 }
    });
}

// --- for people ---

void PrintFact(const char* name, const std::string& value)
{
    std::string line = std::string("  ") + name;
    line.resize(14, ' ');
    if (!value.empty()) PrintLine(line + value);
}

std::string Joined(const Json& texts)
{
    std::string all;
    for (const Json& text : texts) all += (all.empty() ? "" : ", ") + text.get<std::string>();
    return all;
}

std::string TextIn(const Json& object, const char* key)
{
    const auto at = object.find(key);
    return at != object.end() && at->is_string() ? at->get<std::string>() : std::string();
}

// "id          label  more": the id as wide as the widest of its kind.
std::string Row(const Json& item, const char* key, std::size_t width, const std::string& more = "")
{
    std::string row = TextIn(item, key);
    row.resize(std::max(row.size(), width), ' ');
    const std::string label = TextIn(item, "label");
    row += (label.empty() ? "" : "  " + label) + (more.empty() ? "" : "  " + more);
    if (item.contains("shown") && item["shown"] == false) row += "  (hidden now)";
    return row.substr(0, row.find_last_not_of(' ') + 1);
}

std::size_t Widest(const Json& items, const char* key)
{
    std::size_t width = 0;
    for (const Json& item : items) width = std::max(width, TextIn(item, key).size());
    return width;
}

// Each colour of a palette with its role: a patch where the terminal has colours, and its number.
std::string ColorsText(const Json& option)
{
    std::string text;
    if (!option.contains("colors")) return text;
    for (const auto& [role, value] : option["colors"].items()) {
        const auto color = value.get<std::string>();
        const bool hasPatch = WantsColor() && color.size() >= 7;
        const auto part = [&color](std::size_t at) {
            return std::to_string(std::stoi(color.substr(at, 2), nullptr, 16));
        };
        if (!text.empty()) text += " ";
        if (hasPatch) text += "\033[48;2;" + part(1) + ";" + part(3) + ";" + part(5) + "m  \033[0m ";
        text += role + "=" + color;
    }
    return text;
}

void PrintGroups(const Json& groups)
{
    std::size_t width = Widest(groups, "id");
    for (const Json& group : groups) width = std::max(width, Widest(group["options"], "id") + 4);
    for (const Json& group : groups) {
        PrintLine("  " + Row(group, "id", width));
        for (const Json& option : group["options"]) {
            const std::string more = std::string(option["default"] == true ? "(default)" : "");
            const std::string colors = ColorsText(option);
            PrintLine(
                (option["picked"] == true ? "    * " : "      ") +
                Row(option, "id", width - 4, more + (more.empty() || colors.empty() ? "" : "  ") + colors));
        }
    }
}

bool Has(const Json& texts, std::string_view text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

void PrintSlots(const Json& slots)
{
    const std::size_t width = Widest(slots, "name");
    for (const Json& slot : slots) {
        std::string source = TextIn(slot, "source");
        if (slot.contains("world-clock")) {
            const Json& clock = slot["world-clock"];
            const std::string path = TextIn(clock, "timezone-path");
            source += " of " + TextIn(clock, "city") + " (" +
                      (path.empty() ? TextIn(clock, "timezone") : path) + ")";
        }
        const bool hasGroup = slot.contains("offers") && Has(slot["offers"], DataUtil::kWorldClockSource);
        PrintLine("  " +
                  Row(slot, "name", width, hasGroup ? "world-clock group " + TextIn(slot, "group") : ""));
        PrintLine("    * " + source);
        if (slot.contains("offers")) PrintLine("      of " + Joined(slot["offers"]) + ", empty");
    }
}

void PrintPhotos(const Json& all)
{
    for (const Json& photos : all) {
        const std::string file = TextIn(photos, "file");
        PrintLine("  " + Row(photos, "id", Widest(all, "id")));
        PrintLine("    * " + (file.empty() ? "default, " + TextIn(photos, "default") : file) + " (" +
                  TextIn(photos, "background") + ")");
    }
}

void PrintPresets(const Json& presets)
{
    for (const Json& preset : presets) {
        PrintLine((preset["picked"] == true ? "    * " : "      ") +
                  Row(preset, "id", Widest(presets, "id")));
    }
}

struct Section {
    const char* key;
    const char* title;
    const char* howToChange;
    void (*print)(const Json& items);
};

constexpr Section kSections[] = {
    {"groups",        "Options",       "--pick GROUP=OPTION", PrintGroups },
    {"slots",         "Complications", "--place SLOT=SOURCE", PrintSlots  },
    {"photos",        "Photos",        "--photo PHOTOS=FILE", PrintPhotos },
    {"presets",       "Presets",       "--preset ID",         PrintPresets},
    {"complications", "Complications", "",                    PrintSlots  },
};

// Empty for a face that is on no watch.
std::string AreaText(const Json& summary)
{
    std::string text = TextIn(summary, "area");
    for (const char* also : {"shipped", "current"}) {
        if (summary.value(also, false)) text += std::string(", ") + also;
    }
    return text;
}

}  // namespace

Json SummaryOfResult(const std::string& file, const std::string& xml, const std::string& language)
{
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(xml);
    if (!parsed.document) {
        PrintFindings(file, WithUnknownLocales(xml, parsed.findings));
        throw Stop(Exit::kError, "[" + file + "] is refused");
    }
    const FaceDocument& document = *parsed.document;
    const Resolution now = Resolve(document);
    const Label label = [&](const std::string& key) { return LabelOf(document, key, language); };
    Json summary = FactsJson(FactsOf(xml));
    for (const char* key : {"groups", "slots", "photos", "presets"}) summary[key] = Json::array();
    for (const DataUtil::Group& group : document.groups)
        summary["groups"].push_back(GroupJson(group, now, label));
    for (const DataUtil::Slot& slot : document.slots) summary["slots"].push_back(SlotJson(slot, now, label));
    for (const DataUtil::Photos& photos : document.photos)
        summary["photos"].push_back(PhotosJson(photos, document, now, label));
    for (const DataUtil::Preset& preset : document.presets) {
        summary["presets"].push_back(Json::object({
            {"id",     preset.id                             },
            {"label",  label(preset.labelKey)                },
            {"picked", document.selection.preset == preset.id}
        }));
    }
    return summary;
}

Json SummaryOfFlat(const std::string& xml)
{
    Json summary = FactsJson(FactsOf(xml));
    summary["complications"] = Json::array();
    DataUtil::Findings ignored;
    const auto tree = DataUtil::XmlTree::Load(xml, ignored);
    if (!tree) return summary;
    for (const pugi::xpath_node& found : tree->Root().select_nodes(".//complication")) {
        const pugi::xml_node node = found.node();
        summary["complications"].push_back(Json::object({
            {"name",   node.attribute("name").value()  },
            {"source", node.attribute("source").value()},
            {"role",   node.attribute("role").value()  }
        }));
    }
    return summary;
}

void PrintSummary(const Json& summary)
{
    PrintLine(TextIn(summary, "title"));
    PrintFact("id", TextIn(summary, "id"));
    PrintFact("version", TextIn(summary, "version"));
    PrintFact("area", AreaText(summary));
    PrintFact("canvas", TextIn(summary, "canvas") + ", " + TextIn(summary, "shape"));
    PrintFact("languages", Joined(summary["languages"]));
    if (summary.contains("preview"))
        PrintFact("preview", TextIn(summary["preview"], "text") + ": " + TextIn(summary["preview"], "file"));
    PrintFact("document", TextIn(summary, "file"));
    for (const Section& section : kSections) {
        if (!summary.contains(section.key) || summary[section.key].empty()) continue;
        PrintLine("");
        const bool isEditable = summary.contains("area") && *section.howToChange;
        PrintLine(section.title +
                  (isEditable ? std::string(", for wfctl edit: ") + section.howToChange : ""));
        section.print(summary[section.key]);
    }
}

}  // namespace Wfctl
