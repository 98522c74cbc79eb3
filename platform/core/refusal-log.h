// Refusals of a peer's messages in the log: at most ten lines a second a sender, then a count. A peer that
// floods us cannot flood the log.

#pragma once

#include <map>
#include <string>

namespace Platform {

class RefusalLog {
public:
    static constexpr int kLinesASecond = 10;
    static constexpr std::size_t kMostSenders = 256;

    // One refusal, with its reason. True when lines are being counted from now on: the owner then calls
    // EndSecond() a second later.
    bool Refused(const std::string& sender, const std::string& reason);

    // Logs the counts and starts anew.
    void EndSecond();

private:
    std::map<std::string, int> mRefusals;  // by sender, in this second
    bool mCounting = false;
};

}  // namespace Platform
