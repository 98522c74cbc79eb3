// What was called and logged, which uses of a function fail, and which threads are there. Safe on any thread.

#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "memory-platform.h"

namespace MemoryPlatform {

class Record : public std::enable_shared_from_this<Record> {
public:
    Record();

    // --- From the platform's functions ---
    void Note(const std::string& text);
    void NoteLog(LogLine line);
    // One use of a function: waits while it is held (workers only), counts it, and tells whether it fails.
    std::optional<int> Use(const std::string& function);
    int ThreadNumber();
    bool OnMain() const { return std::this_thread::get_id() == mMain; }

    // --- From tests ---
    std::vector<Call> Calls(const Strings& prefixes, Where where) const;
    Strings Timeline(Where where) const;
    std::vector<LogLine> Logs(const std::string& tag) const;
    std::vector<LogLine> AllLogs() const;
    void Forget();

    void Fail(const std::string& function, Failure failure);
    int Uses(const std::string& function) const;
    void Hold(const std::string& function);
    void Release(const std::string& function);
    void ReleaseAll();
    bool WaitUntilHeld(const std::string& function, double deadline);
    bool WaitForCall(const std::string& prefix, int count, double deadline);
    bool WaitForLog(const std::string& message, int count, double deadline);
    bool WaitForWorkersEnd(int started, double deadline);

private:
    class Attendance;
    struct Entry {
        std::string text;
        int thread;
        bool isLog;
    };
    struct Script {
        int first;  // the number of the first use that fails
        Failure failure;
    };

    bool WaitFor(double deadline, const std::function<bool()>& condition);
    void Leave();

    const std::thread::id mMain = std::this_thread::get_id();
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Entry> mEntries;
    std::vector<LogLine> mLogs;
    std::map<std::string, int> mUses;
    std::map<std::string, std::vector<Script>> mScripts;
    std::set<std::string> mHeld;
    std::multiset<std::string> mWaiting;  // functions that workers are held at
    int mWorkersSeen = 0;
    int mWorkersEnded = 0;
};

}  // namespace MemoryPlatform
