// What the preferences keep of other applications' durations.

#include "evaluation-limits.h"

#include "common-util-keys.h"
#include "common-util-pref.h"
#include "contract-test.h"

namespace Contract {
namespace {

using Platform::kMostEvaluation;
using Platform::kMostEvaluationOfOne;
using Platform::kNoRoomForEvaluation;
using testing::ElementsAre;
using testing::Ne;
using testing::Pair;

class AnEvaluationEntry : public ContractTest {
protected:
    static std::string Key(const std::string& app, const std::string& face)
    {
        return app + "+" + face + "+evaluation-helper-data-duration";
    }
    static int Save(const std::string& app, const std::string& face, const std::string& value = "1")
    {
        return CommonUtilPref::SetString(Key(app, face), value);
    }
    // As many entries as one application may have.
    static void Fill(const std::string& app)
    {
        for (std::size_t i = 0; i < kMostEvaluationOfOne.entries; ++i) {
            ASSERT_EQ(Save(app, std::to_string(i)), 0) << i;
        }
    }
    // A value with which an entry is as large as all of one application may be.
    static std::string AllOf(const std::string& app, const std::string& face)
    {
        return std::string(kMostEvaluationOfOne.bytes - Key(app, face).size(), 'x');
    }
};

TEST_F(AnEvaluationEntry, over_the_number_of_one_application_is_not_kept)
{
    Fill("one");
    EXPECT_EQ(Save("one", "more"), kNoRoomForEvaluation);
    EXPECT_THAT(CommonUtilPref::GetString(Key("one", "more")), Pair(Ne(0), ""));
    EXPECT_THAT(CommonUtilPref::GetString(Key("one", "0")), Pair(0, "1"));
}

TEST_F(AnEvaluationEntry, of_another_application_is_kept_beside_a_full_one)
{
    Fill("one");
    EXPECT_EQ(Save("on", "0"), 0);
    EXPECT_EQ(Save("one.two", "0"), 0);
}

TEST_F(AnEvaluationEntry, may_be_written_again_where_there_is_no_room)
{
    Fill("one");
    EXPECT_EQ(Save("one", "0", "other"), 0);
    EXPECT_THAT(CommonUtilPref::GetString(Key("one", "0")), Pair(0, "other"));
    EXPECT_NE(Save("one", "more"), 0);
}

TEST_F(AnEvaluationEntry, over_the_size_of_one_application_is_not_kept)
{
    const std::string all = AllOf("one", "a");
    EXPECT_EQ(Save("one", "a", all), 0);
    EXPECT_EQ(Save("one", "a", all + "x"), kNoRoomForEvaluation);
    EXPECT_EQ(Save("one", "b", ""), kNoRoomForEvaluation);
    EXPECT_THAT(CommonUtilPref::GetString(Key("one", "a")), Pair(0, all));
}

TEST_F(AnEvaluationEntry, that_becomes_smaller_makes_room)
{
    EXPECT_EQ(Save("one", "a", AllOf("one", "a")), 0);
    EXPECT_EQ(Save("one", "a", ""), 0);
    EXPECT_EQ(Save("one", "b"), 0);
}

TEST_F(AnEvaluationEntry, may_have_a_long_key_within_the_size)
{
    const std::string face(kMostEvaluationOfOne.bytes - Key("one", "").size(), 'f');
    EXPECT_NE(Save("one", face + "f", ""), 0);
    EXPECT_EQ(Save("one", face, ""), 0);
}

TEST_F(AnEvaluationEntry, over_the_number_in_all_is_not_kept)
{
    constexpr std::size_t kApplications = kMostEvaluation.entries / kMostEvaluationOfOne.entries;
    for (std::size_t i = 0; i < kApplications; ++i) Fill("app" + std::to_string(i));
    EXPECT_EQ(Save("another", "a"), kNoRoomForEvaluation);
    EXPECT_EQ(Save("app0", "0", "2"), 0);
}

TEST_F(AnEvaluationEntry, over_the_size_in_all_is_not_kept)
{
    constexpr std::size_t kApplications = kMostEvaluation.bytes / kMostEvaluationOfOne.bytes;
    for (std::size_t i = 0; i < kApplications; ++i) {
        const std::string app = "app" + std::to_string(i);
        ASSERT_EQ(Save(app, "a", AllOf(app, "a")), 0);
    }
    EXPECT_EQ(Save("another", "a"), kNoRoomForEvaluation);
}

TEST_F(AnEvaluationEntry, counts_whatever_its_type)
{
    for (std::size_t i = 0; i < kMostEvaluationOfOne.entries; ++i) {
        const std::string key = Key("one", std::to_string(i));
        ASSERT_EQ(i % 2 ? CommonUtilPref::SetBool(key, true) : CommonUtilPref::SetInt(key, 1), 0);
    }
    EXPECT_NE(CommonUtilPref::SetBool(Key("one", "more"), true), 0);
    EXPECT_NE(CommonUtilPref::SetInt(Key("one", "more"), 1), 0);
    EXPECT_NE(Save("one", "more"), 0);
}

TEST_F(AnEvaluationEntry, takes_no_room_of_other_preferences)
{
    Fill("one");
    ASSERT_NE(Save("one", "more"), 0);
    EXPECT_EQ(CommonUtilPref::SetBool("one+more+evaluation-helper-data-duration-done", true), 0);
    EXPECT_EQ(CommonUtilPref::SetInt("evaluation-helper-data-duration", 1), 0);
    EXPECT_EQ(CommonUtilPref::SetString("wfs-watch-name-world-clock-update", std::string(300000, 'x')), 0);
}

TEST_F(AnEvaluationEntry, has_its_room_beside_other_preferences)
{
    const std::string much(kMostEvaluation.bytes + 1, 'x');
    ASSERT_EQ(CommonUtilPref::SetString("one+a", much), 0);
    ASSERT_EQ(CommonUtilPref::SetString("evaluation-helper-data-duration", much), 0);
    EXPECT_EQ(Save("one", "a", AllOf("one", "a")), 0);
}

TEST_F(AnEvaluationEntry, is_no_platform_key)
{
    Fill("one");
    EXPECT_TRUE(CommonUtilVConf::SetString(Key("one", "more"), "1"));
}

TEST_F(AnEvaluationEntry, that_is_not_kept_is_one_line_in_the_log)
{
    const Strings lines = harness->Printed("info", [] {
        Save("one", "a");
        Save("one", "b", std::string(20000, 'x'));
    });
    EXPECT_THAT(lines, ElementsAre(testing::MatchesRegex(
                           "W/platform\\([0-9]+\\): evaluation entry of \\[one\\] refused: more than 16384 "
                           "bytes of one application")));
}

}  // namespace
}  // namespace Contract
