#include "nearest-name.h"

#include <algorithm>
#include <array>

#include "utf8.h"

namespace DataUtil {

namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kFewCandidates = 16;
constexpr std::size_t kMostSlips = 4;
constexpr std::string_view kMeans = "; did you mean \"";
constexpr std::string_view kMeansEnd = "\"?";

// Edit distance: insertions, deletions, replacements, and exchanges of neighbours, the most common slip of
// typing. Of names of at most kLongestName bytes, and given up at `enough`: cell [i][j] of the table, the
// distance of the first i bytes from the first j, is at least |i - j|, so only the diagonals nearer to the
// middle are filled in, between two that are `enough`.
std::size_t Distance(std::string_view a, std::string_view b, std::size_t enough)
{
    if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) >= enough) return enough;
    std::array<std::array<std::size_t, kLongestName + 1>, 3> rows;  // the last three
    for (std::size_t i = 0; i <= a.size(); ++i) {
        const auto& beforeLast = rows[(i + 1) % 3];
        const auto& last = rows[(i + 2) % 3];
        auto& row = rows[i % 3];
        const std::size_t begin = i - std::min(i, enough);
        const std::size_t end = std::min(i + enough, b.size());
        std::size_t least = enough;
        for (std::size_t j = begin; j <= end; ++j) {
            std::size_t& cell = row[j];
            if (i == 0 || j == 0) {
                cell = i + j;
            } else if (j + enough == i || i + enough == j) {
                cell = enough;
            } else {
                cell = std::min({row[j - 1] + 1, last[j] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
                if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                    cell = std::min(cell, beforeLast[j - 2] + 1);
            }
            least = std::min(least, cell);
        }
        // No later row has less: an exchange adds one to the row before the last, which is less by one at
        // most.
        if (least >= enough) return enough;
    }
    return rows[a.size() % 3][b.size()];
}

}  // namespace

std::string_view NearestName(std::string_view name, const std::vector<std::string_view>& candidates)
{
    if (name.empty() || name.size() > kLongestName) return {};
    std::string_view nearest;
    std::size_t least = std::clamp<std::size_t>(name.size() / 3, 1, kMostSlips) + 1;
    for (const std::string_view candidate : candidates) {
        if (candidate.empty() || candidate.size() > kLongestName) continue;
        const std::size_t distance = Distance(name, candidate, least);
        // Of those that differ as much, one of which only the end was not typed.
        const bool isBegun = !nearest.empty() && !nearest.starts_with(name) && candidate.starts_with(name) &&
                             candidate.size() - name.size() == least;
        if (distance < least || isBegun) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string_view NameGuesses::Nearest(std::string_view name, const std::vector<std::string_view>& candidates)
{
    mComparisons += candidates.size();
    return mComparisons > kMostComparisons ? std::string_view() : NearestName(name, candidates);
}

std::string Suggestion(std::string_view name, const std::vector<std::string_view>& candidates)
{
    return MeantOrKnown(NearestName(name, candidates), candidates);
}

std::string MeantOrKnown(std::string_view meant, const std::vector<std::string_view>& known)
{
    if (!meant.empty()) return OrMeant(meant);
    return known.size() > kFewCandidates ? "" : Listed("; known:", known);
}

std::string OrMeant(std::string_view meant)
{
    return std::string(kMeans) + std::string(meant) + std::string(kMeansEnd);
}

std::string Listed(std::string_view before, const std::vector<std::string_view>& names)
{
    std::string text;
    for (const std::string_view name : names) {
        if (!name.empty()) text += " " + std::string(name);
    }
    return text.empty() ? "" : std::string(before) + text;
}

std::string_view SuggestedName(std::string_view message)
{
    const auto begin = message.rfind(kMeans);
    if (begin == std::string_view::npos || !message.ends_with(kMeansEnd)) return {};
    message.remove_prefix(begin + kMeans.size());
    message.remove_suffix(kMeansEnd.size());
    return message;
}

std::string Quoted(std::string_view text)
{
    const std::string_view shown = Platform::Utf8Prefix(text, kLongestName);
    return "\"" + std::string(shown) + (shown.size() < text.size() ? "...\"" : "\"");
}

}  // namespace DataUtil
