// Figures as the bench gives them: what was measured, its floor of the same run, and their ratio.

#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace Bench {

// What a figure may be at most: so many times its floor, or so much in its own unit.
struct Goal {
    enum class Of { kNone, kRatio, kValue };
    Of of = Of::kNone;
    double most = 0;
};

constexpr Goal AtMostTimes(double most)
{
    return {Goal::Of::kRatio, most};
}
constexpr Goal AtMost(double most)
{
    return {Goal::Of::kValue, most};
}

// One row. The samples of a figure and of its floor are taken in turn, so that the i-th of both belong
// together; there is none of the floor where nothing is the floor.
struct Figure {
    std::string what;
    std::string unit;
    std::vector<double> ours, floor;
    std::string floorIs;
    Goal goal;
};

// The q-quantile, 0 to 1, of one sample or more.
double Quantile(std::vector<double> samples, double q);
inline double Median(const std::vector<double>& samples)
{
    return Quantile(samples, 0.5);
}

// The medians' ratio; nothing without a floor, or where it is 0.
std::optional<double> Ratio(const Figure& figure);
// Nothing where there is no goal.
std::optional<bool> IsMet(const Figure& figure);

void PrintHeading();
void Print(const Figure& figure);
nlohmann::ordered_json ToJson(const Figure& figure);

}  // namespace Bench
