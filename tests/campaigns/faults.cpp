// Makes every system call of the service that reaches a file, a database or the bus fail: each in turn, with
// each error that the kernel may give for it, once and from then on.
//
//     faults-campaign PREFIX [--faults N] [--only OPERATION] [--list]
//
// N faults are spread over all that there are (0: every one). One line for each operation says what the
// service answered; another for each way in which it answered "success" although not all was done, which the
// service's contract leaves untested. What may not happen ends the campaign as failed, each with its line.

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <set>

#include "a-tried-watch.h"
#include "process.h"

namespace {

using namespace Campaign;

// The n-th call of an operation fails with the n-th of its errors.
struct Fault {
    std::size_t call;
    std::size_t error;
    bool isLasting;  // every later call of its kind fails too
};

bool IsOfNoFile(const PendingCall& call)
{
    const std::string link = "/proc/" + std::to_string(call.process) + "/fd/" +
                             std::to_string(static_cast<int>(call.arguments[0]));
    char target[32] = {};
    return readlink(link.c_str(), target, sizeof target - 1) > 0 &&
           std::string_view(target).starts_with("anon_inode:");
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

// A call that is to be repeated when it was interrupted must not be interrupted for ever. Locks that cannot
// be had are waited for, which is tried with a lock that somebody holds.
bool MayLast(int error)
{
    return error != EINTR && error != EAGAIN && error != ENOLCK;
}

// Counts an operation's calls, and makes one of them fail.
class Saboteur {
public:
    explicit Saboteur(std::optional<Fault> fault = {}, std::string from = {})
        : mFault(fault), mFrom(std::move(from))
    {
    }

    int operator()(const PendingCall& call)
    {
        if (!mFrom.empty() && !call.TextAt(0).starts_with(mFrom) && !call.TextAt(1).starts_with(mFrom))
            return 0;
        mFrom.clear();
        if (!Counts(call)) return 0;
        mCalls.push_back(&call.call);
        const bool isOfLog = call.call.number == SYS_write && call.arguments[0] == STDERR_FILENO;
        if (mFailing == &call.call && mIsLasting) return isOfLog == mIsOfLog ? mError : 0;
        if (mFailing || !mFault || mCalls.size() - 1 != mFault->call ||
            mFault->error >= call.call.errors.size()) {
            return 0;
        }
        mFailing = &call.call;
        mError = call.call.errors[mFault->error];
        mIsLasting = mFault->isLasting && MayLast(mError);
        mIsOfLog = isOfLog;
        return mError;
    }

    const std::vector<const SystemCall*>& Calls() const { return mCalls; }
    const SystemCall* Failing() const { return mFailing; }  // null: it was never reached
    std::string Name() const
    {
        return !mFailing ? "no call"
                         : std::string(mFailing->name) + " " + strerrorname_np(mError) +
                               (mIsLasting ? " from then on" : "");
    }

private:
    std::optional<Fault> mFault;
    std::string mFrom;  // nothing counts before a call that names this path
    std::vector<const SystemCall*> mCalls;
    const SystemCall* mFailing = nullptr;
    int mError = 0;
    bool mIsLasting = false;
    bool mIsOfLog = false;
};

std::vector<Fault> AllFaults(const std::vector<const SystemCall*>& calls)
{
    std::vector<Fault> faults;
    for (std::size_t call = 0; call < calls.size(); ++call) {
        for (std::size_t error = 0; error < calls[call]->errors.size(); ++error) {
            faults.push_back({call, error, false});
            if (MayLast(calls[call]->errors[error])) faults.push_back({call, error, true});
        }
    }
    return faults;
}

struct Tally {
    int faults = 0, answeredFail = 0, done = 0, untested = 0, ended = 0, notReached = 0;
    std::set<std::string> untestedCalls;
    double longest = 0;  // seconds until a fault was dealt with
    std::string slowest;
};

class Campaigner {
public:
    explicit Campaigner(const std::string& prefix) : mWatch(prefix)
    {
        if (!mWatch.Start()) throw std::runtime_error("the service does not start");
        mFormer = FormerState(mWatch);
        for (const Operation& operation : Operations()) {  // what is opened late is open from here on
            RunWhole(operation);
        }
    }

    // The calls of an operation that goes well, and the state after it.
    std::vector<const SystemCall*> Rehearse(const Operation& operation)
    {
        RunWhole(operation);  // what an operation before it left to be done is done
        mWatch.Restore(mFormer);
        const auto counter = std::make_shared<Saboteur>();
        mWatch.Service().Watch([counter](const PendingCall& call) { return (*counter)(call); });
        operation.run(mWatch);
        mWatch.Settle();
        mWatch.Service().Watch({});
        mLatter = mWatch.Look();
        mOpenFiles = mWatch.OpenFiles();
        return counter->Calls();
    }

    std::vector<const SystemCall*> RehearseStart()
    {
        mWatch.Stop();
        mWatch.Restore(mFormer);
        mLatter = mFormer;
        const auto counter = std::make_shared<Saboteur>(std::nullopt, mWatch.Root());
        mWatch.Start([counter](const PendingCall& call) { return (*counter)(call); });
        mWatch.Settle();
        mWatch.Service().Watch({});
        return counter->Calls();
    }

    void Try(const Operation& operation, const Fault& fault, Tally& tally)
    {
        if (!mWatch.IsRunning()) StartAgain();
        mWatch.Restore(mFormer);
        mFault = std::make_shared<Saboteur>(fault);
        mOperation = operation.name;
        const std::size_t logged = mWatch.LogSize();
        mWatch.Service().Watch([saboteur = mFault](const PendingCall& call) { return (*saboteur)(call); });
        Answer answer = Answer::kNone;
        const auto begin = TestSupport::Clock::now();
        try {
            answer = operation.run(mWatch);
            mWatch.Settle();
            mWatch.Service().Watch({});
            mWatch.Settle();
        } catch (const Hang& hang) {
            return Violation(std::string("hangs: ") + hang.what(), true);
        }
        Time(begin, tally);
        Count(answer, logged, tally);
        if (mWatch.IsRunning()) RunAgain(operation);
    }

    void TryStart(const Fault& fault, Tally& tally)
    {
        mWatch.Stop();
        mWatch.Restore(mFormer);
        mFault = std::make_shared<Saboteur>(fault, mWatch.Root());
        mOperation = "start";
        const auto begin = TestSupport::Clock::now();
        try {
            const bool isReady =
                mWatch.Start([saboteur = mFault](const PendingCall& call) { return (*saboteur)(call); });
            mWatch.Service().Watch({});
            if (isReady) mWatch.Settle();
        } catch (const Hang& hang) {
            return Violation(std::string("hangs: ") + hang.what(), true);
        }
        Time(begin, tally);
        ++tally.faults;
        if (!mFault->Failing()) ++tally.notReached;
        if (mWatch.IsRunning()) {
            ++tally.done;
        } else {
            ++tally.ended;
            const int status = *mWatch.Service().Status();
            if (!WIFEXITED(status) || WEXITSTATUS(status) == 0)
                Violation("ends badly, status " + std::to_string(status), false);
            StartAgain();
        }
        LookForDamage();
        RunAgain(Operations()[1]);
    }

    bool IsClean() const { return mViolations == 0; }

private:
    void RunWhole(const Operation& operation)
    {
        mWatch.Restore(mFormer);
        operation.run(mWatch);
        mWatch.Settle();
    }

    void StartAgain()
    {
        if (!mWatch.Start()) Violation("does not start again", false);
        mWatch.Settle();
        mOpenFiles = 0;  // what is opened late is not open
    }

    void Violation(const std::string& what, bool startsAgain)
    {
        ++mViolations;
        std::printf("! %s, %s: %s\n", mOperation, mFault->Name().c_str(), what.c_str());
        std::fflush(stdout);
        if (!startsAgain) return;
        mWatch.Service().Kill();
        StartAgain();
    }

    void Time(TestSupport::Clock::time_point begin, Tally& tally)
    {
        const double seconds = TestSupport::Microseconds(TestSupport::Clock::now() - begin) / 1e6;
        if (seconds <= tally.longest) return;
        tally.longest = seconds;
        tally.slowest = mFault->Name();
    }

    void Count(Answer answer, std::size_t logged, Tally& tally)
    {
        ++tally.faults;
        if (!mFault->Failing()) ++tally.notReached;
        if (!mWatch.IsRunning()) {
            ++tally.ended;
            const int status = *mWatch.Service().Status();
            const bool isBusLost = WIFEXITED(status) && WEXITSTATUS(status) == Platform::kExitBusLost;
            if (!isBusLost || mFault->Failing()->kind != CallKind::kBus)
                Violation("ends with status " + std::to_string(status), false);
            StartAgain();
        }
        const bool isDone = LookForDamage();
        if (answer == Answer::kFailure) ++tally.answeredFail;
        if (isDone) ++tally.done;
        if (answer != Answer::kSuccess || isDone) return;
        ++tally.untested;
        tally.untestedCalls.insert(mFault->Failing() ? mFault->Failing()->name : "no call");
        if (mWatch.LogFrom(logged).find("E/platform") == std::string::npos)
            Violation("succeeds without having done all, and logs no fault", false);
    }

    // Whether everything is as after the whole operation. What is there otherwise is as before or as after.
    bool LookForDamage()
    {
        State now;
        try {
            now = mWatch.Look();
            if (!mWatch.AreDatabasesWhole()) Violation("a database is damaged or set aside", false);
        } catch (const std::runtime_error& error) {
            Violation(error.what(), true);
            return false;
        }
        for (const auto& [path, content] : now) {
            const auto former = mFormer.find(path);
            const auto latter = mLatter.find(path);
            const bool isWhole = (former != mFormer.end() && former->second == content) ||
                                 (latter != mLatter.end() && latter->second == content) ||
                                 mWatch.IsShipped(path, content);
            if (!isWhole) Violation("is neither as before nor as after: " + path, false);
        }
        for (const auto& [path, content] : mFormer) {
            if (mLatter.contains(path) && !now.contains(path)) Violation("is lost: " + path, false);
        }
        const bool isRemovalRefused = mFault->Failing() && std::strstr(mFault->Failing()->name, "unlink");
        for (const std::string& path : mWatch.Leftovers()) {
            if (!isRemovalRefused) Violation("is left: " + path, false);
        }
        return now == mLatter;
    }

    // The same once more, and nothing fails.
    void RunAgain(const Operation& operation)
    {
        try {
            // What is done cannot be done again where something goes.
            if (mWatch.Look() != mFormer) mWatch.Restore(mFormer);
            const Answer answer = operation.run(mWatch);
            mWatch.Settle();
            if (!mWatch.IsRunning()) return Violation("ends afterwards", true);
            if (answer == Answer::kFailure) Violation("fails afterwards too", false);
            if (mOperation == operation.name && mWatch.Look() != mLatter)
                Violation("does not do all of it afterwards", false);
            const std::size_t open = mWatch.OpenFiles();
            if (mOpenFiles && open > mOpenFiles)
                Violation("keeps " + std::to_string(open - mOpenFiles) + " more files open", true);
        } catch (const std::exception& error) {
            Violation(std::string("afterwards: ") + error.what(), true);
        }
    }

    TriedWatch mWatch;
    State mFormer, mLatter;
    std::size_t mOpenFiles = 0;  // when an operation has gone well; 0: not known
    std::shared_ptr<Saboteur> mFault;
    const char* mOperation = "";
    int mViolations = 0;
};

void Report(const char* name, std::size_t calls, const Tally& tally)
{
    std::printf(
        "%-16s %4zu calls %6d faults: all done %5d, answered fail %5d, success untested %4d, "
        "program ended %4d, call not made %d; longest %.1f s (%s)\n",
        name, calls, tally.faults, tally.done, tally.answeredFail, tally.untested, tally.ended,
        tally.notReached, tally.longest, tally.slowest.c_str());
    for (const std::string& call : tally.untestedCalls)
        std::printf("    success untested: %s\n", call.c_str());
    std::fflush(stdout);
}

// `some` of the faults, evenly; 0: all.
std::vector<Fault> Spread(const std::vector<Fault>& all, std::size_t some, std::size_t* phase)
{
    if (some == 0 || some >= all.size()) return all;
    std::vector<Fault> chosen;
    const std::size_t step = all.size() / some;
    for (std::size_t i = (*phase)++ % step; i < all.size() && chosen.size() < some; i += step)
        chosen.push_back(all[i]);
    return chosen;
}

struct Options {
    std::string prefix, only;
    std::size_t faults = 300;
    bool lists = false;
};

int Run(const Options& options)
{
    const auto begin = std::chrono::steady_clock::now();
    Campaigner campaigner(options.prefix);
    const std::size_t share = options.faults / (Operations().size() + 1);
    int faults = 0;
    std::size_t phase = 0;
    const auto list = [&](const char* name, const std::vector<const SystemCall*>& calls) {
        std::printf("%s:", name);
        for (const SystemCall* call : calls) std::printf(" %s", call->name);
        std::printf("\n");
    };
    for (const Operation& operation : Operations()) {
        if (!options.only.empty() && options.only != operation.name) continue;
        const auto calls = campaigner.Rehearse(operation);
        if (options.lists) list(operation.name, calls);
        Tally tally;
        for (const Fault& fault : Spread(AllFaults(calls), share, &phase))
            campaigner.Try(operation, fault, tally);
        Report(operation.name, calls.size(), tally);
        faults += tally.faults;
    }
    if (options.only.empty() || options.only == "start") {
        const auto calls = campaigner.RehearseStart();
        if (options.lists) list("start", calls);
        Tally tally;
        for (const Fault& fault : Spread(AllFaults(calls), share, &phase)) campaigner.TryStart(fault, tally);
        Report("start", calls.size(), tally);
        faults += tally.faults;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::printf("%d faults in %.1f s, %.0f a second\n", faults, took.count(), faults / took.count());
    return campaigner.IsClean() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App parser("Makes the system calls of a service of its own fail.");
    Options options;
    parser.add_option("prefix", options.prefix, "a build tree")->required();
    parser.add_option("--faults", options.faults, "in all; 0: every one that there is")
        ->capture_default_str();
    parser.add_option("--only", options.only, "one operation");
    parser.add_flag("--list", options.lists, "the calls of each operation");
    CLI11_PARSE(parser, argc, argv);
    if (!CanGatePrograms()) {
        std::printf("left out: system calls cannot be watched here\n");
        return kSkipped;
    }
    try {
        return Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "faults: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
