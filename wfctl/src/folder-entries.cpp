#include "folder-entries.h"

#include <algorithm>

namespace Wfctl {

namespace fs = std::filesystem;

std::vector<fs::path> EntriesOf(const std::string& folder, std::error_code& error)
{
    std::vector<fs::path> entries;
    fs::directory_iterator at(folder, error);
    // Its ++ would throw.
    for (const fs::directory_iterator end; !error && at != end; at.increment(error))
        entries.push_back(at->path());
    std::ranges::sort(entries);
    return entries;
}

std::vector<fs::path> EntriesOf(const std::string& folder)
{
    std::error_code error;
    return EntriesOf(folder, error);
}

}  // namespace Wfctl
