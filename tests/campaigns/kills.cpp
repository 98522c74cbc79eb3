// Kills the service at each of its system calls that reach a file, a database or the bus, in every operation,
// and starts it again.
//
//     kills-campaign PREFIX [--kills N] [--only OPERATION]
//
// N kills are spread over all calls (0: every one). What may not happen ends the campaign as failed: an
// answered change that is lost, a file or value that is neither as before nor as after, a damaged database, a
// service that does not start again or does not do the same operation then. Where something is left half
// done, the doctor mends it: what it found is printed, and it must find nothing afterwards.

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "a-tried-watch.h"
#include "stored-values.h"

namespace {

using namespace Campaign;

constexpr std::size_t kNever = SIZE_MAX;

// Counts calls, and kills at one of them; nothing is under way while it only waits.
struct Killer {
    std::size_t at = kNever;
    std::atomic<std::size_t> calls = 0;

    int operator()(const PendingCall& call)
    {
        if (call.call.kind != CallKind::kWait && calls++ == at) kill(call.process, SIGKILL);
        return 0;
    }
};

class Campaigner {
public:
    explicit Campaigner(const std::string& prefix) : mWatch(prefix)
    {
        if (!mWatch.Start()) throw std::runtime_error("the service does not start");
        mFormer = FormerState(mWatch);
        const auto first = mWatch.RunTool({"doctor"});
        if (first.status != 0) throw std::runtime_error("the watch is not healthy: " + first.output);
    }

    // The number of an operation's calls when it goes well; the state afterwards is what it leads to.
    std::size_t Rehearse(const Operation& operation)
    {
        mOperation = operation.name;
        Renew();
        const auto killer = Send(kNever);
        operation.run(mWatch);
        mWatch.Settle();
        mLatter = mWatch.Look();
        return killer->calls;
    }

    std::size_t RehearseStart()
    {
        mOperation = "start";
        mWatch.Stop();
        mWatch.Restore(mFormer);
        mLatter = mFormer;
        const auto killer = std::make_shared<Killer>();
        mWatch.Start([killer](const PendingCall& call) { return (*killer)(call); });
        mWatch.Settle();
        return killer->calls;
    }

    void Kill(const Operation& operation, std::size_t at)
    {
        mAt = at;
        Renew();
        Send(at);
        const Answer answer = operation.run(mWatch);
        if (!mWatch.Service().WaitForEnd(std::chrono::milliseconds(20))) mWatch.Settle();
        if (!mWatch.IsRunning()) ++mKills;
        const std::vector<std::string> announced = mWatch.TakeAnnouncedKeys();
        const State now = LookForDamage();
        const bool isHalfDone = !mWatch.Leftovers().empty() || (now != mFormer && now != mLatter);
        const bool isForDoctor = isHalfDone && !mWatch.IsRunning();
        if (isForDoctor) mWatch.KeepRoot();
        if (answer == Answer::kSuccess && now != mLatter) Violation("an answered change is lost");
        for (const std::string& key : announced) {
            const std::string name = kKeys.label + key;
            if (mLatter.contains(name) && now.at(name) != mLatter.at(name))
                Violation("an announced key is lost: " + key);
        }
        StartAgain();
        JudgeHeldBackgrounds(operation, now);
        if (now != mLatter) RunAgain(operation);
        if (!isForDoctor) return;
        mWatch.Stop();
        mWatch.BringRootBack();
        CallDoctor();
        RunAgain(operation);
    }

    void KillStart(std::size_t at)
    {
        mAt = at;
        if (mWatch.IsRunning()) mWatch.Stop();
        const auto killer = std::make_shared<Killer>();
        killer->at = at;
        mWatch.Start([killer](const PendingCall& call) { return (*killer)(call); });
        if (mWatch.IsRunning()) mWatch.Settle();
        if (!mWatch.IsRunning()) ++mKills;
        LookForDamage();
        StartAgain();
        if (mWatch.Look() != mFormer) Violation("something changed");
    }

    bool IsClean() const { return mViolations == 0; }
    int Kills() const { return mKills; }  // those that met a running service
    int Leftovers() const { return mLeftovers; }

    void PrintFindings() const
    {
        std::printf("the doctor came %d times and found:", mVisits);
        for (const auto& [code, times] : mFindings) std::printf(" %s %d", code.c_str(), times);
        std::printf("\n");
    }

private:
    void Renew()
    {
        mWatch.Stop();  // nothing is open, and nothing held, as when it was killed
        mWatch.Restore(mFormer);
        if (!mWatch.Start()) Violation("does not start");
        mWatch.Settle();
        mWatch.TakeAnnouncedKeys();
    }

    std::shared_ptr<Killer> Send(std::size_t at)
    {
        const auto killer = std::make_shared<Killer>();
        killer->at = at;
        mWatch.Service().Watch([killer](const PendingCall& call) { return (*killer)(call); });
        return killer;
    }

    void StartAgain()
    {
        if (!mWatch.IsRunning() && !mWatch.Start()) Violation("does not start again");
        mWatch.Settle();
    }

