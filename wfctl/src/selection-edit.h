// Changes to the selection of a face, as people type them.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "face-document.h"

namespace Wfctl {

struct SelectionChanges {
    bool reset = false;                   // first of all drops the selection
    std::optional<std::string> preset{};  // its id; empty for none
    std::vector<std::string> picks{};     // GROUP=OPTION; without an option the pick is dropped
    std::vector<std::string> places{};    // SLOT=SOURCE[@AREA/CITY[:CITY]]; without a source likewise
    std::vector<std::string> photos{};    // PHOTOS=FILE, a bare name; without a name likewise

    bool IsEmpty() const { return !reset && !preset && picks.empty() && places.empty() && photos.empty(); }
};

// The document's selection after the changes, in the order above. A preset replaces what was picked and
// placed for what it names. Stops with Exit::kUsage, the nearest name and all that there are, when something
// is named that the document does not offer.
DataUtil::Selection Changed(const DataUtil::FaceDocument& document, const SelectionChanges& changes);

// AREA/CITY[:CITY], with the country of the zone; stops with Exit::kUsage when nobody knows the zone.
DataUtil::WorldClock ParseWorldClock(const std::string& text);

// One thing that is shown otherwise than before.
struct Difference {
    std::string what;           // a group, a slot, a photos element, or "preset"
    std::string before, after;  // as people read them; "none" and "default" where there is nothing
    bool isHidden = false;      // the new selection does not show it
};
std::vector<Difference> DifferencesOf(const DataUtil::FaceDocument& before,
                                      const DataUtil::FaceDocument& after);

// "battery", "worldclock, Tokyo (Asia/Tokyo)".
std::string PlacementText(const DataUtil::Placement& placement);

}  // namespace Wfctl
