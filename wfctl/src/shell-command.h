// Commands that people are told to type: names in them may be any peer's.

#pragma once

#include <string>

namespace Wfctl {

// The name as one word of a shell: as it is where it has letters, digits, ".", "_" and "-" alone, else
// quoted.
std::string ShellWord(const std::string& name);

// What begins a command about the watch at `root`, which is as the user gave it; empty: the watch of the
// environment. "wfctl" or "wfctl --root 'DIR'"; the verb comes next.
std::string CommandOn(const std::string& root);

}  // namespace Wfctl
