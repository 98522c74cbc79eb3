// Making one system call of a gated program fail: which there are, and with which errors.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "gated-program.h"

namespace Campaign {

// One of an operation's calls fails.
struct Fault {
    const SystemCall* call;
    std::size_t nth;  // of its kind, from 1 on
    int error;
    bool isLasting;  // every later call of its kind fails too
};

// All that these calls may meet.
std::vector<Fault> AllFaults(const std::vector<const SystemCall*>& calls);

// Counts an operation's calls, and makes one of them fail. A watcher of a GatedProgram.
class Saboteur {
public:
    // Nothing counts before a call that names a path which begins with `from`.
    explicit Saboteur(std::optional<Fault> fault = {}, std::string from = {});

    int operator()(const PendingCall& call);

    const std::vector<const SystemCall*>& Calls() const { return mCalls; }
    const SystemCall* Failing() const { return mFailing; }  // null: it was never reached
    std::string Name() const;                               // of the fault, for people

private:
    std::optional<Fault> mFault;
    std::string mFrom;
    std::vector<const SystemCall*> mCalls;
    std::size_t mSeen = 0;  // of the kind that is to fail
    const SystemCall* mFailing = nullptr;
    bool mIsOfLog = false;
};

}  // namespace Campaign
