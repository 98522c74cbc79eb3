// The system calls that reach files, databases and the bus, and how the kernel may refuse each of them.
//
// Not among them: close(), which releases its descriptor whatever it says, as no refusal of ours would, after
// all that matters was synced; and what only makes timers, threads, memory or signals.

#pragma once

#include <span>

namespace Campaign {

enum class CallKind { kFile, kLock, kBus, kWait };  // the last: for whatever happens next

struct SystemCall {
    int number;
    const char* name;
    CallKind kind;
    std::span<const int> errors;  // that a service must live with
};

std::span<const SystemCall> SystemCalls();
const SystemCall* FindSystemCall(int number);  // null: it is none of these

}  // namespace Campaign
