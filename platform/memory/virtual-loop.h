// The main loop on a clock that is turned by hand.
//
// A turn runs what was pending when it began: posted work first, in order, then the timers that are due, the
// earliest first. What is posted meanwhile belongs to the next turn. A turn that finds nothing pending runs
// each started idler once.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace MemoryPlatform {

class VirtualLoop {
public:
    using Id = uint64_t;  // never 0
    using Task = std::function<void()>;
    using Duration = std::chrono::nanoseconds;

    Id Post(Task task);  // from any thread
    Id AddIdler(Task task);
    Id AddTimer(Duration interval, Task task);
    void Cancel(Id id);  // harmless when it has run
    void Clear();

    bool RunTurn();
    void RunUntilIdle();
    void Advance(Duration by);
    void Sleep(Duration by) { mNow += by; }  // the clock goes on, the loop does not

    Duration Now() const { return mNow; }
    std::optional<Duration> NextTimer() const;  // when, not how long until then

    static Duration FromSeconds(double seconds);
    static double ToSeconds(Duration duration);

private:
    using Due = std::pair<Duration, Id>;

    bool RunPending();
    bool RunIdlers();
    Id LastId() const;
    Task TakePosted(Id last);
    Task TakeTimer(Duration now, Id last);

    mutable std::mutex mMutex;  // guards mNextId and mPosted
    Id mNextId = 1;
    std::map<Id, Task> mPosted;
    std::map<Id, Task> mIdlers;
    std::map<Due, Task> mTimers;
    Duration mNow{0};
};

}  // namespace MemoryPlatform
