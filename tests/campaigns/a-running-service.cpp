#include "a-running-service.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "message-port-sdbus.h"

namespace Campaign {

namespace {

// Runs `action` with stderr in a file: what is started there keeps it.
template <typename Action>
void WithErrorsIn(const std::string& file, const Action& action)
{
    const int before = dup(STDERR_FILENO);
    const int log = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(log, STDERR_FILENO);
    close(log);
    action();
    dup2(before, STDERR_FILENO);
    close(before);
}

}  // namespace

RunningService::RunningService(const std::string& prefix)
    : mShippedFaces(prefix + "/share/watch/com.corvane.watchface/shared/res/watchlist/")
{
    setenv("DBUS_SESSION_BUS_ADDRESS", Address().c_str(), 1);
    setenv("WATCH_ROOT", Root().c_str(), 1);
    setenv("LC_ALL", "en_GB", 1);
    setenv("TZ", "UTC", 1);
    RawBus watcher(Address());
    watcher.AddMatch("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                     std::string(kService) + "'");
    WithErrorsIn(Root() + "/log", [&] {
        mService =
            std::make_unique<TestSupport::Program>(std::vector{prefix + "/libexec/watch/watchface-service"});
    });
    while (watcher.Next().Text(0) != kService) continue;
}

std::string RunningService::ResultXml() const
{
    const std::string face = kClassicFace;
    return TestSupport::ReadFile(mShippedFaces + face + "/" + face + "_result.xml");
}

std::string RunningService::Log() const
{
    return TestSupport::ReadFile(Root() + "/log");
}

std::unique_ptr<RawBus> RunningService::Connect(const Identity& identity, bool trusted) const
{
    auto bus = std::make_unique<RawBus>(Address());
    if (*identity.port)
        bus->ReplyTo(
            bus->Call(TestSupport::NameRequest(Platform::PortBusName(identity.app, identity.port, trusted))));
    bus->ReplyTo(bus->Call(TestSupport::NameRequest(identity.app)));
    return bus;
}

double RunningService::AnswerTime(RawBus& manager)
{
    const std::string question = ToService(kManager, {
                                                         {"type",             "watch-icu-convert"},
                                                         {"data/skeleton",    "Hms"              },
                                                         {"data/timestamp",   "0"                },
                                                         {"data/bestpattern", "true"             },
    });
    return TestSupport::TimeOf([&] {
        manager.Send(question);
        for (;;) {
            const RawBus::Message message = manager.Next();
            if (message.type == TestSupport::Header::kCall && !message.Value("formattedstring").empty())
                return;
        }
    });
}

std::string ToService(const Identity& from, const Values& values)
{
    return ToServiceAs(from.app, from.port, values);
}

std::string ToServiceAs(const std::string& app, const std::string& port, const Values& values)
{
    return PortMessage(kService, kServicePort, app, port, values);
}

}  // namespace Campaign
