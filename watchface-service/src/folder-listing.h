// The entries of a folder as strings.

#pragma once

#include <string>
#include <vector>

namespace WatchfaceService {

// The bare names in `folder`, files and folders alike, in the order in which the platform lists them. Empty
// when the folder is empty or missing.
std::vector<std::string> ListFolder(const std::string& folder);

}  // namespace WatchfaceService
