#include <ctime>
#include <functional>
#include <memory>
#include <utility>

#include "common-util-tasks.h"
#include "event-loop-sdevent.h"
#include "trace-event-json.h"

namespace {

constexpr uint64_t kTimerAccuracyUsec = 10'000;

// A task and its source. The task may destroy the object that it belongs to, so the two outlive the run, and
// the empty source tells afterwards that the object is gone.
struct LoopTask {
    const char* kind;
    std::function<bool()> run;  // whether to run again
    Platform::EventSourcePtr source;

    bool Run() const
    {
        const Platform::TraceSpan span("task", kind);
        return run();
    }
};
using LoopTaskPtr = std::shared_ptr<LoopTask>;

// Runs once each time it is started; starts before the run coalesce.
class DeferredTask {
public:
    DeferredTask(const char* kind, int64_t priority, std::function<bool()> run)
        : mTask(std::make_shared<LoopTask>())
    {
        mTask->kind = kind;
        mTask->run = std::move(run);
        sd_event_source* source = nullptr;
        sd_event_add_defer(Platform::MainLoop(), &source, Run, this);
        sd_event_source_set_priority(source, priority);
        sd_event_source_set_enabled(source, SD_EVENT_OFF);
        mTask->source.reset(source);
    }
    ~DeferredTask() { mTask->source.reset(); }
    DeferredTask(const DeferredTask&) = delete;
    DeferredTask& operator=(const DeferredTask&) = delete;

    void Start() { sd_event_source_set_enabled(mTask->source.get(), SD_EVENT_ONESHOT); }

private:
    static int Run(sd_event_source*, void* self)
    {
        const LoopTaskPtr task = static_cast<DeferredTask*>(self)->mTask;
        if (task->Run() && task->source) sd_event_source_set_enabled(task->source.get(), SD_EVENT_ONESHOT);
        return 0;
    }

    const LoopTaskPtr mTask;
};

uint64_t Microseconds(double seconds)
{
    constexpr double kLongest = 1e9;  // half a lifetime
    if (!(seconds > 0)) return 0;
    return static_cast<uint64_t>((seconds < kLongest ? seconds : kLongest) * 1e6);
}

uint64_t MonotonicMicroseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000 + static_cast<uint64_t>(now.tv_nsec) / 1000;
}

}  // namespace

class CommonUtilJob::Impl : public DeferredTask {
public:
    explicit Impl(std::function<void()> task)
        : DeferredTask("job", SD_EVENT_PRIORITY_NORMAL, [task = std::move(task)] {
              task();
              return false;
          })
    {
    }
};

CommonUtilJob::CommonUtilJob(std::function<void()> task) : mImpl(std::make_unique<Impl>(std::move(task))) {}
CommonUtilJob::~CommonUtilJob() = default;
void CommonUtilJob::Start()
{
    mImpl->Start();
}

class CommonUtilIdler::Impl : public DeferredTask {
public:
    explicit Impl(std::function<CommonUtilTaskReturn()> task)
        : DeferredTask("idler", SD_EVENT_PRIORITY_IDLE,
                       [task = std::move(task)] { return task() != kCommonUtilTaskEnd; })
    {
    }
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
    Impl(double interval, std::function<CommonUtilTaskReturn()> task) : mTask(std::make_shared<TimerTask>())
    {
        mTask->kind = "timer";
        mTask->interval = interval;
        mTask->run = [task = std::move(task)] { return task() != kCommonUtilTaskEnd; };
        sd_event_source* source = nullptr;
        sd_event_add_time(Platform::MainLoop(), &source, CLOCK_MONOTONIC, 0, kTimerAccuracyUsec, Run, this);
        sd_event_source_set_enabled(source, SD_EVENT_OFF);
        mTask->source.reset(source);
    }
    ~Impl() { mTask->source.reset(); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void SetInterval(double interval) { mTask->interval = interval; }

    // Inside the task, a start or stop counts and the task's own answer no more.
    void Start()
    {
        mTask->answerCounts = false;
        Arm(*mTask);
    }
    void Stop()
    {
        mTask->answerCounts = false;
        sd_event_source_set_enabled(mTask->source.get(), SD_EVENT_OFF);
    }

private:
    struct TimerTask : LoopTask {
        double interval = 0;
        bool answerCounts = true;
    };

    static void Arm(TimerTask& task)
    {
        const uint64_t usec = Microseconds(task.interval);
        sd_event_source_set_time_accuracy(task.source.get(), usec ? kTimerAccuracyUsec : 1);
        // From now, not from when the loop's turn began: the task that starts a timer may have paused.
        sd_event_source_set_time(task.source.get(), MonotonicMicroseconds() + usec);
        sd_event_source_set_enabled(task.source.get(), SD_EVENT_ONESHOT);
    }

    static int Run(sd_event_source*, uint64_t, void* self)
    {
        const std::shared_ptr<TimerTask> task = static_cast<Impl*>(self)->mTask;
        task->answerCounts = true;
        if (task->Run() && task->source && task->answerCounts) Arm(*task);
        return 0;
    }

    const std::shared_ptr<TimerTask> mTask;
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
