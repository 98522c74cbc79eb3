#include "trace-event-json.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <mutex>

#include "folder-rights-posix.h"
#include "platform-log.h"
#include "unique-fd.h"
#include "utf8.h"

namespace Platform {

namespace {

constexpr mode_t kFileMode = 0660;
constexpr std::size_t kMostShown = 1024;  // bytes of a detail
// What each program that finds the file full needs to say so.
constexpr int64_t kReserved = 4096;

int64_t Nanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

// Microseconds with the nanoseconds behind the point.
std::string Microseconds(int64_t nanoseconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%" PRId64 ".%03d", nanoseconds / 1000,
                  static_cast<int>(nanoseconds % 1000));
    return text;
}

void AppendEscaped(std::string& json, unsigned char c)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04x", c);
    json += text;
}

// A JSON string. What is no UTF-8 stands as the bytes' Latin-1 characters.
std::string Quoted(std::string_view text)
{
    std::string json = "\"";
    std::string_view rest = text.size() > kMostShown ? Utf8Prefix(text, kMostShown) : text;
    while (!rest.empty()) {
        const std::size_t length = Utf8SequenceLength(rest);
        const auto c = static_cast<unsigned char>(rest.front());
        if (c == '"' || c == '\\') {
            (json += '\\') += rest.front();
        } else if (length == 0 || c < 0x20 || c == 0x7f) {
            AppendEscaped(json, c);
        } else {
            json += rest.substr(0, length);
        }
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return json + "\"";
}

std::string Arguments(const TraceDetail& first, const TraceDetail& second = {})
{
    std::string json;
    for (const TraceDetail& detail : {first, second}) {
        if (!detail.name) continue;
        json += json.empty() ? "" : ",";
        ((json += Quoted(detail.name)) += ':') += Quoted(detail.text);
    }
    return "\"args\":{" + json + "}";
}

// The members that all events of this thread have.
std::string Place()
{
    return "\"pid\":" + std::to_string(getpid()) + ",\"tid\":" + std::to_string(gettid());
}

std::string Named(const char* what, const std::string& name)
{
    return std::string(R"({"ph":"M","name":")") + what + "\"," + Place() + "," + Arguments({"name", name}) +
           "}";
}

}  // namespace

// The file that this process records into.
class TraceFile {
public:
    static TraceFile& Ours()
    {
        static TraceFile file;
        return file;
    }

    bool Begin(const std::string& path, const std::string& program)
    {
        const std::lock_guard lock(mMutex);
        unlink(path.c_str());
        constexpr int kNew = O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        UniqueFd file(open(path.c_str(), kNew, kFileMode));
        if (!file) {
            PLATFORM_FAULT("no trace in [%s]: %s", path.c_str(), std::strerror(errno));
            return false;
        }
        TakeRightsOf(std::filesystem::path(path).parent_path(), file.Get(), kFileMode);
        Take(std::move(file), "[\n" + Named("process_name", program));
        return Trace::IsOn();
    }

    bool Join(const std::string& path, const std::string& program)
    {
        const std::lock_guard lock(mMutex);
        UniqueFd file(open(path.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat info {};
        if (!file || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
        struct stat ours {};
        const bool isOurs = mFile && fstat(mFile.Get(), &ours) == 0 && ours.st_dev == info.st_dev &&
                            ours.st_ino == info.st_ino;
        if (isOurs) return true;
        if (IsFull(info.st_size)) return false;
        Take(std::move(file), ",\n" + Named("process_name", program));
        return Trace::IsOn();
    }

    void Leave()
    {
        const std::lock_guard lock(mMutex);
        Close();
    }

    void Append(const std::string& event)
    {
        const std::lock_guard lock(mMutex);
        if (!mFile) return;
        thread_local uint64_t namedIn = 0;
        std::string text;
        if (namedIn != mNumber) {
            namedIn = mNumber;
            text = ",\n" + Named("thread_name", getpid() == gettid() ? "main loop" : "worker");
        }
        Write(text + ",\n" + event);
    }

private:
    static bool IsFull(int64_t bytes) { return bytes > kMostTraceBytes - kReserved; }

    void Take(UniqueFd file, const std::string& first)
    {
        mFile = std::move(file);
        ++mNumber;
        Trace::sIsOn = true;
        Write(first);
    }

    // Looked at before each event, because others write too.
    void Write(std::string text)
    {
        struct stat info {};
        fstat(mFile.Get(), &info);
        const bool isFull = IsFull(info.st_size + static_cast<int64_t>(text.size()));
        if (isFull) {
            text = R"(,
{"ph":"i","s":"g","cat":"trace","name":"the trace is full","ts":)" +
                   Microseconds(Nanoseconds()) + "," + Place() + "}";
        }
        const ssize_t written = write(mFile.Get(), text.data(), text.size());
        const bool isWhole = written == static_cast<ssize_t>(text.size());
        if (!isWhole) PLATFORM_FAULT("the trace ends: %s", std::strerror(written < 0 ? errno : ENOSPC));
        if (isFull || !isWhole) Close();
    }

    void Close()
    {
        Trace::sIsOn = false;
        mFile.Reset();
    }

    std::mutex mMutex;
    UniqueFd mFile;
    uint64_t mNumber = 0;  // of the files so far
};

bool Trace::Begin(const std::string& path, const std::string& program)
{
    return TraceFile::Ours().Begin(path, program);
}

bool Trace::Join(const std::string& path, const std::string& program)
{
    return TraceFile::Ours().Join(path, program);
}

void Trace::Leave()
{
    TraceFile::Ours().Leave();
}

struct TraceSpan::Begun {
    int64_t time;
    std::string head, arguments;
};

void TraceSpan::Begin(const char* kind, const char* name, TraceDetail first, TraceDetail second)
{
    mBegun = new Begun{0, std::string(R"({"ph":"X","cat":")") + kind + R"(","name":")" + name + "\",",
                       Arguments(first, second)};
    mBegun->time = Nanoseconds();
}

// Just inside the span, not when it is told: the message may have arrived by then.
void TraceSpan::Flow(const char* phase, uint64_t message) const
{
    if (!mBegun) return;
    // Numbers in JSON are exact up to 53 bits.
    constexpr uint64_t kExact = (uint64_t{1} << 53) - 1;
    TraceFile::Ours().Append(std::string("{") + phase + R"(,"cat":"flow","name":"message","id":)" +
                             std::to_string(message & kExact) + ",\"ts\":" + Microseconds(mBegun->time + 1) +
                             "," + Place() + "}");
}

void TraceSpan::FlowOut(uint64_t message) const
{
    Flow(R"("ph":"s")", message);
}

void TraceSpan::FlowIn(uint64_t message) const
{
    Flow(R"("ph":"f","bp":"e")", message);
}

void TraceSpan::End()
{
    const int64_t end = Nanoseconds();
    const std::unique_ptr<Begun> begun(mBegun);
    TraceFile::Ours().Append(begun->head + "\"ts\":" + Microseconds(begun->time) + ",\"dur\":" +
                             Microseconds(end - begun->time) + "," + Place() + "," + begun->arguments + "}");
}

}  // namespace Platform
