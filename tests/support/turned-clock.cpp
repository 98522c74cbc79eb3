// Preloaded, gives a program a wall clock and a local time zone that a test turns while the program runs. The
// machine's own stay as they are, and so do all other clocks: the kernel too turns the wall clock alone.
//
//   TURNED_CLOCK      a file; its first eight bytes are the seconds by which the wall clock is ahead
//   TURNED_LOCALTIME  a link that is read in the place of /etc/localtime

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

// Opened before the program confines itself.
const volatile int64_t* OpenAhead()
{
    const char* path = std::getenv("TURNED_CLOCK");
    const int fd = path ? open(path, O_RDONLY | O_CLOEXEC) : -1;
    if (fd < 0) return nullptr;
    void* page = mmap(nullptr, sizeof(int64_t), PROT_READ, MAP_SHARED, fd, 0);
    close(fd);
    return page == MAP_FAILED ? nullptr : static_cast<const volatile int64_t*>(page);
}

time_t Ahead()
{
    static const volatile int64_t* const ahead = OpenAhead();
    return ahead ? static_cast<time_t>(*ahead) : 0;
}

[[gnu::constructor]] void Open()
{
    Ahead();
}

}  // namespace

#define TURNED extern "C" [[gnu::visibility("default")]]

TURNED int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    const bool isWall = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
    if (result == 0 && isWall) now->tv_sec += Ahead();
    return result;
}

TURNED int gettimeofday(timeval* now, void*) noexcept
{
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    *now = {time.tv_sec, time.tv_nsec / 1000};
    return 0;
}

TURNED time_t time(time_t* at) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (at) *at = now.tv_sec;
    return now.tv_sec;
}

TURNED ssize_t readlink(const char* path, char* target, size_t size) noexcept
{
    const char* turned = std::getenv("TURNED_LOCALTIME");
    const bool isLocalTime = turned && std::strcmp(path, "/etc/localtime") == 0;
    return syscall(SYS_readlinkat, AT_FDCWD, isLocalTime ? turned : path, target, size);
}
