// What ends a program from outside, while it has something to undo first.

#pragma once

#include <csignal>

namespace Wfctl {

// SIGHUP, SIGINT and SIGTERM, but for those that are ignored, as `nohup` has it.
inline sigset_t Interruptions()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_IGN) sigaddset(&set, number);
    }
    return set;
}

// Holds signals back. What came meanwhile takes effect at the end of the scope.
class HeldSignals {
public:
    explicit HeldSignals(const sigset_t& set) { sigprocmask(SIG_BLOCK, &set, &mBefore); }
    ~HeldSignals() { sigprocmask(SIG_SETMASK, &mBefore, nullptr); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

private:
    sigset_t mBefore{};
};

}  // namespace Wfctl
