// Images that a face names and that no message brings.

#pragma once

#include <set>
#include <string>

namespace Wfctl {

// One line on stderr for each of the face's images that is not on the selected watch: where to put it, and
// what to type then. `assets` are the paths that its document names.
void WarnOfMissingAssets(const std::string& face, const std::set<std::string>& assets);

}  // namespace Wfctl
