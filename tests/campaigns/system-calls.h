// The system calls that reach files, databases and the bus, and how the kernel may refuse each of them.

#pragma once

#include <span>

namespace Campaign {

enum class CallKind { kFile, kBus, kWait };

struct SystemCall {
    int number;
    const char* name;
    CallKind kind;
    std::span<const int> errors;  // that a service must live with; empty: this one is only looked at
};

std::span<const SystemCall> SystemCalls();
const SystemCall* FindSystemCall(int number);  // null: it is none of these

}  // namespace Campaign
