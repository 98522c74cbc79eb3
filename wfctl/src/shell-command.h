// Commands that people are told to type: names in them may be any peer's.

#pragma once

#include <string>

namespace Wfctl {

// The name as one word of a shell: as it is where it has letters, digits, ".", "_" and "-" alone, else
// quoted.
std::string ShellWord(const std::string& name);

// A command about the watch at `root`; `words` are the verb and what follows: "wfctl --root 'DIR' list".
std::string CommandOn(const std::string& root, const std::string& words);

// The same about the selected watch: with --root where the user named it so, else "wfctl list".
std::string WatchCommand(const std::string& words);

// The same for what only a running watch does: one that is down comes up first.
std::string RunningWatchCommand(const std::string& words);

}  // namespace Wfctl
