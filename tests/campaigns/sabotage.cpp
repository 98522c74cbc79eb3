#include "sabotage.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>

namespace Campaign {

namespace {

// A pipe is a sanitizer's, which asks by it whether there is memory.
bool IsOfNoFile(const PendingCall& call)
{
    const auto descriptor = static_cast<int>(call.arguments[0]);
    const std::string link = "/proc/" + std::to_string(call.process) + "/fd/" + std::to_string(descriptor);
    char target[32] = {};
    if (readlink(link.c_str(), target, sizeof target - 1) <= 0) return false;
    const std::string_view what(target);
    return what.starts_with("anon_inode:") || (what.starts_with("pipe:") && descriptor != STDERR_FILENO);
}

// Whether the call reaches a file, a database or the bus; others of its kind make memory, timers, or change
// what only this process knows, and do not fail for the disk.
bool Counts(const PendingCall& call)
{
    switch (call.call.number) {
        case SYS_mmap:
            return static_cast<int>(call.arguments[4]) >= 0;
        case SYS_fcntl: {
            const auto command = static_cast<int>(call.arguments[1]);
            // What is locked is always unlocked again: that fails on no file of this machine.
            const std::string lock = call.BytesAt(call.arguments[2], sizeof(short));
            const bool unlocks = lock == std::string("\x02\0", 2);
            return !unlocks && (command == F_GETLK || command == F_SETLK || command == F_OFD_SETLK);
        }
        case SYS_read:
        case SYS_write:
            return !IsOfNoFile(call);
        default:
            return true;
    }
}

// A call that is to be repeated when it was interrupted must not be interrupted for ever. SQLite waits long
// for locks that cannot be had, so that is tried from an operation's first lock on only.
bool MayLast(const SystemCall& call, std::size_t nth, int error)
{
    if (error == EINTR || error == EAGAIN) return false;
    return call.kind != CallKind::kLock || nth == 1;
}

}  // namespace

std::vector<Fault> AllFaults(const std::vector<const SystemCall*>& calls)
{
    std::vector<Fault> faults;
    std::map<const SystemCall*, std::size_t> seen;
    for (const SystemCall* call : calls) {
        const std::size_t nth = ++seen[call];
        for (const int error : call->errors) {
            faults.push_back({call, nth, error, false});
            if (MayLast(*call, nth, error)) faults.push_back({call, nth, error, true});
        }
    }
    return faults;
}

Saboteur::Saboteur(std::optional<Fault> fault, std::string from) : mFault(fault), mFrom(std::move(from)) {}

int Saboteur::operator()(const PendingCall& call)
{
    if (!mFrom.empty() && !call.TextAt(0).starts_with(mFrom) && !call.TextAt(1).starts_with(mFrom)) return 0;
    mFrom.clear();
    if (!Counts(call)) return 0;
    mCalls.push_back(&call.call);
    if (!mFault || mFault->call != &call.call) return 0;
    const bool isOfLog = call.call.number == SYS_write && call.arguments[0] == STDERR_FILENO;
    if (mFailing) return mFault->isLasting && isOfLog == mIsOfLog ? mFault->error : 0;
    if (++mSeen != mFault->nth) return 0;
    mFailing = &call.call;
    mIsOfLog = isOfLog;
    return mFault->error;
}

std::string Saboteur::Name() const
{
    if (!mFault) return "no fault";
    return std::string(mFault->call->name) + " " + strerrorname_np(mFault->error) +
           (mFault->isLasting ? " from then on" : "") + (mFailing ? "" : ", not met");
}

}  // namespace Campaign
