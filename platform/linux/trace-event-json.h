// The platform's trace: what the programs of a watch did, when, and for how long, in one file.
//
// Terms
//   span   what a thread did from one moment to another; the spans of a thread lie inside each other or
//   apart. flow   an arrow from the span in which a message left to the span in which it arrived, in
//   whichever
//          program that is.
//
// The file is trace-event JSON, an array that is not closed, which the format allows and its viewers
// (chrome://tracing, Perfetto) read. Every event is one append, so that several programs write to one file
// and one that is killed leaves it whole. Times are those of CLOCK_MONOTONIC, the same in all programs. A
// file that has kMostTraceBytes is full: its last event says so, and recording ends.
//
// While nothing is recorded a span costs one branch. All of this may be used on any thread.

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Platform {

inline constexpr int64_t kMostTraceBytes = int64_t{8} << 20;

class Trace {
public:
    static bool IsOn() { return sIsOn.load(std::memory_order_relaxed); }

    // Records into a new file from here on; one that is there is replaced. False, with a line in the log,
    // when the file cannot be made. `program` is what the process is called in the trace.
    static bool Begin(const std::string& path, const std::string& program);
    // Records into the file that another program has begun. False when there is none, or it is full.
    static bool Join(const std::string& path, const std::string& program);
    static void Leave();

private:
    static inline std::atomic<bool> sIsOn{false};
    friend class TraceFile;
};

// What a span is about: a name or a path, never what a message or a file holds. `name` is a literal.
struct TraceDetail {
    const char* name = nullptr;  // none: no detail
    std::string_view text = {};
};

// A span: from here to the end of the scope. `kind` and `name` are literals.
class TraceSpan {
public:
    TraceSpan(const char* kind, const char* name, TraceDetail first = {}, TraceDetail second = {})
    {
        if (Trace::IsOn()) Begin(kind, name, first, second);
    }
    ~TraceSpan()
    {
        if (mBegun) End();
    }
    TraceSpan(const TraceSpan&) = delete;
    TraceSpan& operator=(const TraceSpan&) = delete;

    bool IsRecorded() const { return mBegun != nullptr; }
    // A message leaves, or has arrived, in this span. The number is the message's, the same on both sides.
    void FlowOut(uint64_t message) const;
    void FlowIn(uint64_t message) const;

private:
    struct Begun;
    void Begin(const char* kind, const char* name, TraceDetail first, TraceDetail second);
    void End();
    void Flow(const char* phase, uint64_t message) const;

    Begun* mBegun = nullptr;  // owned, from Begin() to End()
};

}  // namespace Platform
