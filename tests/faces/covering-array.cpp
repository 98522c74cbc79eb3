#include "covering-array.h"

#include <set>
#include <tuple>

namespace {

using Row = std::vector<std::size_t>;

constexpr std::size_t kOpen = static_cast<std::size_t>(-1);  // not decided yet

// The pairs that no row has yet. A value by itself is the pair of its factor with that same factor.
class Pairs {
public:
    Pairs(const Row& sizes, const std::function<bool(std::size_t, std::size_t)>& paired)
    {
        for (std::size_t a = 0; a < sizes.size(); ++a) {
            for (std::size_t x = 0; x < sizes[a]; ++x) {
                mLeft.emplace(a, x, a, x);
                for (std::size_t b = a + 1; b < sizes.size(); ++b) {
                    for (std::size_t y = 0; paired(a, b) && y < sizes[b]; ++y) mLeft.emplace(a, x, b, y);
                }
            }
        }
    }

    bool IsEmpty() const { return mLeft.empty(); }

    // A row that has the first pair left, and nothing else yet.
    Row Begin(std::size_t factors) const
    {
        Row row(factors, kOpen);
        const auto& [a, x, b, y] = *mLeft.begin();
        row[a] = x;
        row[b] = y;
        return row;
    }

    // How many of the pairs left `row` would have more with that value.
    std::size_t Gain(const Row& row, std::size_t factor, std::size_t value) const
    {
        std::size_t gain = mLeft.count({factor, value, factor, value});
        for (std::size_t other = 0; other < row.size(); ++other) {
            if (row[other] == kOpen || other == factor) continue;
            gain += other < factor ? mLeft.count({other, row[other], factor, value})
                                   : mLeft.count({factor, value, other, row[other]});
        }
        return gain;
    }

    void Strike(const Row& row)
    {
        for (std::size_t a = 0; a < row.size(); ++a) {
            for (std::size_t b = a; b < row.size(); ++b) mLeft.erase({a, row[a], b, row[b]});
        }
    }

private:
    std::set<std::tuple<std::size_t, std::size_t, std::size_t, std::size_t>> mLeft;
};

}  // namespace

std::vector<Row> CoveringArray(const Row& sizes, const std::function<bool(std::size_t, std::size_t)>& paired)
{
    std::vector<Row> rows;
    for (Pairs left(sizes, paired); !left.IsEmpty();) {
        Row row = left.Begin(sizes.size());
        for (std::size_t factor = 0; factor < sizes.size(); ++factor) {
            if (row[factor] != kOpen) continue;
            std::size_t best = 0;
            for (std::size_t value = 1; value < sizes[factor]; ++value) {
                if (left.Gain(row, factor, value) > left.Gain(row, factor, best)) best = value;
            }
            row[factor] = best;
        }
        left.Strike(row);
        rows.push_back(std::move(row));
    }
    return rows;
}
