// What may stand in one place of a command line: the names that the watch has there.

#pragma once

#include <CLI/App.hpp>
#include <span>
#include <string>
#include <vector>

#include "completion.h"
#include "verb-table.h"

namespace Wfctl {

// What is typed of a command, but for its options and their values.
struct Line {
    const Verb* verb;
    std::vector<std::string> arguments;  // behind the verb, in front of the word that is completed
    std::string typed = {};              // of the word itself
    std::string type = {};               // what --type says
};

// Candidates for what the option, or the positional, takes. They need not begin as it is typed. Reads the
// files of the selected watch and makes none; throws where a name is not that of a face.
Completions CandidatesFor(const CLI::Option& option, const Line& line);

// The words that can follow those of a verb's name which are complete.
std::vector<Completion> VerbWords(std::span<const std::string> complete);

// Whether an option has the name: "--root", "-o".
bool IsNamed(const CLI::Option& option, std::string_view name);

}  // namespace Wfctl
