// The process that keeps a private watch up: it starts the bus, and the service on it; when the bus dies it
// brings it back at the same address. It owns everything that the watch runs (what loses its parent becomes
// its child), so that nothing is left when the watch is taken down, or its folder removed. It sleeps until
// something happens.

#pragma once

#include <string>

namespace Wfctl {

// wfctl's first argument when it is re-executed as the supervisor of the watch below its second.
inline constexpr char kSuperviseWord[] = "--supervise";
// Where the supervisor writes one line when the watch is ready ("ready") or could not be brought up (why).
inline constexpr int kReadyFd = 3;

int Supervise(const std::string& root);

}  // namespace Wfctl
