// How long wfctl waits at most.

#include <gtest/gtest.h>

#include <cmath>

#include "connection.h"

using Wfctl::DeadlineIn;
using Wfctl::Seconds;

namespace {

constexpr Seconds kYear{365 * 86400.0};

Seconds FromNow(double seconds)
{
    const auto now = std::chrono::steady_clock::now();
    return DeadlineIn(Seconds(seconds)) - now;
}

}  // namespace

TEST(ADeadline, comes_after_as_many_seconds)
{
    EXPECT_GE(FromNow(2.5), Seconds(2.4999));
    EXPECT_LT(FromNow(2.5), Seconds(3600));
}

TEST(ADeadline, is_thirty_years_away_whatever_more_is_asked_for)
{
    for (const double seconds : {1e10, 1e12, 1e300, std::nan("")}) {
        EXPECT_GT(FromNow(seconds), 30 * kYear) << seconds;
        EXPECT_LT(FromNow(seconds), 40 * kYear) << seconds;
    }
}
