// Figures as a bench prints them: what it measured, the floor of the same run, and their ratio.

#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

namespace Figures {

inline double Median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

struct Row {
    const char* what;
    const char* unit;
    double value, floor;
    const char* floorIs;
};

inline void Print(const Row& row)
{
    std::printf("%-34s %10.1f %-4s %10.1f %-4s %6.2fx  %s\n", row.what, row.value, row.unit, row.floor,
                row.unit, row.value / row.floor, row.floorIs);
}

}  // namespace Figures
