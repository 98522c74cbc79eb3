// What the applications of a watch tell each other, live: monitor.

#include <poll.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <memory>
#include <optional>

#include "application-table.h"
#include "arguments.h"
#include "bundle-wire-sdbus.h"
#include "bus-names.h"
#include "bus-sdbus.h"
#include "connection.h"
#include "exit-status.h"
#include "hint.h"
#include "json-text.h"
#include "private-watch.h"
#include "systemd-handles.h"
#include "unique-fd.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

using Clock = std::chrono::steady_clock;

struct MonitorArguments {
    std::vector<std::string> applications;
    unsigned count = 0;
    double timeout = -1;
};

// One thing that happened on the bus.
struct Event {
    std::string kind;  // "message", "launch", "key"
    std::string from, fromPort, to, toPort;
    std::string type;             // a message's own, or the key's name
    Json sizes = Json::object();  // bytes, by key
};

void Check(int code, const char* what)
{
    if (code < 0) throw Stop(Exit::kError, std::string("could not ") + what + ": " + std::strerror(-code));
}

// A connection that hears all and says nothing.
class Monitor {
public:
    Monitor()
    {
        // Says what to type when no bus answers.
        const Connection connection;
        mAddress = connection.Address();
        sd_bus* raw = nullptr;
        Check(sd_bus_new(&raw), "make a connection");
        mBus.reset(raw);
        Check(sd_bus_set_address(raw, mAddress.c_str()), "take the bus's address");
        Check(sd_bus_set_bus_client(raw, 1), "be a client of the bus");
        Check(sd_bus_set_monitor(raw, 1), "be a monitor");
        Check(sd_bus_start(raw), "connect");
        BecomeMonitor();
        sigset_t signals;
        sigemptyset(&signals);
        for (const int number : {SIGINT, SIGTERM}) sigaddset(&signals, number);
        sigprocmask(SIG_BLOCK, &signals, nullptr);
        mSignals = Platform::UniqueFd(signalfd(-1, &signals, SFD_CLOEXEC));
    }

    // The next message; empty when the time is over first.
    Platform::MessagePtr Next(std::optional<Clock::time_point> deadline)
    {
        for (;;) {
            sd_bus_message* raw = nullptr;
            const int code = sd_bus_process(mBus.get(), &raw);
            Platform::MessagePtr message(raw);
            const bool isGone =
                code < 0 ||
                (message && sd_bus_message_is_signal(raw, "org.freedesktop.DBus.Local", "Disconnected") > 0);
            if (isGone) throw Stop(Exit::kNoWatch, WhyBusGone(mAddress));
            if (message) return message;
            if (code == 0 && !Wait(deadline)) return nullptr;
        }
    }

private:
    void BecomeMonitor()
    {
        const std::string matches[] = {
            std::string("type='method_call',interface='") + Platform::kPortInterface + "'",
            std::string("type='method_call',interface='") + Platform::kApplicationInterface + "'",
            std::string("type='signal',interface='") + Platform::kKeysInterface + "'",
        };
        Platform::BusError error;
        sd_bus_message* raw = nullptr;
        Check(sd_bus_message_new_method_call(mBus.get(), &raw, Platform::kDriver, Platform::kDriverPath,
                                             "org.freedesktop.DBus.Monitoring", "BecomeMonitor"),
              "ask the bus");
        const Platform::MessagePtr call(raw);
        Check(sd_bus_message_append(raw, "asu", 3, matches[0].c_str(), matches[1].c_str(), matches[2].c_str(),
                                    0U),
              "ask the bus");
        const int code = sd_bus_call(mBus.get(), raw, 0, error.Out(), nullptr);
        if (code == -EACCES || code == -EPERM)
            throw Stop(
                Exit::kNotPermitted,
                "the bus lets this user see no traffic of others; try it as the watch's owner or as root");
        Check(code, "become a monitor of the bus");
    }

    // Until something comes; false when the time is over first.
    bool Wait(std::optional<Clock::time_point> deadline)
    {
        int left = -1;
        if (deadline) {
            const auto time = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
            if (time <= 0) return false;
            left = static_cast<int>(std::min<int64_t>(time, INT32_MAX));
        }
        pollfd waits[] = {
            {sd_bus_get_fd(mBus.get()), static_cast<short>(sd_bus_get_events(mBus.get())), 0},
            {mSignals.Get(),            POLLIN,                                            0}
        };
        poll(waits, 2, left);
        if (waits[1].revents != 0) throw Stop(Exit::kInterrupted, "");
        return true;
    }

    std::string mAddress;
    Platform::BusPtr mBus;
    Platform::UniqueFd mSignals;
};

template <typename Values>
void AddSizes(const Values& values, Event& event)
{
    for (const auto& [key, value] : values) {
        std::size_t bytes = 0;
        if (const auto* text = std::get_if<std::string>(&value)) {
            bytes = text->size();
        } else if constexpr (std::is_same_v<Values, Platform::LaunchData>) {
            for (const std::string& one : std::get<1>(value)) bytes += one.size();
        } else {
            for (const std::string& one : std::get<1>(value).strings) bytes += one.size();
        }
        event.sizes[key] = bytes;
    }
}

std::string TextIn(sd_bus_message* message)
{
    const char* text = nullptr;
    return sd_bus_message_read_basic(message, 's', &text) > 0 ? text : "";
}

