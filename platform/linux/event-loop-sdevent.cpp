#include "event-loop-sdevent.h"

#include <sys/eventfd.h>
#include <systemd/sd-daemon.h>

#include <atomic>
#include <cassert>
#include <chrono>
#include <ctime>
#include <memory>
#include <thread>
#include <utility>

#include "common-util-tasks.h"
#include "files.h"

namespace Platform {

namespace {

constexpr uint64_t kTimerAccuracyUsec = 10'000;

uint64_t Microseconds(double seconds)
{
    constexpr double kLongest = 1e9;  // half a lifetime
    if (!(seconds > 0)) return 0;
    return static_cast<uint64_t>((seconds < kLongest ? seconds : kLongest) * 1e6);
}

}  // namespace

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

// --- jobs, idlers, timers
// ---------------------------------------------------------------------------------------------

namespace {

// What a source works on. The task may destroy the object it belongs to, so the state outlives the run and
// says afterwards whether the object is still there.
template <typename Task>
struct TaskState {
    Task task;
    Platform::EventSourcePtr source;  // empty once the object is gone
    double interval = 0;
    bool startedWhileRunning = false;
};

}  // namespace

class CommonUtilJob::Impl {
public:
    using State = TaskState<std::function<void()>>;
    explicit Impl(std::function<void()> task) : mState(std::make_shared<State>())
    {
        mState->task = std::move(task);
        sd_event_source* source = nullptr;
        sd_event_add_defer(Platform::MainLoop(), &source, Run, this);
        sd_event_source_set_enabled(source, SD_EVENT_OFF);
        mState->source.reset(source);
    }
    ~Impl() { mState->source.reset(); }
    void Start() { sd_event_source_set_enabled(mState->source.get(), SD_EVENT_ONESHOT); }

private:
    static int Run(sd_event_source*, void* self)
    {
        const std::shared_ptr<State> state = static_cast<Impl*>(self)->mState;
        state->task();
        return 0;
    }
    std::shared_ptr<State> mState;
};

CommonUtilJob::CommonUtilJob(std::function<void()> task) : mImpl(std::make_unique<Impl>(std::move(task))) {}
CommonUtilJob::~CommonUtilJob() = default;
void CommonUtilJob::Start()
{
    mImpl->Start();
}

class CommonUtilIdler::Impl {
public:
    using State = TaskState<std::function<CommonUtilTaskReturn()>>;
    explicit Impl(std::function<CommonUtilTaskReturn()> task) : mState(std::make_shared<State>())
    {
        mState->task = std::move(task);
        sd_event_source* source = nullptr;
        sd_event_add_defer(Platform::MainLoop(), &source, Run, this);
        sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IDLE);
        sd_event_source_set_enabled(source, SD_EVENT_OFF);
        mState->source.reset(source);
    }
    ~Impl() { mState->source.reset(); }
    void Start() { sd_event_source_set_enabled(mState->source.get(), SD_EVENT_ONESHOT); }

private:
    static int Run(sd_event_source*, void* self)
    {
        const std::shared_ptr<State> state = static_cast<Impl*>(self)->mState;
        if (state->task() != kCommonUtilTaskEnd && state->source) {
            sd_event_source_set_enabled(state->source.get(), SD_EVENT_ONESHOT);
        }
        return 0;
    }
    std::shared_ptr<State> mState;
};

CommonUtilIdler::CommonUtilIdler(std::function<CommonUtilTaskReturn()> task)
    : mImpl(std::make_unique<Impl>(std::move(task)))
{
}
CommonUtilIdler::~CommonUtilIdler() = default;
void CommonUtilIdler::Start()
{
    mImpl->Start();
}

class CommonUtilTimer::Impl {
public:
    using State = TaskState<std::function<CommonUtilTaskReturn()>>;
    Impl(double interval, std::function<CommonUtilTaskReturn()> task) : mState(std::make_shared<State>())
    {
        mState->task = std::move(task);
        mState->interval = interval;
        sd_event_source* source = nullptr;
        sd_event_add_time_relative(Platform::MainLoop(), &source, CLOCK_MONOTONIC, 0,
                                   Platform::kTimerAccuracyUsec, Run, this);
        sd_event_source_set_enabled(source, SD_EVENT_OFF);
        mState->source.reset(source);
    }
    ~Impl() { mState->source.reset(); }
    void SetInterval(double interval) { mState->interval = interval; }
    void Start()
    {
        mState->startedWhileRunning = true;
        Arm(*mState);
    }
    void Stop()
    {
        mState->startedWhileRunning = true;  // the task's own answer counts no more
        sd_event_source_set_enabled(mState->source.get(), SD_EVENT_OFF);
    }

private:
    static void Arm(State& state)
    {
        const uint64_t usec = Platform::Microseconds(state.interval);
        sd_event_source_set_time_accuracy(state.source.get(), usec ? Platform::kTimerAccuracyUsec : 1);
        // From now, not from when the loop's turn began: the task that starts a timer may have paused.
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const auto nowUsec =
            static_cast<uint64_t>(now.tv_sec) * 1'000'000 + static_cast<uint64_t>(now.tv_nsec) / 1000;
        sd_event_source_set_time(state.source.get(), nowUsec + usec);
        sd_event_source_set_enabled(state.source.get(), SD_EVENT_ONESHOT);
    }
    static int Run(sd_event_source*, uint64_t, void* self)
    {
        const std::shared_ptr<State> state = static_cast<Impl*>(self)->mState;
        state->startedWhileRunning = false;
        const bool again = state->task() != kCommonUtilTaskEnd;
        if (again && state->source && !state->startedWhileRunning) Arm(*state);
        return 0;
    }
    std::shared_ptr<State> mState;
};

CommonUtilTimer::CommonUtilTimer(double interval, std::function<CommonUtilTaskReturn()> task)
    : mImpl(std::make_unique<Impl>(interval, std::move(task)))
{
}
CommonUtilTimer::~CommonUtilTimer() = default;
void CommonUtilTimer::SetInterval(double interval)
{
    mImpl->SetInterval(interval);
}
void CommonUtilTimer::Start()
{
    mImpl->Start();
}
void CommonUtilTimer::Stop()
{
    mImpl->Stop();
}

// A pause that the service takes blocks the loop, and with it the watchdog's own feeding.
int usleep(unsigned int microseconds)
{
    Platform::FeedWatchdog();
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    Platform::FeedWatchdog();
    return 0;
}
