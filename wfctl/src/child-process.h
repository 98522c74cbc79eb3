// Processes that are told apart from later ones with the same number, waited for and ended without polling.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "unique-fd.h"

namespace Wfctl {

using Milliseconds = std::chrono::milliseconds;

struct ProcessMark {
    pid_t pid = 0;           // 0: none
    uint64_t startTime = 0;  // in clock ticks since boot, as /proc tells it
};

ProcessMark MarkOf(pid_t pid);

// A pidfd of exactly this process; invalid when it is gone.
Platform::UniqueFd OpenProcess(const ProcessMark& process);

// Waits until the process has ended; false when it has not within the time.
bool AwaitEnd(const Platform::UniqueFd& process, Milliseconds most);

void SendSignal(const Platform::UniqueFd& process, int signal);

// SIGTERM, then SIGKILL after the time; waits until the process is gone.
void EndProcess(const Platform::UniqueFd& process, Milliseconds patience);

// All descendants, nearest first.
std::vector<ProcessMark> DescendantsOf(pid_t pid);

// The path of the program that a process runs; empty when it cannot be told.
std::string ProgramOf(pid_t pid);

// The path of a program that the shell would find; empty when there is none.
std::string FindProgram(const std::string& name);

struct Command {
    std::string program;
    std::vector<std::string> arguments;
    std::string errors;  // the file that its stderr goes to; empty: ours
};

// Runs the programs with our stdin and stdout, at most `atOnce` (0 counts as 1) at a time, and waits for all:
// their exit statuses, or -1 for each that could not be run or was killed. `onEnd`, which may be empty, is
// told how many have ended. We have no other children meanwhile. An interruption ends them all, and stops.
std::vector<int> RunPrograms(const std::vector<Command>& commands, unsigned atOnce,
                             const std::function<void(std::size_t)>& onEnd = {});

// Runs a program with our stdin, stdout and stderr, and waits for it: its exit status, or -1 when it could
// not be run or was killed.
int RunProgram(const std::string& program, std::vector<std::string> arguments);

}  // namespace Wfctl