// Nothing when the message is none of the watch's kinds, or broken.
std::optional<Event> EventOf(sd_bus_message* message)
{
    const char* to = sd_bus_message_get_destination(message);
    Event event;
    event.to = to ? to : "";
    std::string error;
    if (sd_bus_message_is_signal(message, Platform::kKeysInterface, "Changed") > 0) {
        event.kind = "key";
        event.type = TextIn(message);
        return event;
    }
    if (sd_bus_message_is_method_call(message, Platform::kApplicationInterface, "Launch") > 0) {
        event.kind = "launch";
        event.from = TextIn(message);
        Platform::LaunchData extra;
        if (!Platform::ReadLaunchData(message, &extra, &error)) return std::nullopt;
        AddSizes(extra, event);
        return event;
    }
    if (sd_bus_message_is_method_call(message, Platform::kPortInterface, nullptr) <= 0) return std::nullopt;
    event.kind = "message";
    event.toPort = TextIn(message);
    event.from = TextIn(message);
    event.fromPort = TextIn(message);
    const Platform::BundlePtr values = Platform::ReadBundle(message, &error);
    if (!values) return std::nullopt;
    const auto type = values->values.find("type");
    if (type != values->values.end()) {
        if (const auto* text = std::get_if<std::string>(&type->second)) event.type = *text;
    }
    AddSizes(values->values, event);
    return event;
}

// "12:34:56.789", in the zone of whoever looks.
std::string TimeOfDay()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm parts{};
    localtime_r(&now.tv_sec, &parts);
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03ld", parts.tm_hour % 24, parts.tm_min % 60,
                  parts.tm_sec % 61, now.tv_nsec / 1'000'000 % 1000);
    return text;
}

// Bytes that would move a terminal's cursor are shown as what they are not.
std::string Plain(std::string text)
{
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
    }
    return text;
}

std::string PeerText(const std::string& app, const std::string& port)
{
    const std::string name = app.empty() ? "?" : app;
    return Plain(port.empty() ? name : name + ":" + port);
}

struct Hue {
    std::string_view kind, code;
};
constexpr Hue kHues[] = {
    {"message", "\033[36m"},
    {"launch",  "\033[33m"},
    {"key",     "\033[32m"},
};

std::string LineOf(const Event& event)
{
    std::string kind = event.kind;
    kind.resize(8, ' ');
    if (WantsColor())
        kind = std::string(std::ranges::find(kHues, event.kind, &Hue::kind)->code) + kind + "\033[0m";
    std::string line = TimeOfDay() + " " + kind;
    if (event.kind == "key") return line + Plain(event.type);
    line += PeerText(event.from, event.fromPort) + " -> " + PeerText(event.to, event.toPort);
    if (!event.type.empty()) line += " " + Plain(event.type);
    std::string sizes;
    for (const auto& [key, bytes] : event.sizes.items())
        sizes += (sizes.empty() ? "" : ", ") + Plain(key) + ": " + bytes.dump() + " B";
    return line + " (" + sizes + ")";
}

Json JsonOf(const Event& event)
{
    if (event.kind == "key")
        return Json::object({
            {"kind", event.kind             },
            {"key",  BytesToJson(event.type)}
        });
    Json json = Json::object({
        {"kind", event.kind             },
        {"from", BytesToJson(event.from)},
        {"to",   BytesToJson(event.to)  }
    });
    if (event.kind == "message") {
        json["from-port"] = BytesToJson(event.fromPort);
        json["to-port"] = BytesToJson(event.toPort);
        json["type"] = BytesToJson(event.type);
    }
    json["bytes"] = event.sizes;
    return json;
}

bool IsWanted(const Event& event, const std::vector<std::string>& applications)
{
    return applications.empty() || std::ranges::any_of(applications, [&](const std::string& app) {
               return app == event.from || app == event.to;
           });
}

Exit Watch(const Options& options, const MonitorArguments& arguments)
{
    for (const std::string& app : arguments.applications)
        WarnOfSlip("there is no application", CheckedAppId(app), ApplicationIds());
    SelectWatch(options.root);
    Monitor monitor;
    std::fputs("monitoring\n", stderr);
    std::optional<Clock::time_point> deadline;
    if (arguments.timeout >= 0) deadline = DeadlineIn(Seconds(arguments.timeout));
    unsigned seen = 0;
    while (arguments.count == 0 || seen < arguments.count) {
        const Platform::MessagePtr message = monitor.Next(deadline);
        if (!message) break;
        const auto event = EventOf(message.get());
        if (!event || !IsWanted(*event, arguments.applications)) continue;
        ++seen;
        PrintLine(options.json ? JsonLine(JsonOf(*event)) : LineOf(*event));
    }
    if (seen >= arguments.count) return Exit::kDone;
    throw Stop(Exit::kNoAnswer, "the time ran out; " + std::to_string(seen) + " of " +
                                    std::to_string(arguments.count) + " came");
}

}  // namespace

Action DefineMonitor(CLI::App& parser)
{
    const auto arguments = std::make_shared<MonitorArguments>();
    parser.add_option("APP", arguments->applications,
                      "only what these send and get (default: all, and keys)");
    parser.add_option("--count", arguments->count, "end after so many")->type_name("N");
    parser.add_option("--timeout", arguments->timeout, "end after so long")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Watch(options, *arguments); };
}

}  // namespace Wfctl
