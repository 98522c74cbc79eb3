// The process's main loop, and the one way to it from other threads.

#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "systemd-handles.h"
#include "unique-fd.h"

namespace Platform {

// The main thread's loop. Jobs, idlers and timers run on it; made at first use.
sd_event* MainLoop();

// Hands work to the main loop from any thread. Made on the main thread; what has not run when it is destroyed
// is dropped.
class LoopInbox {
public:
    explicit LoopInbox(sd_event* event);
    LoopInbox(const LoopInbox&) = delete;
    LoopInbox& operator=(const LoopInbox&) = delete;

    void Post(std::function<void()> work);

private:
    void RunAll();

    UniqueFd mWakeUp;
    std::mutex mMutex;
    std::vector<std::function<void()>> mWork;
    EventSourcePtr mSource;  // last: no event arrives while the rest is destroyed
};

// Where systemd watches this process, tells it that we live; at most once a second. For code that blocks the
// loop on purpose.
void FeedWatchdog();

}  // namespace Platform
