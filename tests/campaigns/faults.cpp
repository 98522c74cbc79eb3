// Makes every system call of the service that reaches a file, a database or the bus fail: each in turn, with
// each error that the kernel may give for it, once and from then on.
//
//     faults-campaign PREFIX [--faults N] [--only OPERATION] [--list]
//
// N faults are spread over all that there are (0: every one). One that meets no call, because the operation
// took another way that time, is tried again. Two lines for each operation say what the service answered and
// how long it took at most; another names the calls after which it answered "success" although not all was
// done, which its contract leaves untested. What may not happen ends the campaign as failed, each with its
// line.

#include <sys/wait.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <set>

#include "a-tried-watch.h"
#include "process.h"
#include "sabotage.h"
#include "stored-values.h"

namespace {

using namespace Campaign;

constexpr double kLongest = 10;  // seconds until a fault is dealt with, ten times what it takes in quiet
constexpr std::chrono::milliseconds kReplyIsLost{200};
constexpr int kRehearsals = 5;
constexpr int kMostTries = 5;  // until a fault meets a call

struct Slowest {
    double seconds = 0;
    std::string fault;

    void Add(double took, const std::string& name)
    {
        if (took > seconds) *this = {took, name};
    }
};

struct Tally {
    int faults = 0, met = 0, done = 0, answeredFail = 0, untested = 0, ended = 0;
    std::set<std::string> untestedCalls;
    Slowest slowest, slowestOfLocks;  // until a fault was dealt with; SQLite waits for a kernel's locks
};

class Campaigner {
public:
    explicit Campaigner(const std::string& prefix) : mWatch(prefix, kReplyIsLost)
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
        return UsualCalls([&] {
            mWatch.Restore(mFormer);
            const auto counter = std::make_shared<Saboteur>();
            mWatch.Service().Watch([counter](const PendingCall& call) { return (*counter)(call); });
            operation.run(mWatch);
            mWatch.Settle();
            mWatch.Service().Watch({});
            mLatter = mWatch.Look();
            mOpenFiles = mWatch.OpenFiles();
            return counter->Calls();
        });
    }

    std::vector<const SystemCall*> RehearseStart()
    {
        mLatter = mFormer;
        return UsualCalls([&] {
            mWatch.Stop();
            mWatch.Restore(mFormer);
            const auto counter = std::make_shared<Saboteur>(std::nullopt, mWatch.Root());
            mWatch.Start([counter](const PendingCall& call) { return (*counter)(call); });
            mWatch.Settle();
            mWatch.Service().Watch({});
            return counter->Calls();
        });
    }

    void Try(const Operation& operation, const Fault& fault, Tally& tally)
    {
        Repeat(tally, [&](Tally& once, bool isAgain) {
            // As it was rehearsed, with everything open that is opened late.
            if (isAgain) RunWhole(operation);
            TryOnce(operation, fault, once);
        });
    }

    void TryStart(const Fault& fault, Tally& tally)
    {
        Repeat(tally, [&](Tally& once, bool) { TryStartOnce(fault, once); });
    }

    bool IsClean() const { return mViolations == 0; }

private:
    // Of some rehearsals the one of middle length: messages are read together or one by one, as they come.
    template <typename Rehearsal>
    static std::vector<const SystemCall*> UsualCalls(const Rehearsal& rehearse)
    {
        std::vector<std::vector<const SystemCall*>> rehearsals(kRehearsals);
        std::ranges::generate(rehearsals, rehearse);
        std::ranges::sort(rehearsals, {}, [](const auto& calls) { return calls.size(); });
        return rehearsals[kRehearsals / 2];
    }

    // Tries a fault until it meets a call; the last try counts.
    template <typename Attempt>
    void Repeat(Tally& tally, const Attempt& attempt)
    {
        Tally once;
        mFault.reset();
        for (int tries = 0; tries < kMostTries && !(mFault && mFault->Failing()); ++tries) {
            once = tally;
            attempt(once, tries > 0);
        }
        tally = once;
        ++tally.faults;
        if (mFault->Failing()) ++tally.met;
    }

    void RunWhole(const Operation& operation)
    {
        if (!mWatch.IsRunning()) StartAgain();
        mWatch.Restore(mFormer);
        operation.run(mWatch);
        mWatch.Settle();
    }

    void TryOnce(const Operation& operation, const Fault& fault, Tally& tally)
    {
        if (!mWatch.IsRunning()) StartAgain();
        mWatch.Restore(mFormer);
        mWatch.TakeAnnouncedKeys();
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
        Time(begin, fault, tally);
        if (!mWatch.IsRunning()) {
            ++tally.ended;
            JudgeEnd();
            StartAgain();
        }
        Judge(operation, answer, logged, tally);
        RunAgain(operation);
    }

    void TryStartOnce(const Fault& fault, Tally& tally)
    {
        if (mWatch.IsRunning()) mWatch.Stop();
        mWatch.Restore(mFormer);
        mFault = std::make_shared<Saboteur>(fault, mWatch.Root());
        mOperation = "start";
        const std::size_t logged = mWatch.LogSize();
        const auto begin = TestSupport::Clock::now();
        try {
            const bool isReady =
                mWatch.Start([saboteur = mFault](const PendingCall& call) { return (*saboteur)(call); });
            mWatch.Service().Watch({});
            if (isReady) mWatch.Settle();
        } catch (const Hang& hang) {
            return Violation(std::string("hangs: ") + hang.what(), true);
        }
        Time(begin, fault, tally);
        if (mWatch.IsRunning()) {
            ++tally.done;
        } else {
            ++tally.ended;
            const int status = *mWatch.Service().Status();
            if (!WIFEXITED(status) || WEXITSTATUS(status) == 0)
                Violation("ends badly, status " + std::to_string(status), false);
            if (!IsFaultLogged(logged)) Violation("ends, and logs no fault", false);
            StartAgain();
        }
        LookForDamage();
        RunAgain(Operations()[1]);
        End();
    }

