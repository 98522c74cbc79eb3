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
#include <sys/mount.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cstdio>
#include <fstream>
#include <string_view>

#include "disk-trials.h"

namespace {

using namespace Campaign;

constexpr unsigned long kShort = 4;  // sizes

// Of each store the operation that is tried in the short form while it is locked.
struct Lock {
    const Store& store;
    std::string_view operation;
};
constexpr Lock kLocks[] = {
    {kKeys,        "current face"   },
    {kPreferences, "evaluation save"},
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

// A trial of each operation.
struct Trial {
    const char* name;
    void (*run)(DiskTrials&, const Operation&);
};

constexpr Trial kTrials[] = {
    {"start on a read-only disk", [](DiskTrials& t, const Operation& o) { t.TryReadOnlyStart(o); }        },
    {"read-only area",            [](DiskTrials& t, const Operation& o) { t.TryReadOnly(o, kArea); }      },
    {"read-only root",            [](DiskTrials& t, const Operation& o) { t.TryReadOnly(o, ""); }         },
    {"empty areas",               [](DiskTrials& t, const Operation& o) { t.TryEmptyAreas(o); }           },
    {"folders moved away",        [](DiskTrials& t, const Operation& o) { t.TryMovedFolders(o); }         },
    {"folders made anew",         [](DiskTrials& t, const Operation& o) { t.TryNewFolders(o); }           },
    {"damaged keys",              [](DiskTrials& t, const Operation& o) { t.TryDamaged(o, kKeys); }       },
    {"damaged preferences",       [](DiskTrials& t, const Operation& o) { t.TryDamaged(o, kPreferences); }},
};

void TryLockedDatabases(DiskTrials& trials, bool isShort)
{
    for (const auto& [store, shortOperation] : kLocks) {
        trials.Name(std::string("locked ") + store.path);
        for (const Operation& operation : Operations()) {
            if (!isShort || operation.name == shortOperation) trials.TryLocked(operation, store);
        }
    }
}

int Run(const std::string& prefix, unsigned long sizes)
{
    DiskTrials trials(prefix);
    const auto begin = TestSupport::Clock::now();
    trials.Name("full disk");
    for (const Operation& operation : Operations()) {
        for (unsigned long pages = 0; pages < sizes; ++pages) trials.TryFullDisk(operation, pages);
    }
    trials.Name("start on a full disk");
    for (unsigned long pages = 0; pages < sizes; ++pages) trials.TryStartOnFullDisk(pages);
    for (const Trial& trial : kTrials) {
        trials.Name(trial.name);
        for (const Operation& operation : Operations()) trial.run(trials, operation);
    }
    trials.Name("start with a damaged database");
    for (const Store& store : kStores) trials.TryDamagedStart(store);
    TryLockedDatabases(trials, sizes <= kShort);
    const double seconds = TestSupport::Microseconds(TestSupport::Clock::now() - begin) / 1e6;
    std::printf("%d trials in %.1f s, %d operations not done; with a locked database one took %.1f s\n",
                trials.Tried(), seconds, trials.NotDone(), trials.Longest());
    bool isClean = trials.IsClean() && trials.NotDone() > 0;
    for (const Store& store : kStores) {
        std::printf("%s set aside as damaged in %d\n", store.path, trials.SetAside(store));
        isClean = isClean && trials.SetAside(store) > 0;
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
