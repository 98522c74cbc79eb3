#include "program.h"

#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace TestSupport {

namespace {

std::vector<char*> Words(const std::vector<std::string>& command)
{
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    return words;
}

double Milliseconds(const timeval& time)
{
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

}  // namespace

double Microseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::micro>(duration).count();
}

Program::Program(const std::vector<std::string>& command) : mPid(fork())
{
    if (mPid != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::vector<char*> words = Words(command);
    execv(words[0], words.data());
    _exit(127);
}

Program::~Program()
{
    kill(mPid, SIGTERM);
    waitpid(mPid, nullptr, 0);
}

long Program::ProcValue(const char* file, const std::string& label) const
{
    std::ifstream stream("/proc/" + std::to_string(mPid) + "/" + file);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with(label)) return std::atol(line.c_str() + label.size());
    }
    return -1;
}

double ProcessorTimeOf(const std::vector<std::string>& command)
{
    pid_t pid = 0;
    // Not a fork, whose copy of this process would be taken down at the program's expense.
    if (posix_spawn(&pid, command[0].c_str(), nullptr, nullptr, Words(command).data(), environ) != 0)
        throw std::runtime_error(command[0] + " cannot be started");
    int status = 0;
    rusage used{};
    wait4(pid, &status, 0, &used);
    if (status != 0) throw std::runtime_error(command[0] + " failed");
    return Milliseconds(used.ru_utime) + Milliseconds(used.ru_stime);
}

double ProcessorTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

void StayOnOneProcessor()
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(0, &one);
    sched_setaffinity(0, sizeof one, &one);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("no file " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace TestSupport
