#include "recent.h"

#include <gtest/gtest.h>

namespace {

using Kept = Platform::Recent<int, 3>;

TEST(RecentValues, are_found_by_their_keys)
{
    Kept kept;
    EXPECT_EQ(kept.Find("a"), nullptr);
    *kept.Add("a", 1) += 1;
    kept.Add("b", 7);
    ASSERT_NE(kept.Find("a"), nullptr);
    EXPECT_EQ(*kept.Find("a"), 2);
    EXPECT_EQ(*kept.Find("b"), 7);
}

TEST(RecentValues, leave_when_there_are_too_many_and_they_were_asked_for_longest_ago)
{
    Kept kept;
    for (const char* key : {"a", "b", "c"}) kept.Add(key, 0);
    const int* a = kept.Find("a");
    kept.Add("d", 0);
    EXPECT_EQ(kept.Find("b"), nullptr);
    EXPECT_EQ(kept.Find("a"), a);
    kept.Add("e", 0);
    EXPECT_EQ(kept.Find("c"), nullptr);
    for (const char* key : {"a", "d", "e"}) EXPECT_NE(kept.Find(key), nullptr) << key;
}

}  // namespace