    // The same again, on what is there.
    void RunAgain(const Operation& operation)
    {
        if (mWatch.Look() == mLatter) return;  // a face that is gone cannot be deleted
        const Answer answer = operation.run(mWatch);
        mWatch.Settle();
        if (operation.isAnswered && answer != Answer::kSuccess) Violation("fails afterwards");
        for (const std::string& path : Undone(mWatch.Look(), mLatter)) {
            // The doctor has previews drawn where the operation brings none.
            if (mLatter.contains(path) || !path.ends_with(".png"))
                Violation("is not done afterwards: " + path);
        }
    }

    // What was held for a save goes with the process: a save alone finds nothing to do.
    void JudgeHeldBackgrounds(const Operation& operation, const State& now)
    {
        if (operation.run != SaveBackgrounds) return;
        if (SaveHeldBackgrounds(mWatch) != Answer::kSuccess) Violation("a save alone fails");
        mWatch.Settle();
        if (mWatch.Look() != now) Violation("a save alone changes something");
    }

    // What is moved away goes while no service runs; the service draws, so the doctor comes again then.
    void CallDoctor()
    {
        ++mVisits;
        CountFindings(mWatch.RunTool({"doctor", "--fix", "--json"}).output);
        StartAgain();
        mWatch.RunTool({"doctor", "--fix"});
        const auto last = mWatch.RunTool({"doctor"});
        if (last.status != 0) Violation("the doctor is not content: " + last.output);
        std::filesystem::remove_all(mWatch.Root() + "/lost+found");
        for (const std::string& path : mWatch.Leftovers()) Violation("the doctor leaves " + path);
    }

    void CountFindings(const std::string& report)
    {
        constexpr std::string_view kLabel = "\"code\": \"";
        for (std::size_t at = 0; (at = report.find(kLabel, at)) != std::string::npos;) {
            at += kLabel.size();
            ++mFindings[report.substr(at, report.find('"', at) - at)];
        }
    }

    State LookForDamage()
    {
        State now;
        try {
            now = mWatch.Look();
            if (!mWatch.AreDatabasesWhole()) Violation("a database is damaged or set aside");
        } catch (const std::runtime_error& error) {
            Violation(error.what());
            return mFormer;
        }
        for (const std::string& what : Damage(now, mFormer, mLatter)) Violation(what);
        mLeftovers += static_cast<int>(mWatch.Leftovers().size());
        return now;
    }

    void Violation(const std::string& what)
    {
        ++mViolations;
        std::printf("! %s, killed at call %zu: %s\n", mOperation, mAt, what.c_str());
        std::fflush(stdout);
    }

    TriedWatch mWatch;
    State mFormer, mLatter;
    const char* mOperation = "";
    std::size_t mAt = 0;
    int mViolations = 0, mKills = 0, mLeftovers = 0, mVisits = 0;
    std::map<std::string, int> mFindings;  // of the doctor, by their code
};

// Runs `killAt` for `share` of the calls, evenly; 0: all.
template <typename KillAt>
void KillAtCalls(const char* name, std::size_t calls, std::size_t share, const KillAt& killAt)
{
    const std::size_t step = share ? std::max<std::size_t>(1, calls / share) : 1;
    for (std::size_t at = 0; at < calls; at += step) killAt(at);
    std::printf("%-20s %4zu calls\n", name, calls);
    std::fflush(stdout);
}

int Run(const std::string& prefix, std::size_t most, const std::string& only)
{
    const auto begin = TestSupport::Clock::now();
    Campaigner campaigner(prefix);
    const std::size_t share = most ? std::max<std::size_t>(1, most / (Operations().size() + 1)) : 0;
    for (const Operation& operation : Operations()) {
        if (!only.empty() && only != operation.name) continue;
        const std::size_t calls = campaigner.Rehearse(operation);
        KillAtCalls(operation.name, calls, share, [&](std::size_t at) { campaigner.Kill(operation, at); });
    }
    if (only.empty() || only == "start") {
        const std::size_t calls = campaigner.RehearseStart();
        KillAtCalls("start", calls, share, [&](std::size_t at) { campaigner.KillStart(at); });
    }
    const double seconds = TestSupport::Microseconds(TestSupport::Clock::now() - begin) / 1e6;
    std::printf("%d kills in %.1f s, %.0f a second; %d unfinished files left\n", campaigner.Kills(), seconds,
                campaigner.Kills() / seconds, campaigner.Leftovers());
    campaigner.PrintFindings();
    return campaigner.IsClean() && campaigner.Kills() > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App parser("Kills a service of its own at its system calls.");
    std::string prefix, only;
    std::size_t kills = 60;
    parser.add_option("prefix", prefix, "a build tree")->required();
    parser.add_option("--kills", kills, "in all; 0: at every call")->capture_default_str();
    parser.add_option("--only", only, "one operation");
    CLI11_PARSE(parser, argc, argv);
    if (!CanGatePrograms()) {
        std::printf("left out: system calls cannot be watched here\n");
        return kSkipped;
    }
    try {
        return Run(prefix, kills, only);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kills: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
