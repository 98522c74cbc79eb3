// Images that a face names and that no message brings.

#pragma once

#include <set>
#include <string>

#include "faces.h"

namespace Wfctl {

// Of `assets`, the paths that the face's document names, those that are not on the selected watch.
std::set<std::string> MissingAssets(const Face& face, std::set<std::string> assets);

// One line on stderr for each of them of the read/write face: where to put it, and what to type then.
void WarnOfMissingAssets(const std::string& name, const std::set<std::string>& assets);

}  // namespace Wfctl
