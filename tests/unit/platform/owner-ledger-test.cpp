#include "owner-ledger.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using Platform::OwnerLedger;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kName[] = "com.example.peer";

// The bus side: what the ledger asked of it.
class RecordingWatcher final : public OwnerLedger::Watcher {
public:
    bool Watch(const std::string& name, uint64_t generation) override
    {
        watched.push_back(name);
        lastGeneration = generation;
        return canAsk;
    }
    void Forget(const std::string& name) override { forgotten.push_back(name); }

    std::vector<std::string> watched;
    std::vector<std::string> forgotten;
    uint64_t lastGeneration = 0;
    bool canAsk = true;
};

class AnOwnerLedger : public testing::Test {
protected:
    void Ask(const std::string& name = kName)
    {
        asked = ledger.Ask(name, [this](const std::string& owner) { owners.push_back(owner); });
    }

    RecordingWatcher watcher;
    OwnerLedger ledger{watcher, 3, 4};
    std::vector<std::string> owners;
    bool asked = false;
};

TEST_F(AnOwnerLedger, watches_a_name_once_however_often_it_is_asked_about)
{
    Ask();
    Ask();
    EXPECT_THAT(watcher.watched, ElementsAre(kName));
    EXPECT_THAT(owners, IsEmpty());
}

TEST_F(AnOwnerLedger, answers_all_who_waited_when_the_bus_answers)
{
    Ask();
    Ask();
    ledger.Answered(kName, watcher.lastGeneration, ":1.7");
    EXPECT_THAT(owners, ElementsAre(":1.7", ":1.7"));
}

TEST_F(AnOwnerLedger, answers_at_once_when_the_owner_is_known)
{
    Ask();
    ledger.Answered(kName, watcher.lastGeneration, ":1.7");
    owners.clear();
    Ask();
    EXPECT_THAT(owners, ElementsAre(":1.7"));
}

TEST_F(AnOwnerLedger, knows_that_a_name_has_no_owner)
{
    Ask();
    ledger.Answered(kName, watcher.lastGeneration, "");
    EXPECT_THAT(owners, ElementsAre(""));
    EXPECT_EQ(ledger.Known(kName), "");
}

TEST_F(AnOwnerLedger, takes_the_old_owner_of_a_change_that_comes_before_the_answer)
{
    Ask();
    ledger.Changed(kName, ":1.7", ":1.9");
    EXPECT_THAT(owners, ElementsAre(":1.7"));
}

TEST_F(AnOwnerLedger, knows_a_name_by_its_answer_and_not_by_a_change_that_comes_before)
{
    Ask();
    ledger.Changed(kName, ":1.7", ":1.9");
    EXPECT_EQ(ledger.Known(kName), std::nullopt);
    Ask();
    ledger.Answered(kName, watcher.lastGeneration, ":1.11");  // a change between two watches was not seen
    EXPECT_THAT(owners, ElementsAre(":1.7", ":1.11"));
    EXPECT_EQ(ledger.Known(kName), ":1.11");
}

TEST_F(AnOwnerLedger, follows_every_later_change)
{
    Ask();
    ledger.Answered(kName, watcher.lastGeneration, ":1.7");
    ledger.Changed(kName, ":1.7", "");
    EXPECT_EQ(ledger.Known(kName), "");
    ledger.Changed(kName, "", ":1.8");
    EXPECT_EQ(ledger.Known(kName), ":1.8");
}

TEST_F(AnOwnerLedger, ignores_changes_of_names_that_nobody_asked_about)
{
    ledger.Changed("com.example.other", "", ":1.8");
    EXPECT_EQ(ledger.NamesWatched(), 0u);
}

TEST_F(AnOwnerLedger, refuses_who_waited_when_the_bus_cannot_answer_and_asks_anew_next_time)
{
    Ask();
    ledger.Failed(kName, watcher.lastGeneration);
    EXPECT_THAT(owners, ElementsAre(""));
    EXPECT_EQ(ledger.Known(kName), std::nullopt);
    Ask();
    EXPECT_THAT(watcher.watched, ElementsAre(kName, kName));
}

TEST_F(AnOwnerLedger, ignores_the_answer_to_a_question_of_an_earlier_watch)
{
    Ask();
    const uint64_t before = watcher.lastGeneration;
    ledger.Failed(kName, before);
    owners.clear();
    Ask();
    ledger.Answered(kName, before, ":1.666");
    EXPECT_THAT(owners, IsEmpty());
}

TEST_F(AnOwnerLedger, gives_up_the_name_asked_longest_ago_for_a_new_one)
{
    for (const char* name : {"a.a", "b.b", "c.c"}) {
        Ask(name);
        ledger.Answered(name, watcher.lastGeneration, ":1.1");
    }
    Ask("a.a");
    Ask("d.d");
    EXPECT_THAT(watcher.forgotten, ElementsAre("b.b"));
    EXPECT_EQ(ledger.NamesWatched(), 3u);
}

TEST_F(AnOwnerLedger, refuses_a_question_when_every_name_is_waited_for)
{
    for (const char* name : {"a.a", "b.b", "c.c"}) Ask(name);
    Ask("d.d");
    EXPECT_FALSE(asked);
    EXPECT_THAT(watcher.forgotten, IsEmpty());
}

TEST_F(AnOwnerLedger, bounds_the_questions_that_wait)
{
    for (int i = 0; i < 4; ++i) Ask();
    EXPECT_TRUE(asked);
    Ask();
    EXPECT_FALSE(asked);
    EXPECT_EQ(ledger.QuestionsWaiting(), 4u);
}

TEST_F(AnOwnerLedger, keeps_nobody_waiting_for_a_question_that_could_not_be_sent)
{
    watcher.canAsk = false;
    Ask();
    EXPECT_FALSE(asked);
    EXPECT_EQ(ledger.NamesWatched(), 0u);
    EXPECT_THAT(watcher.forgotten, ElementsAre(kName));
}

TEST_F(AnOwnerLedger, may_be_asked_again_inside_an_answer)
{
    std::string inner;
    ledger.Ask(kName, [&](const std::string&) {
        ledger.Ask(kName, [&](const std::string& owner) { inner = owner; });
    });
    ledger.Answered(kName, watcher.lastGeneration, ":1.7");
    EXPECT_EQ(inner, ":1.7");
}

}  // namespace
