// `watchface-capture --draw IN_watchface.xml OUT.png|OUT.svg`: draws without a bus and without the platform.
// It serves people and the build, which makes the shipped previews with it.

#pragma once

#include <functional>
#include <string>

namespace Capture {

// Takes from the process what it does not need to write below `folder`; false when that cannot be done.
using ConfineTo = std::function<bool(const std::string& folder)>;

// The exit status: 0 drawn, 1 with one line on stderr that says why not, 2 the command line is not
// understood. Warnings are lines on stderr too and change nothing. `confine` runs before the document is
// opened.
int RunDrawCommand(int argc, char** argv, const ConfineTo& confine);

// The bytes of a regular file of at most `limit` bytes; false with a reason otherwise. Never blocks on a
// pipe.
bool ReadWholeFile(const std::string& path, size_t limit, std::string& bytes, std::string& problem);

}  // namespace Capture
