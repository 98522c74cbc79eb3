// A disk that is full, read-only, or has lost folders, and databases that are locked or damaged: under a
// running service, which goes on when all is well again.
//
//     disk-campaign PREFIX [--sizes N]
//
// Every operation is tried on a disk with 0 to N - 1 free pages; with more than 4, also with each database
// locked. What may not happen ends the campaign as failed: a file or value that is neither as before nor as
// after, a success that leaves undone what it promises, something undone of which the log has no line, a
// question without an answer, an end of the service, an operation that does not succeed afterwards without a
// restart.

#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <vector>

#include "a-tried-watch.h"

namespace {

using namespace Campaign;
namespace fs = std::filesystem;

constexpr unsigned long kPage = 4096;
constexpr unsigned long kShort = 4;  // sizes
constexpr char kPlenty[] = "size=64m";
constexpr char kArea[] = "apps/com.corvane.watchface/shared";
constexpr const char* kFolders[] = {
    // that the service is confined to
    "apps/com.corvane.watchface/shared/data",
    "apps/com.corvane.watchface/shared/trusted",
    "common",
};
constexpr double kLongestLocked = 10;            // seconds
const Operation& kChange = Operations().back();  // of the current face: it writes values alone

struct Store {
    const char* label;  // of its values in a State
    const char* path;
    const char* locked;  // the operation that is tried in the short form
};
constexpr Store kStores[] = {
    {"KEYS:",        "common/keys.db",                              "current face"   },
    {"PREFERENCES:", "apps/com.corvane.watchface-service/prefs.db", "evaluation save"},
};

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
        mWatch.Restore(mFormer);
        mWatch.Stop();
        Copy(mWatch.Root(), mKept.Path());
        Start();
    }

    ~Campaigner()
    {
        if (mWatch.IsRunning()) mWatch.Service().Kill();
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
        mLogged = mWatch.LogSize();
        if (mWatch.Start())
            mWatch.Settle();
        else
            JudgeEnd();
        Remount(kPlenty);
        LookForDamage(mFormer);
        if (!mWatch.IsRunning()) Start();
        TryAgain();
    }

    // Of the root itself, what is open already can be written all the same.
    void TryReadOnly(const Operation& operation, const char* folder)
    {
        Begin(operation);
        const std::string path = mWatch.Root() + "/" + folder;
        mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr);
        if (mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0)
            Violation("the folder does not become read-only");
        Attempt();
        umount2(path.c_str(), MNT_DETACH);
        Judge();
        TryAgain();
    }

    // It stores nothing.
    void TryReadOnlyStart(const Operation& operation)
    {
        Begin(operation);
        mWatch.Stop();
        if (mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
            Violation("the disk does not become read-only");
        Start();
        mLogged = mWatch.LogSize();
        Attempt();
        mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT, nullptr);
        if (mWatch.Look() != mFormer) Violation("stores something");
        Judge();
        TryAgain();
    }

    // What lies in the areas is gone, and nothing of it is missed.
    void TryEmptyAreas(const Operation& operation)
    {
        Begin(operation);
        for (const char* area : {"data", "trusted"}) Clear(mWatch.Root() + "/" + kArea + "/" + area);
        Attempt();
        if (MakesSomething() && mAnswer == Answer::kFailure) Violation("fails");
        for (const std::string& path : EffectsUndone(mWatch.Look())) Violation("is not made: " + path);
        TryAgain();
    }

    // The folders themselves are elsewhere for a while.
    void TryMovedFolders(const Operation& operation)
    {
        Begin(operation);
        for (const char* folder : kFolders) fs::rename(At(folder), At(folder) + ".away");
        Attempt();
        for (const char* folder : kFolders) {
            fs::remove_all(At(folder));
            fs::rename(At(folder) + ".away", At(folder));
        }
        JudgeMade();
        TryAgain();
    }

    // Others stand in the place of the folders, with the same in them: a program that was confined to the
    // former ones has them when it starts again.
    void TryNewFolders(const Operation& operation)
    {
        Begin(operation);
        for (const char* folder : kFolders) {
            fs::rename(At(folder), At(folder) + ".away");
            Copy(At(folder) + ".away", At(folder));
            fs::remove_all(At(folder) + ".away");
        }
        Attempt();
        mWatch.Stop();
        Judge();
        Start();
        TryAgain();
    }

    // Somebody holds a database and does not give it up.
    void TryLocked(const Operation& operation, const Store& store)
    {
        Begin(operation);
        sqlite3* holder = nullptr;
        sqlite3_open(At(store.path).c_str(), &holder);
        if (sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) != SQLITE_OK)
            Violation("the database cannot be locked");
        const double took = TestSupport::TimeOf([&] { Attempt(); }) / 1e6;
        sqlite3_close(holder);
        if (took > kLongestLocked) Violation("takes " + std::to_string(took) + " s");
        mLongest = std::max(mLongest, took);
        Judge();
        TryAgain();
    }

    // A database is damaged under the running service: what it holds is lost, what is written then is kept.
    void TryDamaged(const Operation& operation, const Store& store)
    {
        Begin(operation);
        Damage(store);
        Attempt();
        mWatch.Stop();
        JudgeDamaged(store);
    }

    void TryDamagedStart(const Store& store)
    {
        Begin(kChange);
        mWatch.Stop();
        Damage(store);
        Start();
        Attempt();
        mWatch.Stop();
        if (!IsSetAside(store)) Violation("starts with a damaged database");
        JudgeDamaged(store);
    }

    void Name(const std::string& trial) { mTrial = trial; }
    int Tried() const { return mTried; }
    // Trials in which the disk kept an operation from being done.
    int Undone() const { return mUndone; }
    double Longest() const { return mLongest; }  // seconds, with a database that is locked
    int SetAside(const Store& store) const { return mSetAside.at(store.label); }
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
        mLogged = mWatch.LogSize();
    }

    std::string At(const char* path) const { return mWatch.Root() + "/" + path; }
    const State& Latter() const { return mLatter.at(mOperation->name); }

    static void Clear(const std::string& folder)
    {
        std::vector<fs::path> entries(fs::directory_iterator(folder), {});
        for (const fs::path& entry : entries) fs::remove_all(entry);
    }

    static void Copy(const std::string& from, const std::string& to)
    {
        fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    }

    bool IsSetAside(const Store& store) const
    {
        const fs::directory_iterator folder(fs::path(At(store.path)).parent_path());
        return std::any_of(begin(folder), end(folder), [](const auto& entry) {
            return entry.path().string().find(".damaged-") != std::string::npos;
        });
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
        mAnswer = mOperation->run(mWatch);
        mWatch.Settle();
        if (!mWatch.IsRunning()) Violation("ends");
        if (mOperation->isAnswered && mAnswer == Answer::kNone) Violation("does not answer");
    }

    bool IsFaultLogged() const { return mWatch.LogFrom(mLogged).find("E/platform") != std::string::npos; }

    // A start that did not come to its end.
    void JudgeEnd()
    {
        const int status = mWatch.Service().Status().value_or(0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) == 0)
            Violation("ends badly, status " + std::to_string(status));
        if (!IsFaultLogged()) Violation("ends, and logs no fault");
        ++mUndone;
    }

    // With space to look at the databases.
    void Judge() { JudgeUndone(Campaign::Undone(LookForDamage(Latter()), Latter())); }

    // What was not there could not be removed.
    void JudgeMade()
    {
        std::vector<std::string> undone = Campaign::Undone(LookForDamage(Latter()), Latter());
        std::erase_if(undone, [this](const std::string& path) { return !Latter().contains(path); });
        JudgeUndone(undone);
    }

    void JudgeUndone(const std::vector<std::string>& undone)
    {
        if (undone.empty()) return;
        ++mUndone;
        if (!IsFaultLogged()) Violation("does not do all, and logs no fault: " + undone.front());
        if (mAnswer != Answer::kSuccess) return;
        for (const std::string& path : undone) {
            const auto isEndOfIt = [&](const char* end) { return path.ends_with(end); };
            if (std::ranges::none_of(mOperation->untested, isEndOfIt)) Violation("succeeds without " + path);
        }
    }

    // A face that is not there cannot be deleted.
    bool MakesSomething() const
    {
        const std::vector<std::string> effects = Campaign::Undone(mFormer, Latter());
        return std::ranges::any_of(effects, [this](const auto& path) { return Latter().contains(path); });
    }

    // What the operation does, and has not done.
    std::vector<std::string> EffectsUndone(const State& now) const
    {
        const std::vector<std::string> effects = Campaign::Undone(mFormer, Latter());
        std::vector<std::string> undone = Campaign::Undone(now, Latter());
        std::erase_if(undone, [&](const std::string& path) {
            return std::ranges::find(effects, path) == effects.end();
        });
        return undone;
    }

    // A file in its place, so that what is known of the former is of no use to anybody.
    void Damage(const Store& store)
    {
        const std::string path = At(store.path);
        std::ofstream(path + ".new", std::ios::binary) << std::string(2 * kPage, 'x');
        fs::rename(path + ".new", path);
        for (const char* end : {"-wal", "-shm"}) fs::remove(path + end);
    }

    // When the service has stopped.
    void JudgeDamaged(const Store& store)
    {
        if (IsSetAside(store)) {
            ++mSetAside[store.label];
            if (mWatch.LogFrom(mLogged).find("was damaged") == std::string::npos)
                Violation("sets a database aside, and does not log it");
        } else {  // nobody has asked it
            fs::copy_file(mKept.Path() + "/" + store.path, At(store.path),
                          fs::copy_options::overwrite_existing);
        }
        const State now = mWatch.Look();
        for (const std::string& path : EffectsUndone(now)) Violation("is not kept afterwards: " + path);
        for (const std::string& path : Campaign::Undone(now, Latter())) {
            // Without its preferences the service takes this start for the first, and draws all faces.
            const bool isNew = now.contains(path) && mWatch.IsShipped(path, now.at(path));
            if (!path.starts_with(store.label) && !isNew) Violation("is lost with a database: " + path);
        }
        Clear(mWatch.Root());
        Copy(mKept.Path(), mWatch.Root());
        Start();
        TryAgain();
    }

    void TryAgain()
    {
        mWatch.Restore(mFormer);
        const Answer answer = mOperation->run(mWatch);
        mWatch.Settle();
        const bool isRight = mOperation->isAnswered ? answer == Answer::kSuccess : answer != Answer::kFailure;
        if (!isRight) Violation("fails afterwards");
        if (mWatch.Look() != Latter()) Violation("does not do all afterwards");
    }

    State LookForDamage(const State& latter)
    {
        const State now = mWatch.Look();
        if (!mWatch.AreDatabasesWhole()) Violation("a database is damaged or set aside");
        for (const auto& file : now) {
            const auto is = [&file](const State& state) {
                const auto found = state.find(file.first);
                return found != state.end() && found->second == file.second;
            };
            if (!is(mFormer) && !is(latter) && !mWatch.IsShipped(file.first, file.second))
                Violation("is neither as before nor as after: " + file.first);
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
        std::printf("! %s, %s: %s\n", mTrial.c_str(), mOperation->name, what.c_str());
        std::fflush(stdout);
    }

    TriedWatch mWatch;
    TestSupport::TemporaryFolder mKept{"/dev/shm"};  // the disk as it is at first
    State mFormer;
    std::map<std::string, State> mLatter;  // by operation
    std::map<std::string, int> mSetAside{
        {kStores[0].label, 0},
        {kStores[1].label, 0}
    };
    const Operation* mOperation = &kChange;
    std::string mTrial;
    Answer mAnswer = Answer::kNone;
    std::size_t mLogged = 0;  // before the attempt
    double mLongest = 0;
    int mTried = 0, mUndone = 0, mViolations = 0;
};

