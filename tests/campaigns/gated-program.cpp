#include "gated-program.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <ctime>
#include <stdexcept>

namespace Campaign {

namespace {

using namespace std::chrono_literals;

constexpr auto kPause = 200us;
constexpr std::size_t kLongestText = 4096;

// What the new process tells us of its gate before it becomes the program. It cannot send a descriptor: that
// is a call which would wait for us.
struct Handover {
    sem_t isSet, isTaken;
    int listener;
};

std::vector<sock_filter> Filter()
{
    std::vector<sock_filter> filter{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    const std::size_t count = SystemCalls().size();
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = static_cast<uint32_t>(SystemCalls()[i].number);
        filter.push_back(
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, static_cast<uint8_t>(count - i), uint8_t{0}));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    return filter;
}

int InstallGate(std::vector<sock_filter>& filter)
{
    sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return -1;
    return static_cast<int>(
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
}

[[noreturn]] void BecomeProgram(Handover& handover, std::vector<sock_filter>& filter, char* const* words,
                                const std::string& log)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), STDERR_FILENO);
    signal(SIGPIPE, SIG_DFL);
    handover.listener = InstallGate(filter);
    sem_post(&handover.isSet);
    while (sem_wait(&handover.isTaken) != 0) continue;  // it is closed when the program begins
    if (handover.listener >= 0) execv(words[0], words);
    _exit(127);
}

Platform::UniqueFd TakeListener(pid_t process, int number)
{
    const Platform::UniqueFd handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    return Platform::UniqueFd(static_cast<int>(syscall(SYS_pidfd_getfd, handle.Get(), number, 0)));
}

}  // namespace

bool CanGatePrograms()
{
    try {
        GatedProgram program({"/bin/true"}, "/dev/null");
        return program.WaitForEnd(5s) == 0;
    } catch (const std::runtime_error&) {
        return false;
    }
}

std::vector<char*> WordsOf(const std::vector<std::string>& command)
{
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    return words;
}

std::string PendingCall::BytesAt(uint64_t address, std::size_t size) const
{
    std::string bytes(size, '\0');
    iovec here{bytes.data(), size};
    iovec there{reinterpret_cast<void*>(address), size};
    const ssize_t got = process_vm_readv(process, &here, 1, &there, 1, 0);
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

std::string PendingCall::TextAt(int argument) const
{
    constexpr uint64_t kPage = 4096;
    std::string text;
    // Up to the end of a page at a time: the next one may not be there.
    for (uint64_t at = arguments[argument]; text.size() < kLongestText;) {
        const std::string part = BytesAt(at, kPage - at % kPage);
        text.append(part, 0, part.find('\0'));
        if (part.empty() || part.find('\0') != std::string::npos) break;
        at += part.size();
    }
    return text;
}

GatedProgram::GatedProgram(const std::vector<std::string>& command, const std::string& log, Watcher watcher)
    : mWatcher(std::move(watcher))
{
    const std::vector<char*> words = WordsOf(command);
    std::vector<sock_filter> filter = Filter();
    void* shared = mmap(nullptr, sizeof(Handover), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) throw std::runtime_error("no memory");
    auto& handover = *static_cast<Handover*>(shared);
    sem_init(&handover.isSet, 1, 0);
    sem_init(&handover.isTaken, 1, 0);
    mPid = fork();
    if (mPid == 0) BecomeProgram(handover, filter, words.data(), log);
    while (sem_wait(&handover.isSet) != 0) continue;
    if (handover.listener >= 0) mListener = TakeListener(mPid, handover.listener);
    sem_post(&handover.isTaken);
    munmap(shared, sizeof(Handover));
    if (!mListener) {
        Kill();
        throw std::runtime_error("system calls cannot be watched here");
    }
    mThread = std::thread(&GatedProgram::Serve, this);
}

GatedProgram::~GatedProgram()
{
    Kill();
    if (mThread.joinable()) mThread.join();
}

void GatedProgram::Watch(Watcher watcher)
{
    const std::lock_guard lock(mMutex);
    mWatcher = std::move(watcher);
}

void GatedProgram::Serve()
{
    for (;;) {
        pollfd waiting{mListener.Get(), POLLIN, 0};
        if (poll(&waiting, 1, -1) < 0 && errno == EINTR) continue;
        if (waiting.revents & POLLHUP) return;  // the program ended
        seccomp_notif asked{};
        if (ioctl(mListener.Get(), SECCOMP_IOCTL_NOTIF_RECV, &asked) != 0) continue;
        const SystemCall* call = FindSystemCall(asked.data.nr);
        PendingCall pending{*call, mPid, {}};
        std::copy_n(asked.data.args, std::size(pending.arguments), pending.arguments);
        Answer(asked.id, static_cast<pid_t>(asked.pid), pending);
    }
}

// Whether it waits, rather than only looks.
bool GatedProgram::IsWaiting(const PendingCall& call)
{
    if (call.call.kind != CallKind::kWait) return false;
    const uint64_t timeout = call.arguments[3];
    if (call.call.number != SYS_epoll_pwait2) return static_cast<int>(timeout) != 0;
    const std::string limit = timeout ? call.BytesAt(timeout, sizeof(timespec)) : "forever";
    return limit.find_first_not_of('\0') != std::string::npos;
}

void GatedProgram::Answer(uint64_t id, pid_t thread, const PendingCall& call)
{
    seccomp_notif_resp answer{id, 0, 0, SECCOMP_USER_NOTIF_FLAG_CONTINUE};
    {
        const std::lock_guard lock(mMutex);
        const int error = mWatcher ? mWatcher(call) : 0;
        if (error != 0) answer = {id, 0, -error, 0};
        if (thread == mPid) mIsIdle = error == 0 && IsWaiting(call);
    }
    ioctl(mListener.Get(), SECCOMP_IOCTL_NOTIF_SEND, &answer);  // the program may be gone by now
}

std::optional<int> GatedProgram::Status()
{
    int status = 0;
    if (!mStatus && waitpid(mPid, &status, WNOHANG) == mPid) mStatus = status;
    return mStatus;
}

std::optional<int> GatedProgram::WaitForEnd(std::chrono::milliseconds patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!Status() && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(kPause);
    return Status();
}

void GatedProgram::Kill()
{
    if (Status()) return;
    kill(mPid, SIGKILL);
    int status = 0;
    if (waitpid(mPid, &status, 0) == mPid) mStatus = status;
}

}  // namespace Campaign
