// Face documents: reading a result XML and making the flat document from it.
//
// Terms: a *group* is a choice that the author offers (a style, a palette or a switch), an *option* one
// answer to it, a *slot* a place for live data, a *source* what a slot shows. The user's *selection* picks
// options and places sources. docs/face-format.md describes both documents.
//
// Normal flow: ParseFace() checks all of the text and gives a document when nothing is wrong with it;
// Flatten() then cannot fail. Both are pure functions and may be called on any thread. The texts they take
// and give are UTF-8. They throw nothing but std::bad_alloc.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "face-node.h"
#include "finding.h"

namespace DataUtil {

enum class GroupKind { kStyle, kPalette, kSwitch };

struct Option {
    std::string id;
    std::string labelKey;                       // empty for a switch's on and off
    std::map<std::string, std::string> colors;  // of a palette: role -> colour
    Place place;
};

struct Group {
    GroupKind kind = GroupKind::kStyle;
    std::string id;
    std::string labelKey;
    std::vector<Option> options;
    std::string defaultOption;
    std::vector<Term> when;  // shown only while all hold
    Place place;
};

struct Slot {
    std::string name;
    std::string group;
    std::string labelKey;
    std::string role;
    std::vector<std::string> offers;     // sources that the user may place
    std::vector<std::string> fallbacks;  // tried in order when nothing is placed; the last is "empty"
    std::vector<Term> when;              // of the slot and of the layers around it
    Place place;
};

struct FaceDocument {
    std::string id;
    std::string version;
    std::string titleKey;
    std::string defaultLanguage;
    std::map<std::string, std::map<std::string, std::string>> texts;  // language -> key -> text
    std::vector<Group> groups;                                        // in document order
    std::vector<Slot> slots;                                          // in document order
    std::map<std::string, std::string> picks;                         // group -> option, only valid ones
    std::map<std::string, std::string> placed;                        // slot -> source, only valid ones
    Node root;
};

struct ParseResult {
    std::optional<FaceDocument> document;  // only when no finding is an error
    std::vector<Finding> findings;         // all of them, by place
};
ParseResult ParseFace(std::string_view resultXml);

// What a document shows: the options and sources in effect.
struct Resolution {
    std::map<std::string, std::string> options;  // group -> option, hidden groups included
    std::map<std::string, std::string> sources;  // slot -> source or "empty", hidden slots included
    std::map<std::string, bool> shown;           // group or slot -> whether its conditions hold
    std::map<std::string, std::string> colors;   // palette role -> colour

    // True when all terms hold. A term about a hidden group or slot never does, be it negated or not.
    bool Holds(const std::vector<Term>& terms) const;
};
Resolution Resolve(const FaceDocument& document);

// The flat document.
std::string Flatten(const FaceDocument& document);

}  // namespace DataUtil
