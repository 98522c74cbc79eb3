#include "selection.h"

#include <expat.h>

#include <memory>
#include <new>
#include <utility>

#include "face-checks.h"
#include "face-schema.h"
#include "nearest-name.h"
#include "xml-text.h"

namespace DataUtil {

namespace {

// Takes over the entries of one selection, with a note for each that is not valid.
class Entries {
public:
    Entries(FaceDocument& document, Findings& findings) : mDocument(document), mFindings(findings) {}

    void Add(const Node& selection)
    {
        AddPreset(selection);
        for (const Node& node : selection.children) {
            if (mFindings.IsFull()) return;
            if (node.Is(Element::kPick)) AddPick(node);
            if (node.Is(Element::kPlace)) AddPlacement(node);
            if (node.Is(Element::kPickedPhoto)) AddPhoto(node);
        }
    }

private:
    void Unknown(const Node& node, const char* attribute, std::string message)
    {
        if (mFindings.IsRefused(node.Get(attribute))) return;
        mFindings.Add("N-PICK-UNKNOWN", node.Where(attribute), std::move(message));
    }

    template <typename Map, typename Value>
    void Take(Map& entries, const Node& node, const std::string& id, Value value)
    {
        if (entries.insert_or_assign(id, std::move(value)).second) return;
        mFindings.Add("N-PICK-REPEATED", node.Where(),
                      Quoted(id) + " is chosen more than once; the last counts");
    }

    void AddPreset(const Node& selection)
    {
        const std::string& id = selection.Get("preset");
        if (id.empty()) return;
        if (FindById(mDocument.presets, &Preset::id, id) == nullptr) {
            Unknown(selection, "preset", "there is no preset " + Quoted(id) + "; the defaults are shown");
        } else {
            mDocument.selection.preset = id;
        }
    }

    void AddPick(const Node& node)
    {
        const std::string& id = node.Get("group");
        const std::string& option = node.Get("option");
        const Group* group = FindById(mDocument.groups, &Group::id, id);
        if (id.empty() || option.empty()) return;
        if (group == nullptr) {
            Unknown(node, "group", "there is no group " + Quoted(id) + "; the pick is ignored");
        } else if (FindById(group->options, &Option::id, option) == nullptr) {
            Unknown(node, "option",
                    Quoted(id) + " has no option " + Quoted(option) + "; the pick is ignored");
        } else {
            Take(mDocument.selection.picks, node, id, option);
        }
    }

    void AddPlacement(const Node& node)
    {
        const std::string& name = node.Get("slot");
        const std::string& source = node.Get("source");
        const Slot* slot = FindById(mDocument.slots, &Slot::name, name);
        if (name.empty() || source.empty()) return;
        if (slot == nullptr) {
            Unknown(node, "slot", "there is no slot " + Quoted(name) + "; the placement is ignored");
        } else if (source != kEmptySource && slot->OfferOf(source) == nullptr) {
            const auto offers = NamesOf(slot->offers, &Offer::source);
            Unknown(node, "source",
                    NotOffered(Quoted(name), source, mFindings.Nearest(source, offers), offers) +
                        "; the placement is ignored");
        } else {
            Take(mDocument.selection.places, node, name, PlacementOf(node));
        }
    }

    void AddPhoto(const Node& node)
    {
        const std::string& id = node.Get("photos");
        const std::string& file = node.Get("file");
        if (id.empty() || file.empty()) return;
        if (FindById(mDocument.photos, &Photos::id, id) == nullptr) {
            Unknown(node, "photos", "there are no photos " + Quoted(id) + "; the picture is ignored");
        } else {
            Take(mDocument.selection.photos, node, id, file);
        }
    }

    FaceDocument& mDocument;
    Findings& mFindings;
};

// Where the selection stands in a text, or where it would.
struct Extent {
    std::size_t begin = 0;
    std::size_t end = 0;
};

// Finds the extent by one run over the text.
class ExtentFinder {
public:
    explicit ExtentFinder(std::string_view text) : mText(text), mParser(XML_ParserCreate("UTF-8"))
    {
        if (!mParser) throw std::bad_alloc();
        XML_SetUserData(mParser.get(), this);
        XML_SetElementHandler(mParser.get(), &ExtentFinder::OnStart, &ExtentFinder::OnEnd);
    }
    ExtentFinder(const ExtentFinder&) = delete;
    ExtentFinder& operator=(const ExtentFinder&) = delete;

