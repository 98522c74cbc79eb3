// What backup and restore say.

#pragma once

#include <string>
#include <vector>

#include "backup-manifest.h"
#include "verb-table.h"

namespace Wfctl {

// A name between quotes; nothing of it reaches a terminal as a command.
std::string QuotedName(const std::string& name);

// "2 faces and 1 picture", without what there is none of.
std::string CountedItems(std::size_t faces, std::size_t pictures);

// What was done, as "backed up 2 faces and 1 picture", or the same as JSON.
void PrintSummary(const Options& options, const char* what, const BackupManifest& manifest,
                  const std::string& folder, const std::vector<std::string>& notCarried);

}  // namespace Wfctl
