#include "utc-time.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Platform::UtcText;

constexpr int64_t kLast32 = (int64_t{1} << 31) - 1;  // of a clock of 32 bits

TEST(AUtcText, has_the_milliseconds)
{
    EXPECT_EQ(UtcText(0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(UtcText(1'772'368'200'250), "2026-03-01T12:30:00.250Z");
}

TEST(AUtcText, follows_the_format)
{
    EXPECT_EQ(UtcText("%Y%m%dT%H%M%SZ", 1'772'368'200), "20260301T123000Z");
}

TEST(AUtcText, goes_on_after_the_end_of_32_bits)
{
    EXPECT_EQ(UtcText(kLast32 * 1000 + 999), "2038-01-19T03:14:07.999Z");
    EXPECT_EQ(UtcText((kLast32 + 1) * 1000), "2038-01-19T03:14:08.000Z");
    EXPECT_EQ(UtcText("%Y-%m-%d", 4'102'358'400), "2099-12-31");
    EXPECT_EQ(UtcText(253'402'300'799'999), "9999-12-31T23:59:59.999Z");
    EXPECT_EQ(UtcText(253'402'300'800'000), "10000-01-01T00:00:00.000Z");
}

TEST(AUtcText, counts_back_before_1970)
{
    EXPECT_EQ(UtcText(-1), "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(UtcText(-2'208'988'800'000), "1900-01-01T00:00:00.000Z");
}

TEST(AUtcText, exists_for_every_number_of_milliseconds)
{
    EXPECT_EQ(UtcText(std::numeric_limits<int64_t>::max()), "292278994-08-17T07:12:55.807Z");
    EXPECT_EQ(UtcText(std::numeric_limits<int64_t>::min()), "-292275055-05-16T16:47:04.192Z");
}

}  // namespace
