// Platform keys and preferences.

#include "common-util-keys.h"
#include "common-util-pref.h"
#include "contract-test.h"

namespace Contract {
namespace {

constexpr char kKey[] = "db/wms/clocks_set_idle";
constexpr char kOtherKey[] = "db/retailmode/enabled";

using testing::Pair;

class AKey : public ContractTest {
protected:
    // What a watcher is told.
    struct Change {
        std::string name;
        int number;
        int on;
        bool operator==(const Change&) const = default;
    };
    std::function<void(keynode_t*)> Into(std::vector<Change>& list)
    {
        return [&list](keynode_t* node) {
            list.push_back(
                {vconf_keynode_get_name(node), vconf_keynode_get_int(node), vconf_keynode_get_bool(node)});
        };
    }
    bool RunUntilTold(std::size_t count)
    {
        return harness->RunUntil([&] { return told.size() >= count; });
    }
    std::vector<Change> told;
};

TEST_F(AKey, that_is_missing_cannot_be_read)
{
    EXPECT_THAT(CommonUtilVConf::GetBool(kKey), Pair(false, false));
    EXPECT_THAT(CommonUtilVConf::GetInt(kKey), Pair(false, 0));
    EXPECT_THAT(CommonUtilVConf::GetString(kKey), Pair(false, ""));
}

TEST_F(AKey, keeps_its_value)
{
    EXPECT_TRUE(CommonUtilVConf::SetBool("b", true));
    EXPECT_TRUE(CommonUtilVConf::SetInt("i", -2147483647));
    EXPECT_TRUE(CommonUtilVConf::SetString("s", "com.corvane.watchface"));
    EXPECT_TRUE(CommonUtilVConf::SetString("e", ""));
    EXPECT_TRUE(CommonUtilVConf::SetString("u", "시계"));
    EXPECT_THAT(CommonUtilVConf::GetBool("b"), Pair(true, true));
    EXPECT_THAT(CommonUtilVConf::GetInt("i"), Pair(true, -2147483647));
    EXPECT_THAT(CommonUtilVConf::GetString("s"), Pair(true, "com.corvane.watchface"));
    EXPECT_THAT(CommonUtilVConf::GetString("e"), Pair(true, ""));
    EXPECT_THAT(CommonUtilVConf::GetString("u"), Pair(true, "시계"));
}

TEST_F(AKey, cannot_be_read_as_another_type)
{
    CommonUtilVConf::SetString("s", "1");
    CommonUtilVConf::SetInt("i", 1);
    CommonUtilVConf::SetBool("b", true);
    EXPECT_THAT(CommonUtilVConf::GetInt("s"), Pair(false, 0));
    EXPECT_THAT(CommonUtilVConf::GetBool("s"), Pair(false, false));
    EXPECT_THAT(CommonUtilVConf::GetString("i"), Pair(false, ""));
    EXPECT_THAT(CommonUtilVConf::GetBool("i"), Pair(false, false));
    EXPECT_THAT(CommonUtilVConf::GetInt("b"), Pair(false, 0));
    EXPECT_THAT(CommonUtilVConf::GetString("b"), Pair(false, ""));
}

TEST_F(AKey, takes_the_type_of_what_is_written)
{
    CommonUtilVConf::SetString(kKey, "1");
    CommonUtilVConf::SetInt(kKey, 2);
    EXPECT_THAT(CommonUtilVConf::GetInt(kKey), Pair(true, 2));
    EXPECT_THAT(CommonUtilVConf::GetString(kKey), Pair(false, ""));
}

TEST_F(AKey, written_here_is_announced_here_on_the_main_loop)
{
    const CommonUtilVConfCallback watcher(kKey, Into(told));
    harness->WaitTurn();
    CommonUtilVConf::SetInt(kKey, 3);
    EXPECT_THAT(told, testing::SizeIs(0));
    ASSERT_TRUE(RunUntilTold(1));
    EXPECT_EQ(told[0], (Change{kKey, 3, 0}));
}

TEST_F(AKey, is_announced_for_each_write_also_of_an_unchanged_value)
{
    const CommonUtilVConfCallback watcher(kKey, Into(told));
    harness->WaitTurn();
    CommonUtilVConf::SetBool(kKey, true);
    ASSERT_TRUE(RunUntilTold(1));
    CommonUtilVConf::SetBool(kKey, true);
    ASSERT_TRUE(RunUntilTold(2));
    EXPECT_EQ(told[1], (Change{kKey, 0, 1}));
}

TEST_F(AKey, has_its_new_value_when_it_is_announced)
{
    std::pair<bool, std::string> seen;
    const CommonUtilVConfCallback watcher(kKey, [&](keynode_t*) { seen = CommonUtilVConf::GetString(kKey); });
    harness->WaitTurn();
    CommonUtilVConf::SetString(kKey, "new");
    ASSERT_TRUE(harness->RunUntil([&] { return seen.first; }));
    EXPECT_EQ(seen.second, "new");
}

TEST_F(AKey, written_by_another_application_is_announced)
{
    const CommonUtilVConfCallback watcher(kKey, Into(told));
    harness->WaitTurn();
    const auto home = harness->AsPeer(kHome);
    home->SetKey(kKey, 7);
    ASSERT_TRUE(RunUntilTold(1));
    EXPECT_EQ(told[0], (Change{kKey, 7, 0}));
    EXPECT_THAT(CommonUtilVConf::GetInt(kKey), Pair(true, 7));
    home->SetKey(kKey, 7);
    EXPECT_TRUE(RunUntilTold(2));
}

TEST_F(AKey, may_hold_quotes_backslashes_and_commas)
{
    for (const std::string key : {"db/it's", "db/a\\b", "db/a,b='c", "db/\xC3\xA9"}) {
        told.clear();
        const CommonUtilVConfCallback watcher(key, Into(told));
        harness->WaitTurn();
        CommonUtilVConf::SetInt(kOtherKey, 1);
        CommonUtilVConf::SetInt(key, 2);
        ASSERT_TRUE(RunUntilTold(1)) << key;
        EXPECT_THAT(told, testing::ElementsAre(Change{key, 2, 0}));
    }
}

TEST_F(AKey, is_announced_to_its_own_watchers_only)
{
    const CommonUtilVConfCallback watcher(kKey, Into(told));
    const CommonUtilVConfCallback similar(std::string(kOtherKey) + "/more", Into(told));
    harness->WaitTurn();
    CommonUtilVConf::SetInt(kOtherKey, 1);
    CommonUtilVConf::SetInt(kKey, 2);
    ASSERT_TRUE(RunUntilTold(1));
    harness->WaitTurn();
    EXPECT_THAT(told, testing::ElementsAre(Change{kKey, 2, 0}));
}

TEST_F(AKey, is_announced_to_every_watcher)
{
    std::vector<Change> second;
    const CommonUtilVConfCallback one(kKey, Into(told));
    const CommonUtilVConfCallback two(kKey, Into(second));
    harness->WaitTurn();
    CommonUtilVConf::SetInt(kKey, 1);
    EXPECT_TRUE(harness->RunUntil([&] { return told.size() == 1 && second.size() == 1; }));
}

TEST_F(AKey, is_not_announced_to_a_watcher_that_has_gone)
{
    std::vector<Change> gone;
    auto watcher = std::make_unique<CommonUtilVConfCallback>(kKey, Into(gone));
    const CommonUtilVConfCallback other(kKey, Into(told));
    harness->WaitTurn();
    CommonUtilVConf::SetInt(kKey, 1);
    watcher.reset();
    ASSERT_TRUE(RunUntilTold(1));
    EXPECT_THAT(gone, testing::SizeIs(0));
}

TEST_F(AKey, watcher_may_be_destroyed_inside_its_handler)
{
    std::unique_ptr<CommonUtilVConfCallback> watcher;
    watcher =
        std::make_unique<CommonUtilVConfCallback>(kKey, [&, keep = std::string(100, 'x')](keynode_t* node) {
            watcher.reset();
            told.push_back({vconf_keynode_get_name(node), static_cast<int>(keep.size()), 0});
        });
    harness->WaitTurn();
    CommonUtilVConf::SetInt(kKey, 1);
    ASSERT_TRUE(RunUntilTold(1));
    EXPECT_EQ(told[0], (Change{kKey, 100, 0}));
}

TEST_F(AKey, of_another_type_is_announced_as_zero)
{
    const CommonUtilVConfCallback watcher(kKey, Into(told));
    harness->WaitTurn();
    CommonUtilVConf::SetString(kKey, "1");
    ASSERT_TRUE(RunUntilTold(1));
    EXPECT_EQ(told[0], (Change{kKey, 0, 0}));
}

class APreference : public ContractTest {};

TEST_F(APreference, that_is_missing_answers_a_code_and_nothing)
{
    EXPECT_THAT(CommonUtilPref::GetBool("p"), Pair(testing::Ne(0), false));
    EXPECT_THAT(CommonUtilPref::GetInt("p"), Pair(testing::Ne(0), 0));
    EXPECT_THAT(CommonUtilPref::GetString("p"), Pair(testing::Ne(0), ""));
}

TEST_F(APreference, keeps_its_value)
{
    EXPECT_EQ(CommonUtilPref::SetBool("b", true), 0);
    EXPECT_EQ(CommonUtilPref::SetInt("i", 42), 0);
    EXPECT_EQ(CommonUtilPref::SetString("s", "text"), 0);
    EXPECT_EQ(CommonUtilPref::SetString("e", ""), 0);
    EXPECT_THAT(CommonUtilPref::GetBool("b"), Pair(0, true));
    EXPECT_THAT(CommonUtilPref::GetInt("i"), Pair(0, 42));
    EXPECT_THAT(CommonUtilPref::GetString("s"), Pair(0, "text"));
    EXPECT_THAT(CommonUtilPref::GetString("e"), Pair(0, ""));
    EXPECT_EQ(CommonUtilPref::SetBool("b", false), 0);
    EXPECT_THAT(CommonUtilPref::GetBool("b"), Pair(0, false));
}

TEST_F(APreference, cannot_be_read_as_another_type)
{
    CommonUtilPref::SetString("s", "1");
    CommonUtilPref::SetInt("i", 1);
    CommonUtilPref::SetBool("b", true);
    EXPECT_THAT(CommonUtilPref::GetInt("s"), Pair(testing::Ne(0), 0));
    EXPECT_THAT(CommonUtilPref::GetBool("i"), Pair(testing::Ne(0), false));
    EXPECT_THAT(CommonUtilPref::GetInt("b"), Pair(testing::Ne(0), 0));
    EXPECT_THAT(CommonUtilPref::GetString("b"), Pair(testing::Ne(0), ""));
}

TEST_F(APreference, is_no_platform_key)
{
    CommonUtilPref::SetInt("n", 1);
    EXPECT_THAT(CommonUtilVConf::GetInt("n"), Pair(false, 0));
    CommonUtilVConf::SetInt("n", 2);
    EXPECT_THAT(CommonUtilPref::GetInt("n"), Pair(0, 1));
}

}  // namespace
}  // namespace Contract
