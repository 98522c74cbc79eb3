// The traffic of a watch, as it goes by.

#include <csignal>

#include "a-watch.h"

using testing::HasSubstr;

namespace {

class AMonitor : public AWatch {
protected:
    std::unique_ptr<Program> Monitor(Arguments arguments) const
    {
        arguments.insert(arguments.begin(), "monitor");
        auto monitor = Start(arguments);
        EXPECT_EQ(monitor->NextErrorLine(), "monitoring");
        return monitor;
    }
};

}  // namespace

TEST_F(AMonitor, shows_key_changes)
{
    const auto monitor = Monitor({"--json", "--count", "1"});
    Run({"key", "set", "my/key", "5"});
    EXPECT_EQ(Json::parse(monitor->NextLine().value_or("null")), Json({
                                                                     {"kind", "key"   },
                                                                     {"key",  "my/key"}
    }));
    EXPECT_EQ(monitor->AwaitEnd(), 0);
}

TEST_F(AMonitor, shows_messages_with_the_sizes_of_what_they_carry)
{
    const auto monitor = Monitor({"--json", "--count", "1", kManager});
    Run({"send", "--as", kManager, kService, "type=watch-nothing", "note=four"});
    const Json event = Json::parse(monitor->NextLine().value_or("null"));
    EXPECT_EQ(event["kind"], "message");
    EXPECT_EQ(event["from"], kManager);
    EXPECT_EQ(event["to"], kService);
    EXPECT_EQ(event["to-port"], "watchface-service::localport");
    EXPECT_EQ(event["type"], "watch-nothing");
    EXPECT_EQ(event["bytes"], Json({
                                  {"type", 13},
                                  {"note", 4 }
    }));
}

TEST_F(AMonitor, shows_launches_on_one_readable_line)
{
    const auto monitor = Monitor({"--count", "1", kService});
    Run({"launch", kService, "wfs/req/type=ttrace_disable"});
    const std::string line = monitor->NextLine().value_or("");
    EXPECT_THAT(line, HasSubstr(std::string("launch  ")));
    EXPECT_THAT(line, HasSubstr(std::string(" -> ") + kService + " (wfs/req/type: 14 B)"));
}

TEST_F(AMonitor, ends_in_time)
{
    EXPECT_EQ(Run({"monitor", "--timeout", "0"}).status, 0);
    const Result early = Run({"monitor", "--timeout", "0", "--count", "1"});
    EXPECT_EQ(early.status, 3);
    EXPECT_THAT(early.err, HasSubstr("0 of 1"));
}

TEST_F(AMonitor, ends_when_it_is_interrupted)
{
    const auto monitor = Monitor({});
    monitor->Signal(SIGINT);
    EXPECT_EQ(monitor->AwaitEnd(), 130);
}

TEST_F(AFolder, has_a_monitor_that_is_told_when_the_bus_shows_it_nothing)
{
    const std::string config = Holding("bus.conf", R"(<busconfig>
<listen>unix:tmpdir=/tmp</listen>
<policy context="default">
  <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/><allow user="*"/>
  <deny send_interface="org.freedesktop.DBus.Monitoring"/>
</policy>
</busconfig>)");
    Program bus({"dbus-daemon", "--nofork", "--print-address", "--config-file=" + config}, {});
    const Environment environment = {
        {"DBUS_SESSION_BUS_ADDRESS", bus.NextLine().value_or("")},
        {"WATCH_ROOT",               mFolder                    }
    };
    const Result refused = RunProgram({WFCTL, "monitor", "--timeout", "0"}, environment);
    EXPECT_EQ(refused.status, 4);
    EXPECT_THAT(refused.err, HasSubstr("lets this user see no traffic"));
}
