// What is wrong with what a face inks: parts that leave their place or the screen, texts that became too
// small or touch something else.

#pragma once

#include <string>
#include <vector>

#include "drawing.h"

struct Canvas {
    double width = 0, height = 0;
    bool round = false;
};

struct Fault {
    Drawing::Finding element;  // where it begins in the flat document, and its name
    std::string what;
};

// The faults of one drawing, by what was painted first.
std::vector<Fault> FaultsOf(const std::vector<Drawing::Ink>& inks, const Canvas& canvas);
