// Face documents: reading a result XML and making the flat document from it.
//
// Terms: a *group* is a choice that the author offers (a style, a palette or a switch), an *option* one
// answer to it, a *slot* a place for live data, a *source* what a slot shows, *photos* a place for the user's
// picture, a *preset* a named set of choices. The user's *selection* (selection.h) picks options, places
// sources and chooses pictures. docs/face-format.md describes both documents.
//
// Normal flow: ParseFace() checks all of the text and gives a document when nothing is wrong with it;
// Flatten() then cannot fail. Both are pure functions and may be called on any thread. The texts they take
// and give are UTF-8. They throw nothing but std::bad_alloc.

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "face-node.h"
#include "finding.h"
#include "selection.h"
#include "text-checks.h"

namespace DataUtil {

enum class GroupKind { kStyle, kPalette, kSwitch };

struct Option {
    std::string id;
    std::string labelKey;                       // empty for a switch's on and off
    std::map<std::string, std::string> colors;  // of a palette: role -> colour
    Origin origin;
};

struct Group {
    GroupKind kind = GroupKind::kStyle;
    std::string id;
    std::string labelKey;
    std::string usage;  // the survey feature of its pick, or empty
    std::vector<Option> options;
    std::string defaultOption;
    std::vector<Term> when;  // shown only while all hold
    Origin origin;
};

struct Photos {
    std::string id;
    std::string labelKey;
    std::string defaultImage;  // an asset
    std::string background;    // "gallery" or "theme"
    std::string prefix;        // folder below the gallery, or empty
    std::vector<Term> when;
    Origin origin;
};

// A source that the user may place.
struct Offer {
    std::string source;
    bool needsPhone = false;  // shows data of a paired phone
    WorldClock worldClock;    // of the source "worldclock"
};

struct Slot {
    std::string name;
    std::string group;
    std::string labelKey;
    std::string role;
    std::vector<Offer> offers;
    std::vector<std::string> fallbacks;  // tried in order when nothing is placed; the last is "empty"
    std::vector<Term> when;              // of the slot and of the layers around it
    Origin origin;

    // The offer of that source, or null.
    const Offer* OfferOf(std::string_view source) const;
};

struct Preset {
    std::string id;
    std::string labelKey;
    Selection choices;  // picks and places
    Origin origin;
};

struct FaceDocument {
    std::string id;
    std::string version;
    std::string titleKey;
    std::string defaultLanguage;
    std::string complicationUsage;  // the survey feature of the complications, or empty
    Texts texts;
    // All in document order.
    std::vector<Group> groups;
    std::vector<Photos> photos;
    std::vector<Preset> presets;
    std::vector<Slot> slots;
    Selection selection;  // valid entries only
    Node root;
    std::shared_ptr<const XmlTree> tree;  // where the nodes stand in the text
};

struct ParseResult {
    std::optional<FaceDocument> document;  // only when no finding is an error
    std::vector<Finding> findings;         // all of them, by place
};
ParseResult ParseFace(std::string_view resultXml);

// What a document shows: the options and sources in effect.
struct Resolution {
    std::map<std::string, std::string> options;  // group -> option, hidden groups included
    std::map<std::string, Placement> sources;    // slot -> source or "empty", hidden slots included
    std::map<std::string, bool> shown;           // group, slot or photos -> whether its conditions hold
    std::map<std::string, std::string> colors;   // palette role -> colour

    // True when all terms hold. A term about a hidden group or slot never does, be it negated or not.
    bool Holds(const std::vector<Term>& terms) const;
};
Resolution Resolve(const FaceDocument& document);

// The flat document.
std::string Flatten(const FaceDocument& document);

}  // namespace DataUtil
