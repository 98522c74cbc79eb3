// The user's part of a result XML: what is picked, placed and chosen.
//
// An *entry* names what the author offers, by id. It is *valid* while the document still offers that; an
// update of the author's part may take it away, and then the entry counts as not made.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "finding.h"

namespace DataUtil {

struct FaceDocument;

// What a world clock shows. A text that is empty comes from the offer of the slot. UTF-8.
struct WorldClock {
    std::string city;
    std::string country;
    std::string timezone;
    std::string timezonePath;  // an IANA id, or a path that has one behind "/zoneinfo/"

    bool operator==(const WorldClock&) const = default;
};

// What a slot shows.
struct Placement {
    std::string source;                    // or "empty"
    std::optional<WorldClock> worldClock;  // only with the source "worldclock", and not all empty

    bool operator==(const Placement&) const = default;
};

struct Selection {
    std::string preset;                         // empty for none
    std::map<std::string, std::string> picks;   // group -> option
    std::map<std::string, Placement> places;    // slot -> what it shows
    std::map<std::string, std::string> photos;  // photos -> bare file name

    bool IsEmpty() const { return preset.empty() && picks.empty() && places.empty() && photos.empty(); }
    bool operator==(const Selection&) const = default;
};

// The selection of a document, valid entries only.
Selection SelectionOf(const FaceDocument& document);

// The text with only its <selection> replaced: made when there was none, gone when the selection is empty.
// Every other byte stays. A text that is not well-formed comes back as it is. The selection's texts must be
// such as a document may hold; whether they are valid shows when the new text is parsed.
std::string WithSelection(std::string_view resultXml, const Selection& selection);

struct Migrated {
    std::string text;
    std::vector<Finding> notes;  // places in the old text
};

// The author's new text with the user's selection of the old one. What the new text does not offer is
// dropped, with a note for each. A new text that is refused comes back as it is, with its findings; of an old
// one that cannot be read nothing is taken over, and its findings say why.
Migrated Migrate(std::string_view newResultXml, std::string_view oldResultXml);

}  // namespace DataUtil