// A trial of each operation.
struct Trial {
    const char* name;
    void (*run)(Campaigner&, const Operation&);
};

constexpr Trial kTrials[] = {
    {"read-only area",      [](Campaigner& c, const Operation& o) { c.TryReadOnly(o, kArea); }    },
    {"read-only root",      [](Campaigner& c, const Operation& o) { c.TryReadOnly(o, ""); }       },
    {"empty areas",         [](Campaigner& c, const Operation& o) { c.TryEmptyAreas(o); }         },
    {"folders moved away",  [](Campaigner& c, const Operation& o) { c.TryMovedFolders(o); }       },
    {"folders made anew",   [](Campaigner& c, const Operation& o) { c.TryNewFolders(o); }         },
    {"damaged keys",        [](Campaigner& c, const Operation& o) { c.TryDamaged(o, kStores[0]); }},
    {"damaged preferences", [](Campaigner& c, const Operation& o) { c.TryDamaged(o, kStores[1]); }},
};

void TryLockedDatabases(Campaigner& campaigner, bool isShort)
{
    for (const Store& store : kStores) {
        campaigner.Name(std::string("locked ") + store.path);
        for (const Operation& operation : Operations()) {
            if (!isShort || operation.name == std::string(store.locked))
                campaigner.TryLocked(operation, store);
        }
    }
}

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
    campaigner.Name("start on a read-only disk");
    for (const Operation& operation : Operations()) campaigner.TryReadOnlyStart(operation);
    for (const Trial& trial : kTrials) {
        campaigner.Name(trial.name);
        for (const Operation& operation : Operations()) trial.run(campaigner, operation);
    }
    campaigner.Name("start with a damaged database");
    for (const Store& store : kStores) campaigner.TryDamagedStart(store);
    TryLockedDatabases(campaigner, sizes <= kShort);
    const double seconds = TestSupport::Microseconds(TestSupport::Clock::now() - begin) / 1e6;
    std::printf("%d trials in %.1f s, %d operations not done; with a locked database one took %.1f s\n",
                campaigner.Tried(), seconds, campaigner.Undone(), campaigner.Longest());
    bool isClean = campaigner.IsClean() && campaigner.Undone() > 0;
    for (const Store& store : kStores) {
        std::printf("%s set aside as damaged in %d\n", store.path, campaigner.SetAside(store));
        isClean = isClean && campaigner.SetAside(store) > 0;
    }
    return isClean ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App parser("Takes the disk of a service of its own away.");
    std::string prefix;
    unsigned long sizes = kShort;
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
