// A program each of whose system calls that reach files or the bus is shown to us before it is made: it may
// then be made, be refused with an error of our choice, or be the program's last.
//
// The kernel does this (seccomp's user notification), so nothing of the program is built or linked otherwise
// for it, and no call is missed, whatever library makes it. Not every container may have it.

#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "system-calls.h"
#include "unique-fd.h"

namespace Campaign {

bool CanGatePrograms();
inline constexpr int kSkipped = 77;  // a campaign's status where it cannot run

// What execv() takes; the words stay the command's.
std::vector<char*> WordsOf(const std::vector<std::string>& command);

// A call that is about to be made.
struct PendingCall {
    const SystemCall& call;
    pid_t process;
    uint64_t arguments[6];

    std::string TextAt(int argument) const;  // a string of the program; empty when it cannot be read
    std::string BytesAt(uint64_t address, std::size_t size) const;
};

class GatedProgram {
public:
    // 0: the call is made; otherwise the error that it fails with. Runs on a thread of its own, one call
    // after another. It may kill the program.
    using Watcher = std::function<int(const PendingCall&)>;

    // Standard error goes to the end of `log`. Throws std::runtime_error when it cannot be gated.
    GatedProgram(const std::vector<std::string>& command, const std::string& log, Watcher watcher = {});
    ~GatedProgram();  // kills it
    GatedProgram(const GatedProgram&) = delete;
    GatedProgram& operator=(const GatedProgram&) = delete;

    pid_t Pid() const { return mPid; }

    // Every call is shown to this one from now on; the one before runs no more when this returns.
    void Watch(Watcher watcher);

    // Whether it waits for something to happen and has made no call since.
    bool IsIdle() const { return mIsIdle; }

    // How it ended, as waitpid() says; nothing while it runs.
    std::optional<int> Status();
    std::optional<int> WaitForEnd(std::chrono::milliseconds patience);
    void Kill();

private:
    void Serve();
    void Answer(uint64_t id, pid_t thread, const PendingCall& call);
    static bool IsWaiting(const PendingCall& call);

    pid_t mPid = -1;
    std::optional<int> mStatus;
    Platform::UniqueFd mListener;
    std::mutex mMutex;
    Watcher mWatcher;
    std::atomic<bool> mIsIdle{false};
    std::thread mThread;
};

}  // namespace Campaign
