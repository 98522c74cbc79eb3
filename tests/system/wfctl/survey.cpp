// Usage records of a running watch.

#include <signal.h>

#include <filesystem>
#include <fstream>

#include "a-watch.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

class AWatchThatIsSurveyed : public AWatch {
protected:
    // "FEATURE=VALUE" of each record.
    static std::vector<std::string> PairsOf(const Json& records)
    {
        std::vector<std::string> pairs;
        for (const Json& record : records)
            pairs.push_back(record["feature"].get<std::string>() + "=" + record["value"].get<std::string>());
        return pairs;
    }
    std::string Store() const { return mRoot + "/apps/" + kService + "/survey.db"; }
    std::vector<std::string> Listed() const { return PairsOf(Run({"survey", "list", "--json"}).AsJson()); }
};

}  // namespace

TEST_F(AWatchThatIsSurveyed, has_no_records_at_first_and_no_store)
{
    const Result listed = Run({"survey", "list"});
    EXPECT_EQ(listed.status, 0) << listed.err;
    EXPECT_EQ(listed.out, "");
    EXPECT_EQ(Run({"survey", "list", "--json"}).out, "[]\n");
    EXPECT_FALSE(std::filesystem::exists(Store()));
}

TEST_F(AWatchThatIsSurveyed, records_its_face_and_what_is_chosen_on_it)
{
    ASSERT_EQ(Run({"set", "c1"}).status, 0);
    const Result queried = Run({"survey", "query", "--json"});
    ASSERT_EQ(queried.status, 0) << queried.err;
    const auto records = queried.AsJson();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0]["feature"], "MC01");
    EXPECT_EQ(records[0]["application"], kService);
    EXPECT_EQ(records[0]["kind"], "status");
    EXPECT_EQ(records[0]["extra"], "");
    EXPECT_THAT(records[0]["value"].get<std::string>(),
                AllOf(HasSubstr("dial=index "), HasSubstr(" left=battery ")));
    EXPECT_THAT(records[0]["time"].get<std::string>(), MatchesRegex("20..-..-..T..:..:..\\....Z"));
    EXPECT_EQ(PairsOf(records)[1], "ST00=" + std::string(kClassic));
    EXPECT_EQ(Run({"survey", "list", "--json"}).AsJson(), records);
}

TEST_F(AWatchThatIsSurveyed, records_what_an_edit_has_changed_behind_what_was_there)
{
    ASSERT_EQ(Run({"set", "c1"}).status, 0);
    ASSERT_EQ(Run({"survey", "query"}).status, 0);
    ASSERT_EQ(Run({"edit", "c1", "--pick", "dial=roman", "--place", "right=water"}).status, 0);
    const Result queried = Run({"survey", "query"});
    EXPECT_THAT(queried.out, AllOf(HasSubstr("  MC01  dial=roman "), HasSubstr(" right=water ")));
    EXPECT_EQ(Listed().size(), 4U);
}

TEST_F(AWatchThatIsSurveyed, names_another_clock_application)
{
    ASSERT_EQ(Run({"key", "set", "db/wms/clocks_set_idle", "com.example.clock"}).status, 0);
    EXPECT_EQ(PairsOf(Run({"survey", "query", "--json"}).AsJson()),
              std::vector<std::string>{"ST00=com.example.clock"});
}

TEST_F(AWatchThatIsSurveyed, keeps_its_records_when_the_service_is_killed)
{
    ASSERT_EQ(Run({"survey", "query"}).status, 0);
    const Json service = Run({"status", "--json"}).AsJson();
    const pid_t pid = service["service"]["pid"];
    kill(pid, SIGKILL);
    ASSERT_TRUE(Eventually([&] { return !IsRunning(pid); }));
    EXPECT_EQ(Listed().size(), 1U);
    ASSERT_EQ(Run({"survey", "query"}).status, 0);
    EXPECT_EQ(Listed().size(), 2U);
}

TEST_F(AWatchThatIsSurveyed, begins_anew_where_its_records_are_damaged)
{
    std::filesystem::create_directories(std::filesystem::path(Store()).parent_path());
    std::ofstream(Store()) << std::string(8192, 'x');
    EXPECT_EQ(Run({"survey", "query"}).status, 0);
    EXPECT_EQ(Listed().size(), 1U);
}
