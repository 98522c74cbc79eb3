#include "confinement-landlock.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "area-writers.h"
#include "bus-sdbus.h"
#include "platform-log.h"
#include "process.h"
#include "unique-fd.h"

namespace Platform {

namespace {

// The kernel's own, of which the oldest headers that this builds with know the first three levels only.
struct RulesetAttributes {
    uint64_t filesystem;
    uint64_t network;  // from level 4
    uint64_t scoped;   // from level 6
};
constexpr uint64_t kRefer = 1u << 13, kTruncate = 1u << 14, kDeviceControl = 1u << 15;
constexpr uint64_t kBindTcp = 1u << 0, kConnectTcp = 1u << 1;
constexpr uint64_t kAbstractSockets = 1u << 0, kSignals = 1u << 1;

constexpr uint64_t kRead = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr uint64_t kWrite = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG |
                            LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                            LANDLOCK_ACCESS_FS_REMOVE_DIR;
// Nobody needs these, anywhere.
constexpr uint64_t kNever = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                            LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                            LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
// Of what a rule for a folder says, this can be said of a file.
constexpr uint64_t kOfFile =
    LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate | kDeviceControl;

// What each level adds.
struct Level {
    int number;
    uint64_t write, never, network, scoped;
};
// clang-format off
constexpr Level kLevels[] = {
    {1, kWrite,    kNever,         0,                      0},
    {2, kRefer,    0,              0,                      0},
    {3, kTruncate, 0,              0,                      0},
    {4, 0,         0,              kBindTcp | kConnectTcp, 0},
    {5, 0,         kDeviceControl, 0,                      0},
    {6, 0,         0,              0,                      kAbstractSockets | kSignals},
};
// clang-format on
static_assert(kLevels[std::size(kLevels) - 1].number == kNewestLandlock);

Level Rights(int level)
{
    Level all{level, 0, 0, 0, 0};
    for (const Level& added : kLevels) {
        if (added.number > level) break;
        all.write |= added.write;
        all.never |= added.never;
        all.network |= added.network;
        all.scoped |= added.scoped;
    }
    return all;
}

// What a program cannot do without, wherever its watch is: its libraries, fonts, time zones and locales.
constexpr const char* kSystemPaths[] = {
    "/usr",         "/lib",      "/lib64",       "/etc",
    "/proc/self",   "/dev/null", "/dev/urandom", "/var/cache/fontconfig",
    "/run/systemd",
};

std::string FromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

bool ListensAbstractly()
{
    return BusAddress().find("abstract=") != std::string::npos ||
           FromEnvironment("NOTIFY_SOCKET").starts_with("@");
}

std::vector<std::string> Readable(const std::string& listed)
{
    std::vector<std::string> paths(std::begin(kSystemPaths), std::end(kSystemPaths));
    paths.push_back(CurrentAreas().root);
    paths.push_back(CurrentAreas().resources);
    paths.push_back(InstallPrefix());
    std::istringstream list(listed);
    for (std::string path; std::getline(list, path, ':');) {
        if (!path.empty()) paths.push_back(path);
    }
    return paths;
}

bool Failed(const char* what)
{
    PLATFORM_FAULT("could not confine the process: %s: %s", what, std::strerror(errno));
    return false;
}

// A path that is not there needs no rule.
bool Allow(const UniqueFd& ruleset, const std::string& path, uint64_t rights)
{
    const UniqueFd at(open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!at) return true;
    struct stat info {};
    if (fstat(at.Get(), &info) != 0) return Failed(path.c_str());
    landlock_path_beneath_attr rule{};
    rule.allowed_access = S_ISDIR(info.st_mode) ? rights : rights & kOfFile;
    rule.parent_fd = at.Get();
    if (syscall(SYS_landlock_add_rule, ruleset.Get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0) return true;
    return Failed(path.c_str());
}

UniqueFd MakeRuleset(const Confinement& confinement, const Level& rights)
{
    const uint64_t read = confinement.readable ? kRead : 0;
    RulesetAttributes attributes{rights.write | rights.never | read, rights.network, rights.scoped};
    if (confinement.needsAbstractSockets) attributes.scoped &= ~kAbstractSockets;
    // An older kernel refuses what it does not know, so it is told no more than it knows.
    const std::size_t size = rights.number >= 6   ? sizeof attributes
                             : rights.number >= 4 ? offsetof(RulesetAttributes, scoped)
                                                  : offsetof(RulesetAttributes, network);
    return UniqueFd(static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, size, 0)));
}

bool Restrict(const Confinement& confinement, int level)
{
    const Level rights = Rights(level);
    const UniqueFd ruleset = MakeRuleset(confinement, rights);
    if (!ruleset) return Failed("no rules");
    const uint64_t read = confinement.readable ? kRead : 0;
    for (const std::string& folder : confinement.writable) {
        if (!Allow(ruleset, folder, rights.write | read)) return false;
    }
    if (confinement.readable) {
        for (const std::string& path : *confinement.readable) {
            if (!Allow(ruleset, path, read)) return false;
        }
    }
    if (syscall(SYS_landlock_restrict_self, ruleset.Get(), 0) != 0) return Failed("the rules");
    return true;
}

// Sanitizers reserve more than any limit.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kLimitsData = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool kLimitsData = false;
#else
constexpr bool kLimitsData = true;
#endif
#else
constexpr bool kLimitsData = true;
#endif

bool LimitData()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_DATA, &limit) != 0) return Failed("the limit on memory");
    limit.rlim_cur = limit.rlim_max = std::min<rlim_t>(limit.rlim_max, kMostData);
    return setrlimit(RLIMIT_DATA, &limit) == 0 || Failed("the limit on memory");
}

}  // namespace

Confinement ConfinementOf(const std::string& appId)
{
    Confinement confinement;
    confinement.writable = WritableFolders(CurrentAreas(), appId);
    for (const std::string& folder : confinement.writable) {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error) PLATFORM_FAULT("could not make [%s]: %s", folder.c_str(), error.message().c_str());
    }
    const std::string listed = FromEnvironment("WATCH_READABLE");
    if (!listed.empty()) confinement.readable = Readable(listed);
    confinement.needsAbstractSockets = ListensAbstractly();
    return confinement;
}

bool Confine(const Confinement& confinement, int highest)
{
    if (kLimitsData && !LimitData()) return false;
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return Failed("privileges");
    const long known = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    const int level = std::min(static_cast<int>(known), highest);
    if (level < 1) {
        PLATFORM_NOTE("this kernel has no Landlock, so files are guarded by their permissions alone");
        return true;
    }
    return Restrict(confinement, level);
}

}  // namespace Platform
