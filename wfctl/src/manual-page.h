// Manual pages, made from the table of verbs.

#pragma once

#include <string>
#include <vector>

#include "verb-table.h"

namespace Wfctl {

// wfctl(1), for man.
std::string ManualPage();
// wfctl-VERB(1).
std::string ManualPage(const Verb& verb);

// All pages and the shells' completions: a path below the data folder ("share") of a prefix, and the text.
struct InstalledPage {
    std::string path, text;
};
std::vector<InstalledPage> InstalledPages();

}  // namespace Wfctl
