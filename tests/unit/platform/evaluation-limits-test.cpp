#include "evaluation-limits.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Platform::EvaluationRoom;
using Platform::kMostEvaluation;
using Platform::kMostEvaluationOfOne;
using testing::IsEmpty;

std::string Key(const std::string& app, const std::string& face)
{
    return app + "+" + face + "+evaluation-helper-data-duration";
}
std::string Key(const std::string& app, std::size_t face)
{
    return Key(app, std::to_string(face));
}

TEST(AnEvaluationKey, is_told_by_its_end)
{
    EXPECT_TRUE(Platform::IsEvaluationKey(Key("a", "b")));
    EXPECT_TRUE(Platform::IsEvaluationKey("+evaluation-helper-data-duration"));
    EXPECT_FALSE(Platform::IsEvaluationKey("evaluation-helper-data-duration"));
    EXPECT_FALSE(Platform::IsEvaluationKey(Key("a", "b") + "s"));
    EXPECT_FALSE(Platform::IsEvaluationKey(""));
}

TEST(ARoomForEvaluation, ends_at_a_number_of_entries_of_one_application)
{
    EvaluationRoom room("a+x+evaluation-helper-data-duration", 1);
    for (std::size_t i = 1; i < kMostEvaluationOfOne.entries; ++i) room.Keeps(Key("a", i), 1);
    EXPECT_THAT(room.Refusal(), IsEmpty());
    room.Keeps(Key("a", 0), 1);
    EXPECT_EQ(room.Refusal(), "evaluation entry of [a] refused: more than 64 entries of one application");
}

TEST(ARoomForEvaluation, ends_at_a_size_of_one_application)
{
    const std::string kept = Key("a", 1);
    const std::string key = Key("a", "x");
    const std::size_t rest = kMostEvaluationOfOne.bytes - kept.size() - 100 - key.size();
    EvaluationRoom fits(key, rest);
    fits.Keeps(kept, 100);
    EXPECT_THAT(fits.Refusal(), IsEmpty());
    EvaluationRoom over(key, rest + 1);
    over.Keeps(kept, 100);
    EXPECT_EQ(over.Refusal(), "evaluation entry of [a] refused: more than 16384 bytes of one application");
}

TEST(ARoomForEvaluation, ends_at_a_number_of_entries_in_all)
{
    const std::string key = Key("a", "x");
    EvaluationRoom room(key, 1);
    for (std::size_t i = 1; i < kMostEvaluation.entries; ++i) room.Keeps(Key("b" + std::to_string(i), i), 1);
    EXPECT_THAT(room.Refusal(), IsEmpty());
    room.Keeps(Key("c", 0), 1);
    EXPECT_EQ(room.Refusal(), "evaluation entry of [a] refused: more than 512 entries in all");
}

TEST(ARoomForEvaluation, ends_at_a_size_in_all)
{
    const std::string key = Key("a", "x");
    const std::string kept = Key("b", 1);
    EvaluationRoom room(key, 10);
    room.Keeps(kept, kMostEvaluation.bytes - kept.size() - key.size() - 10);
    EXPECT_THAT(room.Refusal(), IsEmpty());
    EvaluationRoom over(key, 11);
    over.Keeps(kept, kMostEvaluation.bytes - kept.size() - key.size() - 10);
    EXPECT_EQ(over.Refusal(), "evaluation entry of [a] refused: more than 131072 bytes in all");
}

TEST(ARoomForEvaluation, does_not_count_what_is_replaced)
{
    const std::string key = Key("a", "x");
    EvaluationRoom room(key, 10);
    for (std::size_t i = 1; i < kMostEvaluationOfOne.entries; ++i) room.Keeps(Key("a", i), 1);
    room.Keeps(key, kMostEvaluation.bytes);
    EXPECT_THAT(room.Refusal(), IsEmpty());
}

TEST(ARoomForEvaluation, does_not_count_what_is_no_entry)
{
    EvaluationRoom room(std::string_view("a+x+evaluation-helper-data-duration"), 10);
    room.Keeps("wfs-watch-name-world-clock-update", kMostEvaluation.bytes);
    room.Keeps("evaluation-helper-data-duration", kMostEvaluation.bytes);
    EXPECT_THAT(room.Refusal(), IsEmpty());
}

TEST(ARoomForEvaluation, is_one_for_each_application_whole_name)
{
    EvaluationRoom room(std::string_view("a.b+x+evaluation-helper-data-duration"), 10);
    room.Keeps(Key("a", 1), kMostEvaluationOfOne.bytes);
    room.Keeps(Key("a.b.c", 1), kMostEvaluationOfOne.bytes);
    EXPECT_THAT(room.Refusal(), IsEmpty());
    // A face may be called anything.
    room.Keeps("a.b+1+2++evaluation-helper-data-duration", kMostEvaluationOfOne.bytes);
    EXPECT_THAT(room.Refusal(), testing::HasSubstr("[a.b]"));
}

}  // namespace
