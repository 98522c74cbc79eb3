// What the doctor takes away: it lies below $WATCH_ROOT/lost+found/TIME/ with a manifest.json that says where
// each came from, until it is put back or somebody removes it.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Wfctl {

struct LostItem {
    std::string path;    // below the watch's root, absolute
    std::string reason;  // a finding's code
    std::string lock;    // the path that programs lock which write there; may be empty
};

// Whether the file, or all that the folder holds, was there like that before (a time of the wall clock). What
// is dated ahead of the clock was: the clock has been put back since.
bool IsUnchangedSince(const std::string& path, const timespec& before);

// Moves those that have not changed since `before`, each under its lock. The list
// is on disk before anything moves. What was moved, by its old path; empty, and no folder, when it is none.
struct MovedAway {
    std::string time;  // names the folder
    std::vector<std::string> paths;
};
MovedAway MoveAway(const std::vector<LostItem>& items, timespec before);

// The times under which something was moved away, in their order.
std::vector<std::string> TimesOfLost();

// Puts back what was moved away under that time; what has its place taken stays, with a line each on stderr.
// The paths that are back. Stops with Exit::kNotFound when there is no such time.
struct PutBackResult {
    std::vector<std::string> paths;
    std::size_t kept = 0;
};
PutBackResult PutBack(const std::string& time);

}  // namespace Wfctl
