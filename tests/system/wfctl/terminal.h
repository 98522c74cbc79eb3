// A program at a terminal, at which somebody types.

#pragma once

#include <sys/types.h>

#include <string>

#include "running.h"

class ATerminal {
public:
    ATerminal(const Arguments& command, const Environment& environment);
    ~ATerminal();
    ATerminal(const ATerminal&) = delete;
    ATerminal& operator=(const ATerminal&) = delete;

    void Type(const std::string& text);
    // What is said up to the text, and with it; all that was said where the text does not come within
    // kPatience.
    std::string Await(const std::string& text);

private:
    pid_t mPid = -1;
    int mFd = -1;
    std::string mSaid;
};
