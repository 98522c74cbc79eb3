// Keeps what is written to the platform log, for tests of code that stands on nothing else of the platform.
//
// Linking this supplies __dlog_print. Lines are kept in order until Clear().

#pragma once

#include <string>
#include <vector>

namespace LogCapture {

struct Line {
    int priority;
    std::string tag;
    std::string text;
};

const std::vector<Line>& Lines();
void Clear();

}  // namespace LogCapture
