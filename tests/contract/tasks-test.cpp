// Jobs, idlers and timers.

#include "common-util-tasks.h"
#include "contract-test.h"
#include "files.h"

namespace Contract {
namespace {

// A timer may be late, never early; clocks are rounded.
constexpr double kRounding = 0.001;

class AJob : public ContractTest {
protected:
    int runs = 0;
};
class AnIdler : public ContractTest {
protected:
    int runs = 0;
};
class ATimer : public ContractTest {
protected:
    // Lets the loop run for at least that long.
    void RunFor(double seconds)
    {
        bool over = false;
        CommonUtilTimer timer(seconds, [&] {
            over = true;
            return kCommonUtilTaskEnd;
        });
        timer.Start();
        ASSERT_TRUE(harness->RunUntil([&] { return over; }));
    }
    int runs = 0;
};

TEST_F(AJob, does_not_run_inside_start)
{
    CommonUtilJob job([&] { ++runs; });
    job.Start();
    EXPECT_EQ(runs, 0);
}

TEST_F(AJob, runs_once_on_the_next_turn)
{
    CommonUtilJob job([&] { ++runs; });
    job.Start();
    harness->WaitTurn();
    EXPECT_EQ(runs, 1);
    harness->WaitTurn();
    EXPECT_EQ(runs, 1);
}

TEST_F(AJob, does_not_run_unless_it_is_started)
{
    CommonUtilJob job([&] { ++runs; });
    harness->WaitTurn();
    EXPECT_EQ(runs, 0);
}

TEST_F(AJob, takes_starts_before_its_run_as_one)
{
    CommonUtilJob job([&] { ++runs; });
    job.Start();
    job.Start();
    job.Start();
    harness->WaitTurn();
    EXPECT_EQ(runs, 1);
}

TEST_F(AJob, runs_again_when_started_again)
{
    CommonUtilJob job([&] { ++runs; });
    job.Start();
    harness->WaitTurn();
    job.Start();
    harness->WaitTurn();
    EXPECT_EQ(runs, 2);
}

TEST_F(AJob, started_inside_its_own_task_runs_after_that_task)
{
    int inside = 0;
    CommonUtilJob job([&] {
        if (++runs == 1) job.Start();
        inside = runs;
    });
    job.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return inside == 2; }));
    harness->WaitTurn();
    EXPECT_EQ(runs, 2);
}

TEST_F(AJob, never_runs_once_it_is_destroyed)
{
    auto job = std::make_unique<CommonUtilJob>([&] { ++runs; });
    job->Start();
    job.reset();
    harness->WaitTurn();
    EXPECT_EQ(runs, 0);
}

TEST_F(AJob, may_be_destroyed_inside_its_own_task)
{
    std::unique_ptr<CommonUtilJob> job;
    // What the task captured is still there after the object has gone.
    job = std::make_unique<CommonUtilJob>([&, keep = std::string(100, 'x')] {
        job.reset();
        runs += keep.size() == 100;
    });
    job->Start();
    harness->WaitTurn();
    EXPECT_EQ(runs, 1);
}

TEST_F(AJob, may_destroy_another_that_is_pending)
{
    std::unique_ptr<CommonUtilJob> one, other;
    one = std::make_unique<CommonUtilJob>([&] {
        ++runs;
        other.reset();
    });
    other = std::make_unique<CommonUtilJob>([&] {
        ++runs;
        one.reset();
    });
    one->Start();
    other->Start();
    harness->WaitTurn();
    EXPECT_EQ(runs, 1);
}

TEST_F(AnIdler, does_not_run_inside_start)
{
    CommonUtilIdler idler([&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    idler.Start();
    EXPECT_EQ(runs, 0);
}

TEST_F(AnIdler, runs_when_nothing_else_is_pending)
{
    Strings order;
    CommonUtilJob second([&] { order.push_back("second job"); });
    CommonUtilJob first([&] {
        order.push_back("first job");
        second.Start();
    });
    CommonUtilIdler idler([&] {
        order.push_back("idler");
        return kCommonUtilTaskEnd;
    });
    idler.Start();
    first.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return order.size() == 3; }));
    EXPECT_THAT(order, testing::ElementsAre("first job", "second job", "idler"));
}

TEST_F(AnIdler, that_answers_end_runs_again_only_when_started_again)
{
    CommonUtilIdler idler([&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    idler.Start();
    harness->WaitTurn();
    harness->WaitTurn();
    EXPECT_EQ(runs, 1);
    idler.Start();
    harness->WaitTurn();
    EXPECT_EQ(runs, 2);
}

TEST_F(AnIdler, runs_until_it_answers_end)
{
    CommonUtilIdler idler([&] { return ++runs < 3 ? kCommonUtilTaskAgain : kCommonUtilTaskEnd; });
    idler.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 3; }));
    harness->WaitTurn();
    EXPECT_EQ(runs, 3);
}

TEST_F(AnIdler, that_answers_again_lets_jobs_run_between)
{
    int runsBefore = 0;
    CommonUtilJob job([&] { runsBefore = runs; });
    CommonUtilIdler idler([&] {
        if (++runs == 1) job.Start();
        return runs < 5 ? kCommonUtilTaskAgain : kCommonUtilTaskEnd;
    });
    idler.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 5; }));
    EXPECT_EQ(runsBefore, 1);
}

