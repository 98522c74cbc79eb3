#include "running.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

template class nlohmann::basic_json<>;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCouldNotRun = 127;
constexpr int kSignalled = 128;

[[noreturn]] void Become(const Arguments& command, const Environment& environment, int out, int err)
{
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(kCouldNotRun);
}

int StatusOf(int raw)
{
    return WIFEXITED(raw) ? WEXITSTATUS(raw) : kSignalled + WTERMSIG(raw);
}

}  // namespace

Program::Program(const Arguments& command, const Environment& environment)
{
    int out[2], err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return;
    mPid = fork();
    if (mPid == 0) Become(command, environment, out[1], err[1]);
    close(out[1]);
    close(err[1]);
    mOut.fd = out[0];
    mErr.fd = err[0];
}

Program::~Program()
{
    if (!mStatus && mPid > 0) {
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    close(mOut.fd);
    close(mErr.fd);
}

std::optional<std::string> Program::Line(Stream& stream)
{
    const auto deadline = Clock::now() + kPatience;
    for (;;) {
        if (const auto end = stream.rest.find('\n'); end != std::string::npos) {
            std::string line = stream.rest.substr(0, end);
            stream.rest.erase(0, end + 1);
            return line;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd poller{stream.fd, POLLIN, 0};
        if (left <= 0 || poll(&poller, 1, static_cast<int>(left)) <= 0) return std::nullopt;
        char text[4096];
        const ssize_t length = read(stream.fd, text, sizeof text);
        if (length <= 0) return std::nullopt;
        stream.rest.append(text, static_cast<std::size_t>(length));
    }
}

void Program::Signal(int number)
{
    kill(mPid, number);
}

int Program::AwaitEnd()
{
    if (mStatus) return *mStatus;
    int raw = 0;
    const bool ended = Eventually([&] { return waitpid(mPid, &raw, WNOHANG) == mPid; });
    if (!ended) return -1;
    mStatus = StatusOf(raw);
    return *mStatus;
}

std::vector<Json> Result::AsJsonLines() const
{
    std::vector<Json> all;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) all.push_back(Json::parse(line));
    return all;
}

Result RunProgram(const Arguments& command, const Environment& environment)
{
    int out[2], err[2];
    Result result;
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return result;
    const pid_t pid = fork();
    if (pid == 0) Become(command, environment, out[1], err[1]);
    close(out[1]);
    close(err[1]);
    pollfd pollers[] = {
        {out[0], POLLIN, 0},
        {err[0], POLLIN, 0}
    };
    std::string* texts[] = {&result.out, &result.err};
    const auto deadline = Clock::now() + kPatience;
    while (pollers[0].fd >= 0 || pollers[1].fd >= 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0 || poll(pollers, 2, static_cast<int>(left)) <= 0) {
            kill(pid, SIGKILL);
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (pollers[i].revents == 0) continue;
            char text[65536];
            const ssize_t length = read(pollers[i].fd, text, sizeof text);
            if (length > 0)
                texts[i]->append(text, static_cast<std::size_t>(length));
            else
                pollers[i].fd = -1;
        }
    }
    close(out[0]);
    close(err[0]);
    int raw = 0;
    waitpid(pid, &raw, 0);
    result.status = StatusOf(raw);
    return result;
}

bool Eventually(const std::function<bool()>& condition)
{
    const auto deadline = Clock::now() + kPatience;
    while (!condition()) {
        if (Clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// A process that has ended counts as gone, whether or not its parent has noticed.
bool IsRunning(pid_t pid)
{
    const std::string stat = ContentsOf("/proc/" + std::to_string(pid) + "/stat");
    const auto close = stat.rfind(')');
    return close != std::string::npos && stat.size() > close + 2 && stat[close + 2] != 'Z' &&
           stat[close + 2] != 'X';
}

std::string ContentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
