#include "connection.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <utility>

#include "application-table.h"
#include "event-loop-sdevent.h"
#include "exit-status.h"
#include "private-watch.h"

namespace Wfctl {

namespace {

constexpr uint64_t kDriverTimeoutUsec = 5'000'000;
// From the end of a watch's programs to that of its bus.
constexpr Seconds kGoingDown{2};

using Clock = std::chrono::steady_clock;

// What every count of nanoseconds holds.
Seconds Bounded(Seconds time)
{
    constexpr Seconds kLongest{1e9};
    return time < kLongest ? time : kLongest;
}

uint64_t Microseconds(Seconds time)
{
    return static_cast<uint64_t>(Bounded(time).count() * 1e6);
}

// Of a connection whose bus has ended.
bool IsGone(int code)
{
    return code == -ENOTCONN || code == -ECONNRESET || code == -EPIPE;
}

// As opposed to one who takes too long.
bool HasReceiverEnded(const Answer& answer)
{
    const char* sender = sd_bus_message_get_sender(answer.message.get());
    return answer.errorName == SD_BUS_ERROR_NO_REPLY && sender &&
           std::string_view(sender) == Platform::kDriver;
}

}  // namespace

Clock::time_point DeadlineIn(Seconds most)
{
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(Bounded(most));
}

Connection::Connection() : mAddress(Platform::BusAddress())
{
    const int numbers[] = {SIGINT, SIGTERM};
    for (int i = 0; i < 2; ++i) {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, numbers[i]);
        sigprocmask(SIG_BLOCK, &set, nullptr);
        sd_event_source* source = nullptr;
        const auto interrupt = [](sd_event_source*, const signalfd_siginfo*, void* self) {
            static_cast<Connection*>(self)->mInterrupted = true;
            return 0;
        };
        sd_event_add_signal(Platform::MainLoop(), &source, numbers[i], interrupt, this);
        mSignals[i].reset(source);
    }
    if (const std::string why = WhyOtherWatch(mAddress); !why.empty()) throw Stop(Exit::kNoWatch, why);
    std::string error;
    mBus = Platform::Bus::Open(
        mAddress, Platform::MainLoop(), [this] { mLost = true; }, &error);
    if (!mBus) throw Stop(Exit::kNoWatch, WhyNoWatch(error));
}

Connection::~Connection() = default;

bool Connection::RunUntil(const std::function<bool()>& done, Seconds most)
{
    const auto deadline = DeadlineIn(most);
    while (!done()) {
        uint64_t left = UINT64_MAX;
        if (most.count() >= 0) {
            const Seconds time = deadline - Clock::now();
            if (time.count() <= 0) return false;
            left = Microseconds(time) + 1;
        }
        if (const int code = sd_event_run(Platform::MainLoop(), left); code < 0) {
            throw Stop(Exit::kError, std::string("the loop ended: ") + std::strerror(-code));
        }
        if (mInterrupted) throw Stop(Exit::kInterrupted, "");
        if (mLost) throw Stop(Exit::kNoWatch, WhyBusGone(mAddress));
    }
    return true;
}

Answer Connection::Call(sd_bus_message* call, Seconds most)
{
    Answer answer;
    int code = 0;
    const auto take = [&answer](sd_bus_message* message) {
        answer.message.reset(sd_bus_message_ref(message));
        if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
            answer.errorName = error->name ? error->name : "";
            answer.errorText = error->message ? error->message : "";
        }
    };
    const uint64_t timeout = most.count() < 0 ? UINT64_MAX : Microseconds(most);
    const auto slot = Platform::CallAsync(Get(), call, timeout, take, &code);
    if (!slot && IsGone(code)) throw Stop(Exit::kNoWatch, WhyBusGone(mAddress));
    if (!slot)
        throw Stop(Exit::kError, std::string("the message could not be sent: ") + std::strerror(-code));
    RunUntil([&answer] { return answer.message != nullptr; }, most);
    // The programs of a watch that goes down end first.
    if (answer.message && HasReceiverEnded(answer)) RunUntil([] { return false; }, kGoingDown);
    return answer;
}

Platform::MessagePtr Connection::DriverCall(const char* member, const char* argument)
{
    Platform::BusError error;
    sd_bus_message* raw = nullptr;
    sd_bus_message* answer = nullptr;
    int code = sd_bus_message_new_method_call(Get(), &raw, Platform::kDriver, Platform::kDriverPath,
                                              Platform::kDriver, member);
    const Platform::MessagePtr call(raw);
    if (code >= 0 && argument) code = sd_bus_message_append(raw, "s", argument);
    if (code >= 0) code = sd_bus_call(Get(), raw, kDriverTimeoutUsec, error.Out(), &answer);
    return Platform::MessagePtr(answer);
}

std::optional<uint32_t> Connection::ProcessBehind(const std::string& name)
{
    const auto answer = DriverCall("GetConnectionUnixProcessID", name.c_str());
    uint32_t pid = 0;
    if (!answer || sd_bus_message_read(answer.get(), "u", &pid) < 0) return std::nullopt;
    return pid;
}

bool Connection::CanBeStarted(const std::string& name)
{
    const auto answer = DriverCall("ListActivatableNames", nullptr);
    if (!answer || sd_bus_message_enter_container(answer.get(), 'a', "s") < 0) return false;
    const char* activatable = nullptr;
    while (sd_bus_message_read_basic(answer.get(), 's', &activatable) > 0) {
        if (name == activatable) return true;
    }
    return false;
}

bool Connection::IsNameBelow(const std::string& prefix)
{
    const auto answer = DriverCall("ListNames", nullptr);
    if (!answer || sd_bus_message_enter_container(answer.get(), 'a', "s") < 0) return false;
    const char* name = nullptr;
    while (sd_bus_message_read_basic(answer.get(), 's', &name) > 0) {
        if (std::string_view(name).starts_with(prefix)) return true;
    }
    return false;
}

void Connection::RoundTrip()
{
    DriverCall("GetId", nullptr);
}

void RequireService(Connection& connection)
{
    const std::string id(Platform::kServiceId);
    if (connection.ProcessBehind(id) || connection.CanBeStarted(id)) return;
    throw Stop(Exit::kNoWatch, "no watch is running: the bus at [" + connection.Address() + "] knows no " +
                                   id + "; " + HowToStart());
}

}  // namespace Wfctl