    // The text has passed the gate.
    Extent Find()
    {
        const auto size = static_cast<int>(mText.size());
        if (XML_Parse(mParser.get(), mText.data(), size, XML_TRUE) != XML_STATUS_OK) throw std::bad_alloc();
        return mExtent;
    }

private:
    struct Frees {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    std::size_t Here() const { return static_cast<std::size_t>(XML_GetCurrentByteIndex(mParser.get())); }
    std::size_t Length() const { return static_cast<std::size_t>(XML_GetCurrentByteCount(mParser.get())); }

    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char**)
    {
        auto* finder = static_cast<ExtentFinder*>(self);
        if (++finder->mDepth == 2 && !finder->mFound && std::string_view(name) == "selection") {
            finder->mInside = true;
            finder->mExtent.begin = finder->Here();
        }
    }

    static void XMLCALL OnEnd(void* self, const XML_Char*)
    {
        auto* finder = static_cast<ExtentFinder*>(self);
        const int depth = finder->mDepth--;
        if (depth == 2 && finder->mInside) {
            // Of an empty element the end is an event without bytes behind the tag.
            finder->mExtent.end = finder->Here() + finder->Length();
            finder->mInside = false;
            finder->mFound = true;
        } else if (depth == 1 && !finder->mFound) {
            finder->mExtent = {finder->Here(), finder->Here()};
        }
    }

    std::string_view mText;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Frees> mParser;
    Extent mExtent;
    int mDepth = 0;
    bool mInside = false;
    bool mFound = false;
};

void WritePlacement(std::string& text, const std::string& slot, const Placement& placement)
{
    const WorldClock clock = placement.worldClock.value_or(WorldClock());
    AppendElement(text, 2, "place",
                  {
                      {"slot",          slot              },
                      {"source",        placement.source  },
                      {"city",          clock.city        },
                      {"country",       clock.country     },
                      {"timezone",      clock.timezone    },
                      {"timezone-path", clock.timezonePath}
    });
}

std::string TextOf(const Selection& selection)
{
    std::string text = "<selection";
    if (!selection.preset.empty()) text += " preset=\"" + Escaped(selection.preset, true) + "\"";
    text += ">\n";
    for (const auto& [group, option] : selection.picks)
        AppendElement(text, 2, "pick",
                      {
                          {"group",  group },
                          {"option", option}
        });
    for (const auto& [slot, placement] : selection.places) WritePlacement(text, slot, placement);
    for (const auto& [photos, file] : selection.photos)
        AppendElement(text, 2, "photo",
                      {
                          {"photos", photos},
                          {"file",   file  }
        });
    return text + "  </selection>";
}

}  // namespace

void FillSelection(const Node& selection, FaceDocument& document, Findings& findings)
{
    Entries(document, findings).Add(selection);
}

WorldClock WorldClockOf(const Node& node)
{
    return {node.Get("city"), node.Get("country"), node.Get("timezone"), node.Get("timezone-path")};
}

Placement PlacementOf(const Node& node)
{
    Placement placement{node.Get("source"), std::nullopt};
    const WorldClock clock = WorldClockOf(node);
    if (placement.source == kWorldClockSource && clock != WorldClock()) placement.worldClock = clock;
    return placement;
}

Selection SelectionOf(const FaceDocument& document)
{
    return document.selection;
}

std::string WithSelection(std::string_view resultXml, const Selection& selection)
{
    Findings findings;
    if (!XmlTree::Load(resultXml, findings)) return std::string(resultXml);
    const Extent extent = ExtentFinder(resultXml).Find();
    std::string text(resultXml.substr(0, extent.begin));
    if (!selection.IsEmpty()) text += TextOf(selection);
    return text.append(resultXml.substr(extent.end));
}

Migrated Migrate(std::string_view newResultXml, std::string_view oldResultXml)
{
    ParseResult parsed = ParseFace(newResultXml);
    if (!parsed.document) return {std::string(newResultXml), std::move(parsed.findings)};
    parsed.document->selection = {};
    Findings notes;
    Node old;
    const auto tree = XmlTree::Load(oldResultXml, notes);
    if (tree && ReadNodes(*tree, FaceSchema(), old, notes)) {
        // What else is wrong with the old text is of no interest any more.
        notes = {};
        const Node* selection = old.Child(Element::kSelection);
        if (selection != nullptr) FillSelection(*selection, *parsed.document, notes);
    }
    return {WithSelection(newResultXml, parsed.document->selection), notes.Take()};
}

}  // namespace DataUtil
