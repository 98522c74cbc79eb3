// What lies in a folder that others write to.

#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace Wfctl {

// The paths in the folder, by name; what could be read until an error. Throws for no state of the disk.
std::vector<std::filesystem::path> EntriesOf(const std::string& folder, std::error_code& error);
std::vector<std::filesystem::path> EntriesOf(const std::string& folder);

}  // namespace Wfctl
