#include "virtual-loop.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace MemoryPlatform {

namespace {
// More turns than this at one moment mean that something starts itself for ever.
constexpr int kMostTurns = 100'000;
}  // namespace

VirtualLoop::Id VirtualLoop::Post(Task task)
{
    const std::lock_guard lock(mMutex);
    const Id id = mNextId++;
    mPosted.emplace(id, std::move(task));
    return id;
}

VirtualLoop::Id VirtualLoop::AddIdler(Task task)
{
    const std::lock_guard lock(mMutex);
    const Id id = mNextId++;
    mIdlers.emplace(id, std::move(task));
    return id;
}

VirtualLoop::Id VirtualLoop::AddTimer(Duration interval, Task task)
{
    const std::lock_guard lock(mMutex);
    const Id id = mNextId++;
    mTimers.emplace(Due{mNow + interval, id}, std::move(task));
    return id;
}

void VirtualLoop::Cancel(Id id)
{
    const std::lock_guard lock(mMutex);
    mPosted.erase(id);
    mIdlers.erase(id);
    std::erase_if(mTimers, [&](const auto& timer) { return timer.first.second == id; });
}

void VirtualLoop::Clear()
{
    std::map<Id, Task> posted;
    {
        const std::lock_guard lock(mMutex);
        posted.swap(mPosted);
    }
    mIdlers.clear();
    mTimers.clear();
}

VirtualLoop::Id VirtualLoop::LastId() const
{
    const std::lock_guard lock(mMutex);
    return mNextId - 1;
}

VirtualLoop::Task VirtualLoop::TakePosted(Id last)
{
    const std::lock_guard lock(mMutex);
    if (mPosted.empty() || mPosted.begin()->first > last) return {};
    return std::move(mPosted.extract(mPosted.begin()).mapped());
}

VirtualLoop::Task VirtualLoop::TakeTimer(Duration now, Id last)
{
    for (auto it = mTimers.begin(); it != mTimers.end() && it->first.first <= now; ++it) {
        if (it->first.second <= last) return std::move(mTimers.extract(it).mapped());
    }
    return {};
}

bool VirtualLoop::RunPending()
{
    const Id last = LastId();
    const Duration now = mNow;
    bool ran = false;
    while (const Task task = TakePosted(last)) {
        task();
        ran = true;
    }
    while (const Task task = TakeTimer(now, last)) {
        task();
        ran = true;
    }
    return ran;
}

bool VirtualLoop::RunIdlers()
{
    const Id last = LastId();
    bool ran = false;
    while (!mIdlers.empty() && mIdlers.begin()->first <= last) {
        const Task task = std::move(mIdlers.extract(mIdlers.begin()).mapped());
        task();
        ran = true;
    }
    return ran;
}

bool VirtualLoop::RunTurn()
{
    return RunPending() || RunIdlers();
}

void VirtualLoop::RunUntilIdle()
{
    for (int turns = 0; RunTurn(); ++turns) {
        if (turns == kMostTurns) throw std::runtime_error("the main loop never becomes idle");
    }
}

void VirtualLoop::Advance(Duration by)
{
    const Duration end = mNow + by;
    RunUntilIdle();
    for (auto next = NextTimer(); next && *next <= end; next = NextTimer()) {
        mNow = std::max(mNow, *next);
        RunUntilIdle();
    }
    mNow = std::max(mNow, end);
}

std::optional<VirtualLoop::Duration> VirtualLoop::NextTimer() const
{
    if (mTimers.empty()) return std::nullopt;
    return mTimers.begin()->first.first;
}

VirtualLoop::Duration VirtualLoop::FromSeconds(double seconds)
{
    return Duration(seconds > 0 ? std::llround(seconds * 1e9) : 0);
}

double VirtualLoop::ToSeconds(Duration duration)
{
    return static_cast<double>(duration.count()) / 1e9;
}

}  // namespace MemoryPlatform
