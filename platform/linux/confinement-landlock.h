// What a process may do from now on, enforced by the kernel (Landlock, and a limit on memory).
//
// Confine() is for the start: threads that are there already stay as free as they were.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Platform {

struct Confinement {
    std::vector<std::string> writable;  // folders; nothing else is made, written, cut, renamed or removed
    // Files and folders; nothing: whatever the user may read.
    std::optional<std::vector<std::string>> readable;
    bool needsAbstractSockets = false;  // the bus or the service manager listens on one
};

// The newest level of Landlock that is made use of.
inline constexpr int kNewestLandlock = 6;
// Bytes of its own that a confined process may have: several times what the largest picture needs.
inline constexpr unsigned long long kMostData = 512ull << 20;

// Where the application writes: the areas that are its own, its preferences, and what all programs share.
// The folders are made. On a device the unit lists in WATCH_READABLE what may be read beside them, with ":"
// between the paths.
Confinement ConfinementOf(const std::string& appId);

// Takes all rights away that the confinement does not name, for good: no program is started either, no
// listening or connecting over TCP, no signal to others. What a kernel's level of Landlock lacks stays
// allowed; without any there is one line in the log. False, with a line, when the kernel refuses.
// `highest` leaves newer levels unused.
bool Confine(const Confinement& confinement, int highest = kNewestLandlock);

}  // namespace Platform
