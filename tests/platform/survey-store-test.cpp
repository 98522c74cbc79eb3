// What only the real store has: its limits, durability across processes, damage, modes.

#include "survey-store-sqlite.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <numeric>

#include "private-bus.h"

namespace {

using Platform::SurveyLimits;
using Platform::SurveyRecord;
using Platform::SurveyStore;
using testing::AllOf;
using testing::ElementsAre;
using testing::Gt;
using testing::IsEmpty;
using testing::SizeIs;

SurveyRecord Record(const std::string& value, int64_t time = 1000)
{
    return {0, time, false, "app", "F", value, ""};
}

std::vector<std::string> ValuesOf(const std::vector<SurveyRecord>& records)
{
    std::vector<std::string> values;
    values.reserve(records.size());
    for (const SurveyRecord& record : records) values.push_back(record.value);
    return values;
}

class ASurveyStore : public testing::Test {
protected:
    std::string Path() const { return folder.Path() + "/survey.db"; }
    std::vector<std::string> Kept() const { return ValuesOf(SurveyStore(Path()).List()); }

    TestSupport::TemporaryFolder folder;
};

TEST_F(ASurveyStore, keeps_records_whole_for_the_next_process)
{
    SurveyStore(Path()).Add({0, 1234567890123, true, "app", "F", std::string("a\0b", 3), "more"});
    const auto records = SurveyStore(Path()).List();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].time, 1234567890123);
    EXPECT_TRUE(records[0].isFeature);
    EXPECT_EQ(records[0].application, "app");
    EXPECT_EQ(records[0].feature, "F");
    EXPECT_EQ(records[0].value, std::string("a\0b", 3));
    EXPECT_EQ(records[0].extra, "more");
}

TEST_F(ASurveyStore, gives_those_behind_an_id)
{
    SurveyStore store(Path());
    store.Add(Record("a"));
    const int64_t last = store.List().back().id;
    EXPECT_THAT(store.List(last), IsEmpty());
    store.Add(Record("b"));
    store.Add(Record("c"));
    EXPECT_THAT(ValuesOf(store.List(last)), ElementsAre("b", "c"));
}

TEST_F(ASurveyStore, drops_the_oldest_over_its_number)
{
    SurveyStore store(Path(), {.mostRecords = 3});
    for (const char* value : {"a", "b", "c", "d", "e"}) EXPECT_EQ(store.Add(Record(value)), 0);
    EXPECT_THAT(Kept(), ElementsAre("c", "d", "e"));
}

TEST_F(ASurveyStore, drops_those_over_its_age_when_one_comes)
{
    SurveyStore store(Path(), {.longestAge = 100});
    store.Add(Record("a", 1000));
    store.Add(Record("b", 1001));
    store.Add(Record("c", 1100));
    EXPECT_THAT(Kept(), ElementsAre("a", "b", "c"));
    store.Add(Record("d", 1101));
    EXPECT_THAT(Kept(), ElementsAre("b", "c", "d"));
    store.Add(Record("e", 5000));
    EXPECT_THAT(Kept(), ElementsAre("e"));
}

TEST_F(ASurveyStore, keeps_its_records_when_the_clock_is_put_back)
{
    SurveyStore store(Path(), {.longestAge = 100});
    store.Add(Record("a", 1000));
    store.Add(Record("b", 10));
    EXPECT_THAT(Kept(), ElementsAre("a", "b"));
}

TEST_F(ASurveyStore, keeps_a_record_that_is_ahead_of_those_behind_it_until_it_has_too_many)
{
    SurveyStore store(Path(), {.mostRecords = 3, .longestAge = 100});
    store.Add(Record("ahead", 900'000));
    store.Add(Record("b", 1000));
    store.Add(Record("c", 1200));
    EXPECT_THAT(Kept(), ElementsAre("ahead", "b", "c"));
    store.Add(Record("d", 1201));
    EXPECT_THAT(Kept(), ElementsAre("c", "d"));
}

TEST_F(ASurveyStore, holds_as_many_records_for_as_long_as_is_documented)
{
    const SurveyLimits limits;
    EXPECT_EQ(limits.mostRecords, 2000);
    EXPECT_EQ(limits.longestAge, int64_t{90} * 86'400'000);
    EXPECT_EQ(limits.mostPages * 4096, 2 << 20);
}

TEST_F(ASurveyStore, makes_room_in_a_full_file_by_the_older_half)
{
    SurveyStore store(Path(), {.mostPages = 32});
    for (int i = 0; i < 500; ++i) ASSERT_EQ(store.Add(Record(std::to_string(i) + std::string(1000, 'x'))), 0);
    const auto kept = store.List();
    EXPECT_THAT(kept, SizeIs(AllOf(Gt(30U), testing::Lt(128U))));
    EXPECT_THAT(kept.back().value, testing::StartsWith("499x"));
    EXPECT_LE(std::filesystem::file_size(Path()), 32U * 4096);
}

TEST_F(ASurveyStore, stays_below_its_size_beside_it_too)
{
    SurveyStore store(Path());
    for (int i = 0; i < 3000; ++i) ASSERT_EQ(store.Add(Record(std::string(4000, 'x'))), 0);
    EXPECT_LE(std::filesystem::file_size(Path()), 2U << 20);
    EXPECT_LE(std::filesystem::file_size(Path() + "-wal"), 2U << 20);
}

TEST_F(ASurveyStore, cuts_long_texts_between_characters)
{
    SurveyStore store(Path());
    store.Add({0, 1, false, std::string(5000, 'a'), std::string(5000, 'f'), std::string(4095, 'v') + "시",
               std::string(8 << 20, 'e')});
    const auto records = store.List();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].application, std::string(4096, 'a'));
    EXPECT_EQ(records[0].feature, std::string(4096, 'f'));
    EXPECT_EQ(records[0].value, std::string(4095, 'v'));
    EXPECT_EQ(records[0].extra, std::string(4096, 'e'));
}

TEST_F(ASurveyStore, is_for_its_owner_alone)
{
    chmod(folder.Path().c_str(), 0770);
    const mode_t before = umask(0);
    SurveyStore(Path()).Add(Record("a"));
    umask(before);
    struct stat info {};
    ASSERT_EQ(stat(Path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600U);
}

TEST_F(ASurveyStore, sets_a_damaged_file_aside_and_begins_anew)
{
    std::ofstream(Path()) << std::string(8192, 'x');
    EXPECT_EQ(SurveyStore(Path()).Add(Record("a")), 0);
    EXPECT_THAT(Kept(), ElementsAre("a"));
    int aside = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
        aside += entry.path().string().find(".damaged-") != std::string::npos;
    EXPECT_EQ(aside, 1);
}

TEST_F(ASurveyStore, tells_that_nothing_can_be_kept)
{
    SurveyStore store("/proc/survey.db");
    EXPECT_NE(store.Add(Record("a")), 0);
    EXPECT_THAT(store.List(), IsEmpty());
}

}  // namespace
