#include <systemd/sd-bus.h>

#include <stdexcept>

#include "groups.h"
#include "systemd-handles.h"

namespace Bench {

namespace {

constexpr int kRoundTrips = 1000;
constexpr int kLargeRoundTrips = 100;
constexpr char kDriver[] = "org.freedesktop.DBus";

// A date is the shortest answer that the service gives without touching a disk. What is added to the question
// is not looked at.
Values DateQuestion(std::size_t padding)
{
    Values values{
        {"type",             "watch-icu-convert"},
        {"data/skeleton",    "Hms"              },
        {"data/timestamp",   "1791965370123"    },
        {"data/bestpattern", "true"             },
    };
    if (padding > 0) values.emplace_back("padding", std::string(padding, 'x'));
    return values;
}

Figure MessageIn(Watch& watch, const char* size, std::size_t padding, int count)
{
    Figure figure{std::string("message of ") + size + " in, small reply out",
                  "us",
                  {},
                  {},
                  "the same bytes through the bus",
                  AtMostTimes(2)};
    const std::string toService = Watch::ToService(DateQuestion(padding));
    const std::string toEcho = Watch::ToEcho(DateQuestion(padding));
    watch.RoundTrip(toService);  // opens the language
    for (int i = 0; i < count; ++i) {
        figure.ours.push_back(watch.RoundTrip(toService));
        figure.floor.push_back(watch.RoundTrip(toEcho));
    }
    return figure;
}

// Sees what one connection asks of the bus driver.
class DriverCalls {
public:
    DriverCalls(const std::string& address, const char* name)
    {
        sd_bus* raw = nullptr;
        sd_bus_new(&raw);
        mBus.reset(raw);
        sd_bus_set_address(raw, address.c_str());
        sd_bus_set_bus_client(raw, true);
        if (sd_bus_start(raw) < 0) throw std::runtime_error("no bus");
        mSender = Ask("GetNameOwner", "s", name);
        sd_bus_message* call = nullptr;
        sd_bus_message_new_method_call(raw, &call, kDriver, "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus.Monitoring", "BecomeMonitor");
        const Platform::MessagePtr owned(call);
        const std::string rule = "type='method_call',destination='org.freedesktop.DBus'";
        sd_bus_message_append(call, "asu", 1, rule.c_str(), 0);
        if (sd_bus_call(raw, call, 0, nullptr, nullptr) < 0) throw std::runtime_error("no monitor");
    }

    // Of those until `marker` is matched for by anybody.
    int CountUntilMatchFor(const std::string& marker)
    {
        int count = 0;
        for (;;) {
            sd_bus_message* raw = nullptr;
            if (sd_bus_process(mBus.get(), &raw) < 0) throw std::runtime_error("no monitor");
            const Platform::MessagePtr message(raw);
            if (!raw) {
                sd_bus_wait(mBus.get(), UINT64_MAX);
                continue;
            }
            const char* text = nullptr;
            if (sd_bus_message_is_method_call(raw, nullptr, "AddMatch") &&
                sd_bus_message_read(raw, "s", &text) > 0 && text == marker) {
                return count;
            }
            const char* sender = sd_bus_message_get_sender(raw);
            if (sender && sender == mSender) ++count;
        }
    }

private:
    std::string Ask(const char* member, const char* signature, const char* argument)
    {
        sd_bus_message* answer = nullptr;
        const char* text = "";
        sd_bus_call_method(mBus.get(), kDriver, "/org/freedesktop/DBus", kDriver, member, nullptr, &answer,
                           signature, argument);
        const Platform::MessagePtr owned(answer);
        if (!answer || sd_bus_message_read(answer, "s", &text) < 0) throw std::runtime_error("no owner");
        return text;
    }

    Platform::BusPtr mBus;
    std::string mSender;
};

// Each message's sender is checked, and so is whether the ports are up that the service writes to: that of
// the answer, and of an update the editor's too.
Figure QuestionsToTheBus(Watch& watch)
{
    constexpr int kQuestions = 100, kUpdates = 20;
    const std::string marker = "member='Marker'";
    const std::string question = Watch::ToService(DateQuestion(0));
    const std::string update = Watch::ToService({
        {"data/xml_data", ReadFile(watch.ShippedFile("_result.xml"))},
        {"data/label",    "Mirel"                                   },
        {"pkgid",         kFace                                     },
        {"type",          "watch-setting-updated"                   },
    });
    watch.RoundTrip(update);  // the capture application is found, and the folder made
    watch.AwaitCaptures(1);
    DriverCalls calls(watch.Address(), kService);
    for (int i = 0; i < kQuestions; ++i) watch.RoundTrip(question);
    for (int i = 0; i < kUpdates; ++i) {
        const int captures = watch.Captures();
        watch.RoundTrip(update);
        watch.AwaitCaptures(captures + 1);
    }
    watch.Peers().AddMatch(marker);
    const int count = calls.CountUntilMatchFor(marker);
    return {"questions to the bus, 120 messages", "", {static_cast<double>(count)}, {}, "", AtMost(0)};
}

}  // namespace

Figures Messages(Watch& watch, const Choices&)
{
    watch.Service();
    return {
        MessageIn(watch, "100 B", 0, kRoundTrips),
        MessageIn(watch, "20 KB", 20'000, kRoundTrips),
        MessageIn(watch, "1 MB", 1'000'000, kLargeRoundTrips),
        QuestionsToTheBus(watch),
    };
}

}  // namespace Bench
