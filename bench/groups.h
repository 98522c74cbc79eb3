// What is measured, a group for each kind of path.

#pragma once

#include <vector>

#include "figures.h"
#include "watch.h"

namespace Bench {

struct Choices {
    int idleSeconds = 60;    // for how long wake-ups are counted
    int mostFaces = 10'000;  // in the read/write area
};

using Figures = std::vector<Figure>;
using Group = Figures (*)(Watch&, const Choices&);

Figures StartUp(Watch&, const Choices&);  // start, memory and wake-ups of the idle service; before all others
Figures Messages(Watch&, const Choices&);  // in and out, and what is asked of the bus
Figures Updates(Watch&, const Choices&);
Figures Dates(Watch&, const Choices&);
Figures Keys(Watch&, const Choices&);
Figures Previews(Watch&, const Choices&);  // checking them
Figures Drawings(Watch&, const Choices&);
Figures Folders(Watch&, const Choices&);  // many faces; in an area of its own

}  // namespace Bench
