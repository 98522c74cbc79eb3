#include "nearest-name.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "utf8.h"

namespace DataUtil {

namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::size_t kFewCandidates = 16;
constexpr std::size_t kMostSlips = 4;
constexpr std::string_view kMeans = "; did you mean \"";
constexpr std::string_view kMeansEnd = "\"?";

// Edit distance: insertions, deletions, replacements, and exchanges of neighbours, the most common slip of
// typing. Given up at `enough`: a hostile document has half a million pairs of long names.
std::size_t Distance(std::string_view a, std::string_view b, std::size_t enough)
{
    if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) >= enough) return enough;
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = last[j] + (a[i] == b[j] ? 0 : 1);
            row[j + 1] = std::min({row[j] + 1, last[j + 1] + 1, replaced});
            if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j]) {
                row[j + 1] = std::min(row[j + 1], beforeLast[j - 1] + 1);
            }
        }
        // No later row has less: an exchange adds one to the row before the last, which is less by one at
        // most.
        if (*std::min_element(row.begin(), row.end()) >= enough) return enough;
    }
    return row.back();
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
        if (distance < least) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string Suggestion(std::string_view name, const std::vector<std::string_view>& candidates)
{
    const std::string_view nearest = NearestName(name, candidates);
    if (!nearest.empty()) return OrMeant(nearest);
    return candidates.size() > kFewCandidates ? "" : Listed("; known:", candidates);
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
