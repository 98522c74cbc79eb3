#include "terminal.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void Become(const Arguments& command, const Environment& environment)
{
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    setenv("TERM", "dumb", 1);
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(127);
}

}  // namespace

ATerminal::ATerminal(const Arguments& command, const Environment& environment)
{
    mPid = forkpty(&mFd, nullptr, nullptr, nullptr);
    if (mPid == 0) Become(command, environment);
}

ATerminal::~ATerminal()
{
    if (mPid <= 0) return;
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
    close(mFd);
}

void ATerminal::Type(const std::string& text)
{
    if (write(mFd, text.data(), text.size()) < 0) mSaid += "(nobody reads what is typed)";
}

std::string ATerminal::Await(const std::string& text)
{
    const auto deadline = Clock::now() + kPatience;
    for (;;) {
        if (const auto at = mSaid.find(text); at != std::string::npos) {
            std::string said = mSaid.substr(0, at + text.size());
            mSaid.erase(0, said.size());
            return said;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd poller{mFd, POLLIN, 0};
        if (left <= 0 || poll(&poller, 1, static_cast<int>(left)) <= 0) return mSaid;
        char bytes[4096];
        const ssize_t length = read(mFd, bytes, sizeof bytes);
        if (length <= 0) return mSaid;
        mSaid.append(bytes, static_cast<std::size_t>(length));
    }
}
