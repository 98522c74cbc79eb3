#include "supervisor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>

#include "app-control.h"
#include "application-table.h"
#include "exit-status.h"
#include "launch-sdbus.h"
#include "log.h"
#include "private-watch.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Platform::UniqueFd;

constexpr Milliseconds kBusPatience{10'000};      // until the bus listens
constexpr Milliseconds kServicePatience{20'000};  // until the service is there
constexpr Milliseconds kProgramPatience{5'000};   // from SIGTERM to SIGKILL
constexpr Milliseconds kOrphanPatience{3'000};    // programs end by themselves without a bus
constexpr Milliseconds kShortLife{2'000};
constexpr int kMostShortLives = 5;
constexpr int kAddressFd = 3;

#define SUPERVISOR_LOG(priority, ...) __dlog_print(LOG_ID_SYSTEM, priority, "wfctl", __VA_ARGS__)

sigset_t Signals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGCHLD, SIGTERM, SIGINT}) sigaddset(&set, number);
    return set;
}

// Waits until one of the two is readable; false when the time is over. A negative time is for ever.
bool AwaitInput(const UniqueFd& fd, Milliseconds most, const UniqueFd& other = {})
{
    pollfd pollers[] = {
        {fd.Get(),    POLLIN, 0},
        {other.Get(), POLLIN, 0}
    };
    const int code = poll(pollers, std::size(pollers), static_cast<int>(most.count()));
    return code > 0 || (code < 0 && errno == EINTR);
}

// Readable when something in the watch's folder was removed.
UniqueFd RemovalsFrom(const WatchPaths& paths)
{
    UniqueFd removals(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (removals && inotify_add_watch(removals.Get(), paths.root.c_str(), IN_DELETE | IN_ONLYDIR) >= 0)
        return removals;
    SUPERVISOR_LOG(DLOG_ERROR, "the watch will not go down when its folder is removed: %s",
                   std::strerror(errno));
    return {};
}

// The watch in the open folder, wherever that is moved; nothing of another that comes to be at its path.
WatchPaths PathsIn(const UniqueFd& folder)
{
    return {"/proc/self/fd/" + std::to_string(folder.Get())};
}

void TakeAll(const UniqueFd& removals)
{
    alignas(inotify_event) char events[4096];
    while (read(removals.Get(), events, sizeof events) > 0) continue;
}

class Supervisor {
public:
    Supervisor(UniqueFd folder, UniqueFd removals, WatchState state, UniqueFd ready)
        : mFolder(std::move(folder)),
          mRemovals(std::move(removals)),
          mState(std::move(state)),
          mReady(std::move(ready)),
          mBusProgram(FindProgram("dbus-daemon"))
    {
        const sigset_t set = Signals();
        sigprocmask(SIG_BLOCK, &set, nullptr);
        mSignals = UniqueFd(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        mState.supervisor = MarkOf(getpid());
    }

    int Run();

private:
    bool StartBus();
    bool RecordBus() const;
    [[noreturn]] void BecomeBus(int addressFd) const;
    void StartService();
    void ReadSignals();
    void LookForState();
    bool Reap();
    bool BringBusBack();
    void AwaitNoPrograms();
    void EndPrograms(Milliseconds patience);
    void EndAll();
    void Say(const std::string& line);

    const UniqueFd mFolder;    // the watch's
    const UniqueFd mRemovals;  // from it
    WatchState mState;
    UniqueFd mReady;
    const std::string mBusProgram;
    UniqueFd mSignals;
    UniqueFd mBus;
    Clock::time_point mBusStarted;
    int mShortLives = 0;
    pid_t mStarter = 0;
    bool mBusEnded = false;
    bool mTold = false;     // to end
    bool mRemoved = false;  // the watch's state, or it is another's: nobody else will take this one down
    bool mServiceFailed = false;
};

void Supervisor::Say(const std::string& line)
{
    if (!mReady) return;
    const std::string text = line + "\n";
    if (write(mReady.Get(), text.data(), text.size()) < 0) return;  // whoever waited is gone
    mReady.Reset();
}

void Supervisor::BecomeBus(int addressFd) const
{
    // Without its supervisor the bus ends, and with it all programs.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != mState.supervisor.pid) _exit(EXIT_FAILURE);
    const sigset_t set = Signals();
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    if (addressFd == kAddressFd)
        fcntl(addressFd, F_SETFD, 0);
    else
        dup2(addressFd, kAddressFd);
    const std::string config = "--config-file=" + mState.BusConfig();
    const std::string print = "--print-address=" + std::to_string(kAddressFd);
    execl(mBusProgram.c_str(), "dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", print.c_str(),
          config.c_str(), nullptr);
    _exit(EXIT_FAILURE);
}

// Starts the bus and waits until it listens. False, too, when the watch's state was removed meanwhile.
bool Supervisor::StartBus()
{
    int pipeFds[2];
    if (pipe2(pipeFds, O_CLOEXEC) != 0) return false;
    const UniqueFd address(pipeFds[0]);
    UniqueFd theirs(pipeFds[1]);
    const pid_t pid = fork();
    if (pid == 0) BecomeBus(theirs.Get());
    theirs.Reset();
    if (pid < 0) return false;
    mState.bus = MarkOf(pid);
    mBus = OpenProcess(mState.bus);
    mBusStarted = Clock::now();
    mBusEnded = false;
    char text[512];
    const bool listens = AwaitInput(address, kBusPatience) && read(address.Get(), text, sizeof text) > 0;
    if (!listens) return false;
    LookForState();
    return !mTold && RecordBus();
}

bool Supervisor::RecordBus() const
{
    try {
        WriteState(PathsIn(mFolder), mState);
        return true;
    } catch (const Stop& stop) {
        SUPERVISOR_LOG(DLOG_ERROR, "%s", stop.what());
        return false;
    }
}

// A child asks the bus to start the service, so that nothing here has to wait.
void Supervisor::StartService()
{
    mStarter = fork();
    if (mStarter != 0) return;
    const sigset_t set = Signals();
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const auto deadline = Clock::now() + kServicePatience;
    int code = 0;
    do {
        code = Platform::StartApplication(mState.Address(), std::string(Platform::kServiceId));
    } while (code == APP_CONTROL_ERROR_TIMED_OUT && Clock::now() < deadline);
    if (code == 0) Say("ready");
    _exit(code == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
}

void Supervisor::ReadSignals()
{
    signalfd_siginfo info{};
    while (read(mSignals.Get(), &info, sizeof info) == sizeof info) {
        if (info.ssi_signo != SIGCHLD) mTold = true;
    }
}

// Who removes the folder of a watch that is up wants it to be down, and may have another up there by now.
void Supervisor::LookForState()
{
    TakeAll(mRemovals);
    const auto state = ReadState(PathsIn(mFolder));
    if (mRemoved || (state && state->runFolder == mState.runFolder)) return;
    SUPERVISOR_LOG(DLOG_ERROR, "the state of the watch at [%s] was removed; taking it down",
                   mState.root.c_str());
    mTold = mRemoved = true;
}

// Takes the ends of children; false when there are no children at all.
bool Supervisor::Reap()
{
    for (;;) {
        siginfo_t info{};
        if (waitid(P_ALL, 0, &info, WEXITED | WNOHANG) != 0) return errno != ECHILD;
        if (info.si_pid == 0) return true;
        if (info.si_pid == mState.bus.pid) mBusEnded = true;
        if (info.si_pid == mStarter) {
            mStarter = 0;
            mServiceFailed = info.si_code != CLD_EXITED || info.si_status != EXIT_SUCCESS;
        }
    }
}

// The programs of the watch, as opposed to the bus and its children that look after them.
void Supervisor::EndPrograms(Milliseconds patience)
{
    const std::string busProgram = ProgramOf(mState.bus.pid);
    std::vector<UniqueFd> programs;
    for (const ProcessMark& process : DescendantsOf(getpid())) {
        if (process.pid == mState.bus.pid || (!busProgram.empty() && ProgramOf(process.pid) == busProgram))
            continue;
        programs.push_back(OpenProcess(process));
        SendSignal(programs.back(), SIGTERM);
    }
    const auto deadline = Clock::now() + patience;
    for (const UniqueFd& program : programs) {
        if (!program) continue;
        const auto left = std::chrono::duration_cast<Milliseconds>(deadline - Clock::now());
        if (!AwaitEnd(program, std::max(left, Milliseconds(0)))) SendSignal(program, SIGKILL);
    }
}

// Without a bus the programs end by themselves; whoever does not is ended.
void Supervisor::AwaitNoPrograms()
{
    const auto deadline = Clock::now() + kOrphanPatience;
    while (Reap()) {
        const auto left = std::chrono::duration_cast<Milliseconds>(deadline - Clock::now());
        if (left.count() <= 0 || !AwaitInput(mSignals, left)) break;
        ReadSignals();
    }
    while (Reap()) {
        for (const ProcessMark& process : DescendantsOf(getpid())) SendSignal(OpenProcess(process), SIGKILL);
        AwaitInput(mSignals, Milliseconds(100));
        ReadSignals();
    }
}

void Supervisor::EndAll()
{
    EndPrograms(kProgramPatience);
    EndProcess(mBus, kOrphanPatience);
    AwaitNoPrograms();
}

bool Supervisor::BringBusBack()
{
    const bool shortLife = Clock::now() - mBusStarted < kShortLife;
    mShortLives = shortLife ? mShortLives + 1 : 0;
    SUPERVISOR_LOG(DLOG_ERROR, "the bus has ended; bringing it back at [%s]", mState.Address().c_str());
    AwaitNoPrograms();
    LookForState();
    if (!mTold && mShortLives < kMostShortLives && StartBus()) {
        StartService();
        return true;
    }
    if (!mTold) SUPERVISOR_LOG(DLOG_ERROR, "the bus could not be brought back; the watch is down");
    return false;
}

int Supervisor::Run()
{
    if (mBusProgram.empty() || !StartBus()) {
        Say("the bus could not be started");
        EndAll();
        return EXIT_FAILURE;
    }
    StartService();
    mReady.Reset();  // the starter holds its own
    bool first = true;
    bool wentWell = true;
    while (!mTold) {
        AwaitInput(mSignals, Milliseconds(-1), mRemovals);
        ReadSignals();
        LookForState();
        Reap();
        if (mBusEnded && !mTold && !BringBusBack()) break;
        if (mStarter == 0 && first) {
            first = false;
            wentWell = !mServiceFailed;
            if (!wentWell) break;
        }
    }
    EndAll();
    LookForState();
    if (mRemoved) RemoveRunFolder(mState);
    return wentWell ? EXIT_SUCCESS : EXIT_FAILURE;
}

// What the programs of the watch find in their environment.
void SetProgramEnvironment(const WatchState& state)
{
    for (const char* name :
         {"DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE", "NOTIFY_SOCKET", "WATCHDOG_PID", "WATCHDOG_USEC",
          "LISTEN_FDS", "LISTEN_PID", "LISTEN_FDNAMES", "JOURNAL_STREAM"}) {
        unsetenv(name);
    }
    setenv("DBUS_SESSION_BUS_ADDRESS", state.Address().c_str(), 1);
    setenv("WATCH_ROOT", state.root.c_str(), 1);
    setenv("WATCH_RESOURCES", state.resources.c_str(), 1);
}

}  // namespace

int Supervise(const std::string& root)
{
    UniqueFd ready(kReadyFd);
    fcntl(kReadyFd, F_SETFD, FD_CLOEXEC);
    UniqueFd folder(open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    UniqueFd removals = RemovalsFrom(PathsIn(folder));  // before the state is looked for: none goes by unseen
    auto state = ReadState(PathsIn(folder));
    if (!state) return EXIT_FAILURE;
    state->root = root;
    SetProgramEnvironment(*state);
    return Supervisor(std::move(folder), std::move(removals), *state, std::move(ready)).Run();
}

}  // namespace Wfctl
