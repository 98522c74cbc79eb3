// A disk that is full, read-only, or has lost folders, and databases that are locked or damaged: under a
// running service, which goes on when all is well again.
//
//     disk-campaign PREFIX [--sizes N]
//
// Every operation is tried on a disk with 0 to N - 1 free pages. What may not happen ends the campaign as
// failed: a file or value that is neither as before nor as after, a success that the log knows better, an
// end of the service, an operation that does not succeed afterwards without a restart.

#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "a-tried-watch.h"

namespace {

using namespace Campaign;
namespace fs = std::filesystem;

constexpr unsigned long kPage = 4096;
constexpr char kPlenty[] = "size=64m";
constexpr char kKeys[] = "common/keys.db";
constexpr char kArea[] = "apps/com.corvane.watchface/shared";
const Operation& kChange = Operations().back();  // of the current face: it writes values alone

void WriteLine(const char* file, const std::string& line)
{
    std::ofstream(file) << line;
}

// May mount, for itself alone.
bool HaveMountsOfOurOwn()
{
    const uid_t user = getuid();
    const gid_t group = getgid();
    if (unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) != 0) return false;
    if (user != 0) {
        WriteLine("/proc/self/setgroups", "deny");
        WriteLine("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
        WriteLine("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    }
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

class Campaigner {
public:
    explicit Campaigner(const std::string& prefix) : mWatch(prefix)
    {
        if (mount("disk", mWatch.Root().c_str(), "tmpfs", 0, kPlenty) != 0)
            throw std::runtime_error("no disk");
        Start();
        mFormer = FormerState(mWatch);
        for (const Operation& operation : Operations()) Rehearse(operation);
    }

    ~Campaigner()
    {
        mWatch.Service().Kill();
        umount2(mWatch.Root().c_str(), MNT_DETACH);
    }

    void TryFullDisk(const Operation& operation, unsigned long freePages)
    {
        Begin(operation);
        Remount(Limit(freePages));
        Attempt();
        Remount(kPlenty);
        Judge();
        TryAgain();
    }

    void TryStartOnFullDisk(unsigned long freePages)
    {
        Begin(kChange);
        mWatch.Stop();
        Remount(Limit(freePages));
        if (mWatch.Start()) mWatch.Settle();
        Remount(kPlenty);
        LookForDamage(mFormer);
        if (!mWatch.IsRunning()) Start();
        TryAgain();
    }

    void TryReadOnlyArea(const Operation& operation)
    {
        Begin(operation);
        const std::string area = mWatch.Root() + "/" + kArea;
        mount(area.c_str(), area.c_str(), nullptr, MS_BIND, nullptr);
        mount(nullptr, area.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr);
        Attempt();
        umount2(area.c_str(), MNT_DETACH);
        Judge();
        TryAgain();
    }

    void TryReadOnlyStart()
    {
        Begin(kChange);
        mWatch.Stop();
        if (mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
            Violation("the disk does not become read-only");
        Start();
        kChange.run(mWatch);
        mWatch.Settle();
        mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT, nullptr);
        LookForDamage(mFormer);
        TryAgain();
    }

    void TryMissingFolders(const Operation& operation)
    {
        Begin(operation);
        for (const char* area : {"data", "trusted"}) {
            for (const auto& entry : fs::directory_iterator(mWatch.Root() + "/" + kArea + "/" + area))
                fs::remove_all(entry);
        }
        Attempt();
        mWatch.Restore(mFormer);
        TryAgain();
    }

    // Somebody holds the keys and does not give them up.
    double TryLockedDatabase(const Operation& operation)
    {
        Begin(operation);
        sqlite3* holder = nullptr;
        sqlite3_open((mWatch.Root() + "/" + kKeys).c_str(), &holder);
        sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
        const double took = TestSupport::TimeOf([&] { operation.run(mWatch); }) / 1e6;
        sqlite3_close(holder);
        mWatch.Settle();
        LookForDamage(mLatter.at(operation.name));
        TryAgain();
        return took;
    }

    // What the keys hold is lost; new ones are kept.
    void TryDamagedDatabase()
    {
        Begin(kChange);
        std::fstream file(mWatch.Root() + "/" + kKeys, std::ios::in | std::ios::out | std::ios::binary);
        file << std::string(2 * kPage, 'x');
        file.close();
        fs::remove(mWatch.Root() + "/" + kKeys + "-wal");  // which has the whole of so small a file
        for (int i = 0; i < 2; ++i) {
            kChange.run(mWatch);
            mWatch.Settle();
        }
        if (!mWatch.IsRunning()) return Violation("ends");
        const State now = mWatch.Look();
        for (const auto& [path, content] : mLatter.at(kChange.name)) {
            if (const auto value = now.find(path); value == now.end() || value->second != content)
                Violation("is not kept afterwards: " + path);
        }
        for (const auto& entry : fs::directory_iterator(mWatch.Root() + "/common")) {
            if (entry.path().string().find(".damaged-") != std::string::npos) fs::remove(entry);
        }
    }

    void Name(const char* trial) { mTrial = trial; }
    int Tried() const { return mTried; }
    int Undone() const { return mUndone; }  // trials in which the disk kept an operation from being done
    bool IsClean() const { return mViolations == 0; }

private:
    void Start()
    {
        if (!mWatch.Start()) throw std::runtime_error("the service does not start");
        mWatch.Settle();
    }

    void Rehearse(const Operation& operation)
    {
        mWatch.Restore(mFormer);
        operation.run(mWatch);
        mWatch.Settle();
        mLatter[operation.name] = mWatch.Look();
    }

    void Begin(const Operation& operation)
    {
        mOperation = &operation;
        ++mTried;
        if (!mWatch.IsRunning()) Start();
        mWatch.Restore(mFormer);
    }

    std::string Limit(unsigned long freePages) const
    {
        struct statvfs disk {};
        statvfs(mWatch.Root().c_str(), &disk);
        return "size=" + std::to_string((disk.f_blocks - disk.f_bfree + freePages) * kPage);
    }

    void Remount(const std::string& options)
    {
        if (mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT, options.c_str()) != 0)
            Violation("the disk does not change to " + options);
    }

    void Attempt()
    {
        mLogged = mWatch.LogSize();
        mAnswer = mOperation->run(mWatch);
        mWatch.Settle();
        if (!mWatch.IsRunning()) Violation("ends");
    }

    // With space to look at the databases.
    void Judge()
    {
        const State& latter = mLatter.at(mOperation->name);
        const State now = LookForDamage(latter);
        if (now != latter) ++mUndone;
        if (mAnswer == Answer::kSuccess && now != latter &&
            mWatch.LogFrom(mLogged).find("E/platform") == std::string::npos) {
            Violation("succeeds without having done all, and logs no fault");
        }
    }

    void TryAgain()
    {
        mWatch.Restore(mFormer);
        const Answer answer = mOperation->run(mWatch);
        mWatch.Settle();
        if (answer == Answer::kFailure) Violation("fails afterwards");
        if (mWatch.Look() != mLatter.at(mOperation->name)) Violation("does not do all afterwards");
    }

    State LookForDamage(const State& latter)
    {
        const State now = mWatch.Look();
        if (!mWatch.AreDatabasesWhole()) Violation("a database is damaged or set aside");
        for (const auto& [path, content] : now) {
            const auto is = [&](const State& state) {
                const auto found = state.find(path);
                return found != state.end() && found->second == content;
            };
            if (!is(mFormer) && !is(latter) && !mWatch.IsShipped(path, content))
                Violation("is neither as before nor as after: " + path);
        }
        for (const auto& [path, content] : mFormer) {
            if (latter.contains(path) && !now.contains(path)) Violation("is lost: " + path);
        }
        for (const std::string& path : mWatch.Leftovers()) Violation("is left: " + path);
        return now;
    }

    void Violation(const std::string& what)
    {
        ++mViolations;
        std::printf("! %s, %s: %s\n", mTrial, mOperation->name, what.c_str());
        std::fflush(stdout);
    }

    TriedWatch mWatch;
    State mFormer;
    std::map<std::string, State> mLatter;  // by operation
    const Operation* mOperation = &kChange;
    const char* mTrial = "";
    Answer mAnswer = Answer::kNone;
    std::size_t mLogged = 0;  // before the attempt
    int mTried = 0, mUndone = 0, mViolations = 0;
};

int Run(const std::string& prefix, unsigned long sizes)
{
    Campaigner campaigner(prefix);
    const auto begin = TestSupport::Clock::now();
    campaigner.Name("full disk");
    for (const Operation& operation : Operations()) {
        for (unsigned long pages = 0; pages < sizes; ++pages) campaigner.TryFullDisk(operation, pages);
    }
    campaigner.Name("start on a full disk");
    for (unsigned long pages = 0; pages < sizes; ++pages) campaigner.TryStartOnFullDisk(pages);
    campaigner.Name("read-only area");
    for (const Operation& operation : Operations()) campaigner.TryReadOnlyArea(operation);
    campaigner.Name("start on a read-only disk");
    campaigner.TryReadOnlyStart();
    campaigner.Name("missing folders");
    for (const Operation& operation : Operations()) campaigner.TryMissingFolders(operation);
    campaigner.Name("locked keys");
    const double longest = campaigner.TryLockedDatabase(kChange);
    campaigner.Name("damaged keys");
    campaigner.TryDamagedDatabase();
    const double seconds = TestSupport::Microseconds(TestSupport::Clock::now() - begin) / 1e6;
    std::printf("%d trials in %.1f s, %d operations not done; with locked keys one took %.1f s\n",
                campaigner.Tried(), seconds, campaigner.Undone(), longest);
    return campaigner.IsClean() && campaigner.Undone() > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App parser("Takes the disk of a service of its own away.");
    std::string prefix;
    unsigned long sizes = 4;
    parser.add_option("prefix", prefix, "a build tree")->required();
    parser.add_option("--sizes", sizes, "of the free space, in pages from 0")->capture_default_str();
    CLI11_PARSE(parser, argc, argv);
    if (!CanGatePrograms() || !HaveMountsOfOurOwn()) {
        std::printf("left out: nothing can be mounted here, or system calls cannot be watched\n");
        return kSkipped;
    }
    try {
        return Run(prefix, sizes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "disk: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
