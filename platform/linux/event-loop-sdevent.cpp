#include "event-loop-sdevent.h"

#include <sys/eventfd.h>
#include <systemd/sd-daemon.h>

#include <atomic>
#include <cassert>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

#include "files.h"
#include "trace-event-json.h"

namespace Platform {

sd_event* MainLoop()
{
    static const EventPtr loop = [] {
        sd_event* event = nullptr;
        const int code = sd_event_default(&event);
        assert(code >= 0);
        (void)code;
        return EventPtr(event);
    }();
    return loop.get();
}

LoopInbox::LoopInbox(sd_event* event) : mWakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    sd_event_source* source = nullptr;
    const auto run = [](sd_event_source*, int, uint32_t, void* self) {
        static_cast<LoopInbox*>(self)->RunAll();
        return 0;
    };
    sd_event_add_io(event, &source, mWakeUp.Get(), EPOLLIN, run, this);
    mSource.reset(source);
}

void LoopInbox::Post(std::function<void()> work)
{
    {
        const std::lock_guard lock(mMutex);
        mWork.push_back(std::move(work));
    }
    eventfd_write(mWakeUp.Get(), 1);
}

void LoopInbox::RunAll()
{
    eventfd_t count = 0;
    eventfd_read(mWakeUp.Get(), &count);
    std::vector<std::function<void()>> work;
    {
        const std::lock_guard lock(mMutex);
        work.swap(mWork);
    }
    for (const auto& one : work) one();
}

void FeedWatchdog()
{
    static const bool watched = sd_watchdog_enabled(0, nullptr) > 0;
    if (!watched) return;
    using Seconds = std::chrono::seconds;
    const auto now = std::chrono::duration_cast<Seconds>(std::chrono::steady_clock::now().time_since_epoch());
    static std::atomic<Seconds::rep> last{0};  // the launch worker pauses too
    if (last.exchange(now.count()) != now.count()) sd_notify(0, "WATCHDOG=1");
}

}  // namespace Platform

// A pause that the service takes blocks the loop, and with it the watchdog's own feeding.
int usleep(unsigned int microseconds)
{
    const Platform::TraceSpan span("task", "pause");
    Platform::FeedWatchdog();
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    Platform::FeedWatchdog();
    return 0;
}
