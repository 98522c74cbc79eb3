#include "common-util-tasks.h"

#include <cstdio>

#include "platform-state.h"

using MemoryPlatform::Note;
using MemoryPlatform::VirtualLoop;

namespace {

std::string Seconds(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", seconds);
    return text;
}

VirtualLoop& Loop()
{
    return MemoryPlatform::Current()->loop;
}

// An object may outlive the Platform that it was made on.
void Cancel(VirtualLoop::Id id)
{
    if (auto* state = MemoryPlatform::Current(); state && id) state->loop.Cancel(id);
}

}  // namespace

// A task may destroy its object: what runs is a copy of the task or holds what it needs.

class CommonUtilJob::Impl {
public:
    std::function<void()> task;
    VirtualLoop::Id pending = 0;
};

CommonUtilJob::CommonUtilJob(std::function<void()> task) : mImpl(new Impl{std::move(task)}) {}
CommonUtilJob::~CommonUtilJob()
{
    Cancel(mImpl->pending);
}

void CommonUtilJob::Start()
{
    Note("job start");
    if (mImpl->pending) return;
    mImpl->pending = Loop().Post([this] {
        mImpl->pending = 0;
        const auto task = mImpl->task;
        task();
    });
}

namespace {

// `generation` tells a run that its task started, stopped or destroyed the object meanwhile: then the task's
// answer counts no more.
struct Repeated : std::enable_shared_from_this<Repeated> {
    std::function<CommonUtilTaskReturn()> task;
    std::function<VirtualLoop::Id(VirtualLoop::Task)> schedule;
    VirtualLoop::Id pending = 0;
    unsigned generation = 0;

    void Start()
    {
        Stop();
        pending = schedule([self = shared_from_this()] { self->Run(); });
    }

    void Stop()
    {
        ++generation;
        Cancel(pending);
        pending = 0;
    }

    void Run()
    {
        pending = 0;
        const unsigned before = generation;
        const CommonUtilTaskReturn answer = task();
        if (answer == kCommonUtilTaskAgain && generation == before) Start();
    }
};

}  // namespace

class CommonUtilIdler::Impl {
public:
    std::shared_ptr<Repeated> repeated = std::make_shared<Repeated>();
};

CommonUtilIdler::CommonUtilIdler(std::function<CommonUtilTaskReturn()> task) : mImpl(new Impl)
{
    mImpl->repeated->task = std::move(task);
    mImpl->repeated->schedule = [](VirtualLoop::Task run) { return Loop().AddIdler(std::move(run)); };
}

CommonUtilIdler::~CommonUtilIdler()
{
    mImpl->repeated->Stop();
}

void CommonUtilIdler::Start()
{
    Note("idler start");
    if (!mImpl->repeated->pending) mImpl->repeated->Start();
}

class CommonUtilTimer::Impl {
public:
    std::shared_ptr<Repeated> repeated = std::make_shared<Repeated>();
    // Shared with what the timer schedules: a run may come after the object has gone.
    std::shared_ptr<double> interval = std::make_shared<double>();
};

CommonUtilTimer::CommonUtilTimer(double interval, std::function<CommonUtilTaskReturn()> task)
    : mImpl(new Impl)
{
    *mImpl->interval = interval;
    mImpl->repeated->task = std::move(task);
    mImpl->repeated->schedule = [seconds = mImpl->interval](VirtualLoop::Task run) {
        return Loop().AddTimer(VirtualLoop::FromSeconds(*seconds), std::move(run));
    };
}

CommonUtilTimer::~CommonUtilTimer()
{
    mImpl->repeated->Stop();
}

void CommonUtilTimer::SetInterval(double interval)
{
    *mImpl->interval = interval;
}

void CommonUtilTimer::Start()
{
    Note("timer start " + Seconds(*mImpl->interval));
    mImpl->repeated->Start();
}

void CommonUtilTimer::Stop()
{
    Note("timer stop");
    mImpl->repeated->Stop();
}
