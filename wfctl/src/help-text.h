// What `--help` prints, made from the table of verbs.

#pragma once

#include <CLI/App.hpp>
#include <string>
#include <string_view>

#include "verb-table.h"

namespace Wfctl {

// An option as usage says it: "-h, --help", "--wait S"; a positional's name alone.
std::string OptionText(const CLI::Option& option);
// The name of what an option takes: "S"; empty for a flag.
std::string TypeOf(const CLI::Option& option);
// "usage: wfctl …", broken between arguments where it gets long.
std::string UsageText(const Verb& verb);

std::string OverviewText();
std::string HelpText(const Verb& verb);
// Of the verbs whose first of two words is this one; there are some.
std::string GroupText(const std::string& word);

}  // namespace Wfctl
