// What usage records tell about a face.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "face-document.h"

namespace DataUtil {

// What is chosen, separated by spaces: "group=option" for each shown group, "photos=own" or "photos=default"
// for all shown photos, "slot=source" for each shown slot; groups, photos and slots in document order. Ids
// are slugs, so nothing in it needs quoting.
std::string CombinationText(const FaceDocument& document);

struct UsageItems {
    std::vector<std::pair<std::string, std::string>> picks;  // feature and option; at most kMostUsages
    std::string complicationFeature;                         // or empty
    std::vector<std::string> complications;                  // the sources of shown slots that are not empty
};
UsageItems UsageItemsOf(const FaceDocument& document);

}  // namespace DataUtil
