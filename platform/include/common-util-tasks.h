// Work on the main loop: a job (once, on the next turn), an idler (when nothing else is pending), a timer.
//
// All three are made, started and destroyed on the main loop's thread. Destroying one cancels it; each may
// be destroyed inside its own task.

#pragma once

#include <functional>
#include <memory>

// What an idler's or a timer's task answers: whether to run again.
enum CommonUtilTaskReturn { kCommonUtilTaskEnd = 0, kCommonUtilTaskAgain = 1 };

class CommonUtilJob {
public:
    explicit CommonUtilJob(std::function<void()> task);
    ~CommonUtilJob();
    CommonUtilJob(const CommonUtilJob&) = delete;
    CommonUtilJob& operator=(const CommonUtilJob&) = delete;

    // One run on the loop's next turn; starts before that run coalesce.
    void Start();

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

class CommonUtilIdler {
public:
    explicit CommonUtilIdler(std::function<CommonUtilTaskReturn()> task);
    ~CommonUtilIdler();
    CommonUtilIdler(const CommonUtilIdler&) = delete;
    CommonUtilIdler& operator=(const CommonUtilIdler&) = delete;

    // Runs once nothing else is pending, and again while the task answers kCommonUtilTaskAgain.
    void Start();

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

class CommonUtilTimer {
public:
    // `interval` in seconds on the monotonic clock; 0 means the loop's next turn. Not started here.
    CommonUtilTimer(double interval, std::function<CommonUtilTaskReturn()> task);
    ~CommonUtilTimer();
    CommonUtilTimer(const CommonUtilTimer&) = delete;
    CommonUtilTimer& operator=(const CommonUtilTimer&) = delete;

    void SetInterval(double interval);  // from the next start or run on
    void Start();                       // anew when it runs already
    void Stop();                        // harmless when it does not run

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};
