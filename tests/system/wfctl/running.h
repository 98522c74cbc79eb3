// Running programs from a test: to their end, or beside it.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

extern template class nlohmann::basic_json<>;  // compiled once, for all

using Arguments = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;
using Json = nlohmann::json;

// Nothing that is waited for may take longer.
inline constexpr std::chrono::seconds kPatience{40};

// A program that runs beside the test; ended with its object.
class Program {
public:
    Program(const Arguments& command, const Environment& environment);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // The next line of stdout or stderr; nothing when the stream ends or the time does.
    std::optional<std::string> NextLine() { return Line(mOut); }
    std::optional<std::string> NextErrorLine() { return Line(mErr); }

    void Signal(int number);
    // The exit status; 128 and the signal's number when one ended it; -1 when it runs for longer than
    // kPatience.
    int AwaitEnd();
    pid_t Pid() const { return mPid; }

private:
    struct Stream {
        int fd = -1;
        std::string rest;
    };
    static std::optional<std::string> Line(Stream& stream);

    pid_t mPid = -1;
    std::optional<int> mStatus;
    Stream mOut, mErr;
};

struct Result {
    int status = -1;
    std::string out, err;
    Json AsJson() const { return Json::parse(out); }
    std::vector<Json> AsJsonLines() const;
};

Result RunProgram(const Arguments& command, const Environment& environment);

// Whether the condition comes true within kPatience.
bool Eventually(const std::function<bool()>& condition);

bool IsRunning(pid_t pid);
std::string ContentsOf(const std::string& path);
