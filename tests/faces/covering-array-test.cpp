#include "covering-array.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

const auto kAll = [](std::size_t, std::size_t) { return true; };

bool HasPair(const std::vector<std::vector<std::size_t>>& rows, std::size_t a, std::size_t x, std::size_t b,
             std::size_t y)
{
    return std::any_of(rows.begin(), rows.end(), [&](const auto& row) { return row[a] == x && row[b] == y; });
}

}  // namespace

TEST(ACoveringArray, has_every_pair_in_far_fewer_rows_than_there_are_combinations)
{
    const std::vector<std::size_t> sizes = {3, 2, 4, 5, 2, 2};
    const auto rows = CoveringArray(sizes, kAll);
    for (std::size_t a = 0; a < sizes.size(); ++a) {
        for (std::size_t b = a + 1; b < sizes.size(); ++b) {
            for (std::size_t x = 0; x < sizes[a]; ++x) {
                for (std::size_t y = 0; y < sizes[b]; ++y)
                    EXPECT_TRUE(HasPair(rows, a, x, b, y)) << a << "=" << x << " " << b << "=" << y;
            }
        }
    }
    EXPECT_LE(rows.size(), 30U);  // of 480; 20 are needed for the two largest factors
}

TEST(ACoveringArray, has_every_value_of_factors_that_need_not_meet)
{
    const auto rows = CoveringArray({2, 5, 3}, [](std::size_t, std::size_t) { return false; });
    for (std::size_t value = 0; value < 5; ++value) EXPECT_TRUE(HasPair(rows, 1, value, 1, value)) << value;
    EXPECT_EQ(rows.size(), 5U);
}

TEST(ACoveringArray, of_one_factor_has_a_row_a_value)
{
    EXPECT_EQ(CoveringArray({3}, kAll).size(), 3U);
    EXPECT_TRUE(CoveringArray({}, kAll).empty());
}
