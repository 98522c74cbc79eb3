// Programs of their own that are measured, and what the system knows of them.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace TestSupport {

using Clock = std::chrono::steady_clock;

double Microseconds(Clock::duration duration);

// What `action` takes.
template <typename Action>
double TimeOf(const Action& action)
{
    const auto start = Clock::now();
    action();
    return Microseconds(Clock::now() - start);
}

// A program of its own, ended with the object. The first word is its path.
class Program {
public:
    explicit Program(const std::vector<std::string>& command);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // A number of the file /proc/PID/`file`, behind its label; -1 when there is none.
    long ProcValue(const char* file, const std::string& label) const;

private:
    const pid_t mPid;
};

// The processor's milliseconds that a program takes, from nothing to its end. Throws when it fails.
double ProcessorTimeOf(const std::vector<std::string>& command);

// The processor's milliseconds that this process has taken so far.
double ProcessorTime();

// This process and what it starts run on one processor: only work is compared, not the waking of another one.
void StayOnOneProcessor();

std::string ReadFile(const std::string& path);  // throws when there is none

}  // namespace TestSupport