TEST_F(AnIdler, never_runs_once_it_is_destroyed)
{
    auto idler = std::make_unique<CommonUtilIdler>([&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    idler->Start();
    idler.reset();
    harness->WaitTurn();
    EXPECT_EQ(runs, 0);
}

TEST_F(AnIdler, may_be_destroyed_inside_its_own_task)
{
    std::unique_ptr<CommonUtilIdler> idler;
    idler = std::make_unique<CommonUtilIdler>([&, keep = std::string(100, 'x')] {
        idler.reset();
        runs += keep.size() == 100;
        return kCommonUtilTaskAgain;
    });
    idler->Start();
    harness->WaitTurn();
    harness->WaitTurn();
    EXPECT_EQ(runs, 1);
}

TEST_F(ATimer, is_not_started_at_its_creation)
{
    CommonUtilTimer timer(0.01, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    RunFor(0.05);
    EXPECT_EQ(runs, 0);
}

TEST_F(ATimer, runs_after_its_interval_in_seconds)
{
    CommonUtilTimer timer(0.05, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    const double start = harness->Now();
    timer.Start();
    EXPECT_EQ(runs, 0);
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 1; }));
    EXPECT_GE(harness->Now() - start, 0.05 - kRounding);
    EXPECT_LT(harness->Now() - start, 5);
}

TEST_F(ATimer, with_interval_zero_runs_on_the_next_turn)
{
    CommonUtilTimer timer(0, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    timer.Start();
    EXPECT_EQ(runs, 0);
    const double start = harness->Now();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 1; }));
    EXPECT_LT(harness->Now() - start, 1);
}

TEST_F(ATimer, that_answers_again_runs_after_each_interval)
{
    CommonUtilTimer timer(0.02, [&] { return ++runs < 3 ? kCommonUtilTaskAgain : kCommonUtilTaskEnd; });
    const double start = harness->Now();
    timer.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 3; }));
    EXPECT_GE(harness->Now() - start, 0.06 - kRounding);
}

TEST_F(ATimer, that_was_due_more_than_once_in_a_pause_runs_once_and_goes_on_from_then)
{
    std::vector<double> times;
    CommonUtilTimer timer(0.02, [&] {
        times.push_back(harness->Now());
        return kCommonUtilTaskAgain;
    });
    timer.Start();
    usleep(60'000);
    ASSERT_TRUE(harness->RunUntil([&] { return times.size() == 2; }));
    EXPECT_GE(times[1] - times[0], 0.02 - kRounding);
}

TEST_F(ATimer, that_answers_end_does_not_run_again)
{
    CommonUtilTimer timer(0.01, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    timer.Start();
    RunFor(0.05);
    EXPECT_EQ(runs, 1);
}

TEST_F(ATimer, does_not_run_once_it_is_stopped)
{
    CommonUtilTimer timer(0.01, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    timer.Start();
    timer.Stop();
    RunFor(0.05);
    EXPECT_EQ(runs, 0);
}

TEST_F(ATimer, that_does_not_run_may_be_stopped)
{
    CommonUtilTimer timer(0.01, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    timer.Stop();
    timer.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 1; }));
    timer.Stop();
    timer.Stop();
    EXPECT_EQ(runs, 1);
}

TEST_F(ATimer, started_anew_counts_from_then)
{
    double ran = 0;
    CommonUtilTimer timer(0.06, [&] {
        ++runs;
        ran = harness->Now();
        return kCommonUtilTaskEnd;
    });
    timer.Start();
    RunFor(0.03);
    const double restarted = harness->Now();
    timer.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs > 0; }));
    EXPECT_GE(ran - restarted, 0.06 - kRounding);
    RunFor(0.05);
    EXPECT_EQ(runs, 1);
}

TEST_F(ATimer, takes_a_new_interval_at_its_next_start)
{
    CommonUtilTimer timer(1000, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    timer.Start();
    timer.Stop();
    timer.SetInterval(0.02);
    const double start = harness->Now();
    timer.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 1; }));
    EXPECT_GE(harness->Now() - start, 0.02 - kRounding);
}

TEST_F(ATimer, takes_a_new_interval_at_its_next_run)
{
    CommonUtilTimer timer(0, [&] {
        timer.SetInterval(0.05);
        return ++runs < 2 ? kCommonUtilTaskAgain : kCommonUtilTaskEnd;
    });
    const double start = harness->Now();
    timer.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 2; }));
    EXPECT_GE(harness->Now() - start, 0.05 - kRounding);
}

TEST_F(ATimer, started_inside_its_own_task_runs_on_although_the_task_answers_end)
{
    CommonUtilTimer timer(0.01, [&] {
        if (++runs == 1) timer.Start();
        return kCommonUtilTaskEnd;
    });
    timer.Start();
    ASSERT_TRUE(harness->RunUntil([&] { return runs == 2; }));
    RunFor(0.03);
    EXPECT_EQ(runs, 2);
}

TEST_F(ATimer, never_runs_once_it_is_destroyed)
{
    auto timer = std::make_unique<CommonUtilTimer>(0.01, [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    });
    timer->Start();
    timer.reset();
    RunFor(0.03);
    EXPECT_EQ(runs, 0);
}

TEST_F(ATimer, may_be_destroyed_inside_its_own_task)
{
    std::unique_ptr<CommonUtilTimer> timer;
    timer = std::make_unique<CommonUtilTimer>(0.01, [&, keep = std::string(100, 'x')] {
        timer.reset();
        runs += keep.size() == 100;
        return kCommonUtilTaskAgain;
    });
    timer->Start();
    RunFor(0.05);
    EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace Contract
