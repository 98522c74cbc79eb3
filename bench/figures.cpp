#include "figures.h"

#include <algorithm>
#include <cstdio>

namespace Bench {

namespace {

// How much the ratio moves from sample to sample.
std::vector<double> SampleRatios(const Figure& figure)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < std::min(figure.ours.size(), figure.floor.size()); ++i) {
        if (figure.floor[i] > 0) ratios.push_back(figure.ours[i] / figure.floor[i]);
    }
    return ratios;
}

std::string Text(const char* format, double value)
{
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string RatioText(const Figure& figure)
{
    const auto ratio = Ratio(figure);
    if (!ratio) return "";
    const std::vector<double> ratios = SampleRatios(figure);
    std::string text = Text("%.2f", *ratio);
    if (ratios.size() > 1)
        text += Text(" (%.2f", Quantile(ratios, 0.1)) + Text("-%.2f)", Quantile(ratios, 0.9));
    return text;
}

std::string GoalText(const Figure& figure)
{
    const auto met = IsMet(figure);
    if (!met) return "";
    const std::string most = figure.goal.of == Goal::Of::kRatio ? Text("%gx", figure.goal.most)
                                                                : Text("%g ", figure.goal.most) + figure.unit;
    return most + (*met ? "  met" : "  MISSED");
}

nlohmann::ordered_json Spread(const std::vector<double>& samples)
{
    return {
        {"samples",         samples.size()},
        {     "p10", Quantile(samples,           0.1)},
        {     "median",  Median(samples)              },
        { "p90",             Quantile(samples,                           0.9)},
    };
}

}  // namespace

double Quantile(std::vector<double> samples, double q)
{
    const auto at = static_cast<std::ptrdiff_t>(q * static_cast<double>(samples.size() - 1) + 0.5);
    std::nth_element(samples.begin(), samples.begin() + at, samples.end());
    return samples[static_cast<std::size_t>(at)];
}

std::optional<double> Ratio(const Figure& figure)
{
    if (figure.floor.empty() || Median(figure.floor) <= 0) return std::nullopt;
    return Median(figure.ours) / Median(figure.floor);
}

std::optional<bool> IsMet(const Figure& figure)
{
    switch (figure.goal.of) {
        case Goal::Of::kNone:
            return std::nullopt;
        case Goal::Of::kRatio:
            return Ratio(figure).value_or(0) <= figure.goal.most;
        case Goal::Of::kValue:
            return Median(figure.ours) <= figure.goal.most;
    }
    return std::nullopt;
}

void PrintHeading()
{
    std::printf("%-40s %10s %10s %-4s %-20s %-16s %s\n", "", "ours", "floor", "", "ratio (10-90 %)", "goal",
                "the floor is");
}

void Print(const Figure& figure)
{
    std::printf("%-40s %10.1f %10s %-4s %-20s %-16s %s\n", figure.what.c_str(), Median(figure.ours),
                figure.floor.empty() ? "" : Text("%.1f", Median(figure.floor)).c_str(), figure.unit.c_str(),
                RatioText(figure).c_str(), GoalText(figure).c_str(), figure.floorIs.c_str());
    std::fflush(stdout);
}

nlohmann::ordered_json ToJson(const Figure& figure)
{
    nlohmann::ordered_json json{
        {"what", figure.what        },
        {"unit", figure.unit        },
        {"ours", Spread(figure.ours)},
    };
    if (!figure.floor.empty()) {
        json["floor"] = Spread(figure.floor);
        json["floorIs"] = figure.floorIs;
    }
    if (const auto ratio = Ratio(figure)) {
        json["ratio"] = *ratio;
        json["ratios"] = Spread(SampleRatios(figure));
    }
    if (const auto met = IsMet(figure)) {
        json["goal"] = {
            {figure.goal.of == Goal::Of::kRatio ? "mostRatio" : "most", figure.goal.most},
            {"met",                                                     *met            },
        };
    }
    return json;
}

}  // namespace Bench