    void End()
    {
        try {
            mWatch.Stop();
        } catch (const Hang& hang) {
            Violation(hang.what(), true);
        }
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

    void Time(TestSupport::Clock::time_point begin, const Fault& fault, Tally& tally)
    {
        const double seconds = TestSupport::Microseconds(TestSupport::Clock::now() - begin) / 1e6;
        if (fault.call->kind != CallKind::kLock && seconds > kLongest)
            Violation("takes " + std::to_string(seconds) + " s", false);
        (fault.call->kind == CallKind::kLock ? tally.slowestOfLocks : tally.slowest)
            .Add(seconds, mFault->Name());
    }

    bool IsFaultLogged(std::size_t logged) const
    {
        return mWatch.LogFrom(logged).find("E/platform") != std::string::npos;
    }

    // A service that lost its bus may end.
    void JudgeEnd()
    {
        const int status = *mWatch.Service().Status();
        const bool isBusLost = WIFEXITED(status) && WEXITSTATUS(status) == Platform::kExitBusLost;
        const auto* failing = mFault->Failing();
        const bool isOfBus = failing && (failing->kind == CallKind::kBus || failing->kind == CallKind::kWait);
        if (!isBusLost || !isOfBus) Violation("ends with status " + std::to_string(status), false);
    }

    void Judge(const Operation& operation, Answer answer, std::size_t logged, Tally& tally)
    {
        const auto undone = LookForDamage();
        if (!undone) return;
        JudgeAnnouncements(*undone);
        if (answer == Answer::kFailure) ++tally.answeredFail;
        if (undone->empty()) ++tally.done;
        if (undone->empty()) return;
        if (!mFault->Failing()) return Violation("does not do all", false);
        if (!IsFaultLogged(logged)) Violation("does not do all, and logs no fault", false);
        if (answer != Answer::kSuccess) return;
        ++tally.untested;
        tally.untestedCalls.insert(mFault->Failing()->name);
        for (const std::string& path : *undone) {
            const auto isEndOfIt = [&](const char* end) { return path.ends_with(end); };
            if (std::ranges::none_of(operation.untested, isEndOfIt))
                Violation("succeeds without " + path, false);
        }
    }

    void JudgeAnnouncements(const std::vector<std::string>& undone)
    {
        for (const std::string& key : mWatch.TakeAnnouncedKeys()) {
            if (std::ranges::find(undone, kKeys.label + key) != undone.end())
                Violation("announces a key that is as before: " + key, false);
        }
    }

    // What is not as after the whole operation: that is as before. Nothing when it cannot be told.
    std::optional<std::vector<std::string>> LookForDamage()
    {
        State now;
        try {
            now = mWatch.Look();
            if (!mWatch.AreDatabasesWhole()) Violation("a database is damaged or set aside", false);
        } catch (const std::runtime_error& error) {
            Violation(error.what(), true);
            return std::nullopt;
        }
        const auto isShipped = [this](const std::string& path, const std::string& content) {
            return mWatch.IsShipped(path, content);
        };
        for (const std::string& what : Damage(now, mFormer, mLatter, isShipped)) Violation(what, false);
        const bool isRemovalRefused = mFault->Failing() && std::strstr(mFault->Failing()->name, "unlink");
        for (const std::string& path : mWatch.Leftovers()) {
            if (!isRemovalRefused) Violation("is left: " + path, false);
        }
        return Undone(now, mLatter);
    }

    // The same once more, and nothing fails.
    void RunAgain(const Operation& operation)
    {
        if (!mWatch.IsRunning()) return;  // a violation was told
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

void Print(const char* what, const Slowest& slowest)
{
    if (slowest.seconds > 0) std::printf("; %s %.1f s (%s)", what, slowest.seconds, slowest.fault.c_str());
}

void Report(const char* name, std::size_t calls, const Tally& tally)
{
    std::printf(
        "%-20s %4zu calls %6d faults, %d met a call: all done %5d, answered fail %5d, "
        "success untested %4d, program ended %4d",
        name, calls, tally.faults, tally.met, tally.done, tally.answeredFail, tally.untested, tally.ended);
    Print("longest", tally.slowest);
    Print("of locks", tally.slowestOfLocks);
    std::printf("\n");
    for (const std::string& call : tally.untestedCalls)
        std::printf("    success untested: %s\n", call.c_str());
    std::fflush(stdout);
}

// `some` of the faults, evenly, without those that are waited for; 0: all.
std::vector<Fault> Spread(std::vector<Fault> all, std::size_t some, std::size_t* phase)
{
    if (some == 0) return all;
    std::erase_if(all,
                  [](const Fault& fault) { return fault.call->kind == CallKind::kLock && fault.isLasting; });
    std::vector<Fault> chosen;
    const std::size_t step = std::max<std::size_t>(1, all.size() / some);
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
    const std::size_t share =
        options.faults ? std::max<std::size_t>(1, options.faults / (Operations().size() + 1)) : 0;
    int faults = 0, met = 0;
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
        met += tally.met;
    }
    if (options.only.empty() || options.only == "start") {
        const auto calls = campaigner.RehearseStart();
        if (options.lists) list("start", calls);
        Tally tally;
        for (const Fault& fault : Spread(AllFaults(calls), share, &phase)) campaigner.TryStart(fault, tally);
        Report("start", calls.size(), tally);
        faults += tally.faults;
        met += tally.met;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::printf("%d faults, of which %d met a call, in %.1f s, %.0f a second\n", faults, met, took.count(),
                met / took.count());
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
