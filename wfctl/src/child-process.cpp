#include "child-process.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>  // of glibc 2.36, which declares its functions as C++
}

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <utility>

#include "exit-status.h"
#include "interruptions.h"
#include "reading-files.h"

extern char** environ;

namespace Wfctl {

namespace {

struct ProcStat {
    pid_t parent = 0;
    uint64_t startTime = 0;
};

// /proc/PID/stat; nothing when the process is gone.
ProcStat ReadProcStat(pid_t pid)
{
    const std::string text = ReadableBytes("/proc/" + std::to_string(pid) + "/stat");
    // The name in parentheses may hold anything; the fields are counted from its end.
    const auto close = text.rfind(')');
    if (close == std::string::npos) return {};
    std::istringstream fields(text.substr(close + 1));
    constexpr int kParentField = 4;
    constexpr int kStartTimeField = 22;
    ProcStat stat;
    std::string word;
    for (int field = 3; field <= kStartTimeField && fields >> word; ++field) {
        if (field == kParentField) stat.parent = static_cast<pid_t>(std::strtol(word.c_str(), nullptr, 10));
        if (field == kStartTimeField) stat.startTime = std::strtoull(word.c_str(), nullptr, 10);
    }
    return stat;
}

// The process, or -1.
pid_t Spawn(const Command& command)
{
    std::string name = command.program;
    std::vector<std::string> arguments = command.arguments;
    std::vector<char*> words{name.data()};
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!command.errors.empty()) {
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, command.errors.c_str(),
                                         O_WRONLY | O_CREAT | O_APPEND, 0600);
    }
    pid_t pid = -1;
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // What we hold back is not held back there.
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    const int code = posix_spawn(&pid, name.c_str(), &actions, &attributes, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return code == 0 ? pid : -1;
}

sigset_t WithChildren(sigset_t set)
{
    sigaddset(&set, SIGCHLD);
    return set;
}

// Programs that are run; those that have not ended at the end of the scope are ended.
class Children {
public:
    explicit Children(const std::vector<Command>& commands)
        : mCommands(commands), mStatuses(commands.size(), -1)
    {
        // Who began us may have had it ignored; then the ends of programs would not be told.
        std::signal(SIGCHLD, SIG_DFL);
    }
    ~Children()
    {
        for (const auto& [pid, number] : mRunning) kill(pid, SIGTERM);
        for (const auto& [pid, number] : mRunning) {
            EndProcess(OpenProcess(MarkOf(pid)), kPatience);
            waitpid(pid, nullptr, WNOHANG);
        }
    }
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    std::vector<int> Run(unsigned atOnce, const std::function<void(std::size_t)>& onEnd)
    {
        const auto areLeft = [this] { return mNext < mCommands.size(); };
        while (areLeft() || !mRunning.empty()) {
            while (areLeft() && mRunning.size() < std::max(atOnce, 1U)) StartNext();
            if (!mRunning.empty()) Await();
            while (!mRunning.empty() && Reap()) {
                if (onEnd) onEnd(mNext - mRunning.size());
            }
        }
        return std::move(mStatuses);
    }

private:
    static constexpr Milliseconds kPatience{2000};

    void StartNext()
    {
        if (const pid_t pid = Spawn(mCommands[mNext]); pid > 0) mRunning[pid] = mNext;
        ++mNext;
    }

    // Until one of them may have ended.
    void Await() const
    {
        const int number = sigwaitinfo(&mAwaited, nullptr);
        if (number > 0 && number != SIGCHLD) throw Stop(Exit::kInterrupted, "");
    }

    // Whether one had ended.
    bool Reap()
    {
        int status = 0;
        const pid_t pid = waitpid(-1, &status, WNOHANG);
        if (pid < 0 && errno == ECHILD) mRunning.clear();
        const auto one = mRunning.find(pid);
        if (one == mRunning.end()) return pid > 0;
        if (WIFEXITED(status)) mStatuses[one->second] = WEXITSTATUS(status);
        mRunning.erase(one);
        return true;
    }

    const std::vector<Command>& mCommands;
    std::vector<int> mStatuses;
    std::map<pid_t, std::size_t> mRunning;
    std::size_t mNext = 0;
    const sigset_t mAwaited = WithChildren(Interruptions());
    const HeldSignals mHeld{mAwaited};
};

}  // namespace

ProcessMark MarkOf(pid_t pid)
{
    return {pid, ReadProcStat(pid).startTime};
}

Platform::UniqueFd OpenProcess(const ProcessMark& process)
{
    if (process.pid <= 0) return {};
    Platform::UniqueFd fd(pidfd_open(process.pid, 0));
    // Looked at after it is held: from here on the number cannot become another process's.
    if (fd && ReadProcStat(process.pid).startTime != process.startTime) fd.Reset();
    // One that has ended counts as gone, whether or not its parent has noticed.
    if (fd && AwaitEnd(fd, Milliseconds(0))) fd.Reset();
    return fd;
}

bool AwaitEnd(const Platform::UniqueFd& process, Milliseconds most)
{
    const auto deadline = std::chrono::steady_clock::now() + most;
    pollfd poller{process.Get(), POLLIN, 0};
    for (;;) {
        const auto left =
            std::chrono::ceil<Milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        const int code = poll(&poller, 1, left > 0 ? static_cast<int>(left) : 0);
        if (code > 0) return true;
        if (code == 0) return false;
        if (errno != EINTR) return true;
    }
}

void SendSignal(const Platform::UniqueFd& process, int signal)
{
    if (process) pidfd_send_signal(process.Get(), signal, nullptr, 0);
}

void EndProcess(const Platform::UniqueFd& process, Milliseconds patience)
{
    if (!process) return;
    SendSignal(process, SIGTERM);
    if (AwaitEnd(process, patience)) return;
    SendSignal(process, SIGKILL);
    AwaitEnd(process, Milliseconds(5000));
}

std::vector<ProcessMark> DescendantsOf(pid_t pid)
{
    std::multimap<pid_t, ProcessMark> children;
    if (DIR* proc = opendir("/proc")) {
        while (const dirent* entry = readdir(proc)) {
            const auto number = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
            if (number <= 0) continue;
            const ProcStat stat = ReadProcStat(number);
            if (stat.startTime != 0) children.emplace(stat.parent, ProcessMark{number, stat.startTime});
        }
        closedir(proc);
    }
    std::vector<ProcessMark> found;
    std::vector<pid_t> parents{pid};
    for (std::size_t at = 0; at < parents.size(); ++at) {
        const auto [begin, end] = children.equal_range(parents[at]);
        for (auto child = begin; child != end; ++child) {
            found.push_back(child->second);
            parents.push_back(child->second.pid);
        }
    }
    return found;
}

std::string ProgramOf(pid_t pid)
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error).string();
}

std::string FindProgram(const std::string& name)
{
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/local/bin:/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string program = (folder.empty() ? "." : folder) + "/" + name;
        if (access(program.c_str(), X_OK) == 0) return program;
    }
    return {};
}

std::vector<int> RunPrograms(const std::vector<Command>& commands, unsigned atOnce,
                             const std::function<void(std::size_t)>& onEnd)
{
    return Children(commands).Run(atOnce, onEnd);
}

int RunProgram(const std::string& program, std::vector<std::string> arguments)
{
    return RunPrograms(
        {
            {program, std::move(arguments), ""}
    },
        1)[0];
}

}  // namespace Wfctl
