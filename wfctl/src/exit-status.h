// How wfctl ends, and the one way to end early.

#pragma once

#include <stdexcept>
#include <string>

namespace Wfctl {

enum class Exit : int {
    kDone = 0,
    kError = 1,  // also: the service said no
    kUsage = 2,
    kNoAnswer = 3,  // in time
    kNotPermitted = 4,
    kNoWatch = 8,
    kNothingToDo = 9,
    kNotFound = 10,
    kInterrupted = 130,
};

// Ends the verb: `what()` goes to stderr as one line that says what, which object, and what to type next.
class Stop : public std::runtime_error {
public:
    Stop(Exit status, const std::string& text) : std::runtime_error(text), mStatus(status) {}
    Exit Status() const { return mStatus; }

private:
    Exit mStatus;
};

}  // namespace Wfctl
