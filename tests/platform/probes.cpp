#include "probes.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "unique-fd.h"

namespace PlatformTest {

namespace {

using Places = const ProbePlaces&;

int Result(long code)
{
    return code == -1 ? errno : 0;
}

int Open(const std::string& path, int flags)
{
    const Platform::UniqueFd file(open(path.c_str(), flags | O_CLOEXEC, 0600));
    return file ? 0 : errno;
}

int Run(const char* program)
{
    char* const arguments[] = {const_cast<char*>(program), nullptr};
    pid_t child = 0;
    const int code = posix_spawn(&child, program, nullptr, nullptr, arguments, nullptr);
    if (code == 0) waitpid(child, nullptr, 0);
    return code;
}

// A port that nobody listens on, so that what is allowed ends as refused by the other side.
int ConnectTcp()
{
    const Platform::UniqueFd socketFd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(9);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int error = Result(connect(socketFd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address));
    return error == ECONNREFUSED ? 0 : error;
}

int BindTcp()
{
    const Platform::UniqueFd socketFd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return Result(bind(socketFd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address));
}

int BindPath(const std::string& path)
{
    const Platform::UniqueFd socketFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return Result(bind(socketFd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address));
}

int ConnectAbstractly(const std::string& name)
{
    const Platform::UniqueFd socketFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path + 1, sizeof address.sun_path - 2);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    return Result(connect(socketFd.Get(), reinterpret_cast<sockaddr*>(&address), length));
}

// clang-format off
const Probe kProbes[] = {
    {"write a file of its own",      0, [](Places at) { return Open(at.own + "/mine", O_WRONLY); }},
    {"cut a file of its own",        0, [](Places at) { return Open(at.own + "/mine", O_WRONLY | O_TRUNC); }},
    {"make a file of its own",       0, [](Places at) { return Open(at.own + "/new", O_WRONLY | O_CREAT); }},
    {"rename a file of its own",     0, [](Places at) { return Result(rename((at.own + "/new").c_str(), (at.own + "/newer").c_str())); }},
    {"remove a file of its own",     0, [](Places at) { return Result(unlink((at.own + "/newer").c_str())); }},
    {"make a folder of its own",     0, [](Places at) { return Result(mkdir((at.own + "/folder").c_str(), 0700)); }},
    {"remove a folder of its own",   0, [](Places at) { return Result(rmdir((at.own + "/folder").c_str())); }},
    {"read a foreign file",          0, [](Places at) { return Open(at.foreign + "/theirs", O_RDONLY); }},

    {"write a foreign file",         1, [](Places at) { return Open(at.foreign + "/theirs", O_WRONLY); }},
    {"cut a foreign file as it opens", 1, [](Places at) { return Open(at.foreign + "/theirs", O_WRONLY | O_TRUNC); }},
    {"make a foreign file",          1, [](Places at) { return Open(at.foreign + "/new", O_WRONLY | O_CREAT); }},
    {"link a foreign file",          1, [](Places at) { return Result(link((at.foreign + "/theirs").c_str(), (at.foreign + "/linked").c_str())); }},
    {"bring a foreign file in",      1, [](Places at) { return Result(link((at.foreign + "/theirs").c_str(), (at.own + "/linked").c_str())); }},
    {"rename a foreign file",        1, [](Places at) { return Result(rename((at.foreign + "/theirs").c_str(), (at.foreign + "/renamed").c_str())); }},
    {"move a file out",              1, [](Places at) { return Result(rename((at.own + "/mine").c_str(), (at.foreign + "/mine").c_str())); }},
    {"remove a foreign file",        1, [](Places at) { return Result(unlink((at.foreign + "/theirs").c_str())); }},
    {"make a foreign folder",        1, [](Places at) { return Result(mkdir((at.foreign + "/folder").c_str(), 0700)); }},
    {"remove a foreign folder",      1, [](Places at) { return Result(rmdir((at.foreign + "/empty").c_str())); }},
    {"make a symbolic link",         1, [](Places at) { return Result(symlink("/etc/passwd", (at.own + "/link").c_str())); }},
    {"make a pipe",                  1, [](Places at) { return Result(mkfifo((at.own + "/pipe").c_str(), 0600)); }},
    {"make a socket",                1, [](Places at) { return BindPath(at.own + "/socket"); }},
    {"start a program",              1, [](Places) { return Run("/bin/true"); }},
    {"cut a foreign file by name",   3, [](Places at) { return Result(truncate((at.foreign + "/theirs").c_str(), 0)); }},
    {"connect over TCP",             4, [](Places) { return ConnectTcp(); }},
    {"listen over TCP",              4, [](Places) { return BindTcp(); }},
    {"reach an abstract socket",     6, [](Places at) { return ConnectAbstractly(at.socket); }},
    {"signal another process",       6, [](Places at) { return Result(kill(at.outsider, 0)); }},
};
// clang-format on

}  // namespace

std::span<const Probe> Probes()
{
    return kProbes;
}

std::vector<std::string> Succeeding(const ProbePlaces& places)
{
    std::vector<std::string> names;
    for (const Probe& probe : kProbes) {
        if (probe.act(places) == 0) names.emplace_back(probe.name);
    }
    return names;
}

}  // namespace PlatformTest
