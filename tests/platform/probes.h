// What a confined program tries: each probe is one action, and says how it ended.

#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace PlatformTest {

// Where a probe acts.
struct ProbePlaces {
    std::string own;      // a folder that the program may write, with a file "mine"
    std::string foreign;  // one that it may not, with a file "theirs"
    int outsider = 0;     // a process that is not the program's
    std::string socket;   // the name of an abstract socket that another process listens on
};

struct Probe {
    const char* name;
    int from;  // the level of Landlock from which on it is refused; 0: it never is
    std::function<int(const ProbePlaces&)> act;  // 0, or the errno
};

std::span<const Probe> Probes();

// The names of those that ended without an error.
std::vector<std::string> Succeeding(const ProbePlaces& places);

}  // namespace PlatformTest
