// Messages and launch requests: send, listen, launch.

#include <cstdio>
#include <memory>

#include "application-table.h"
#include "connection.h"
#include "exit-status.h"
#include "hint.h"
#include "json-text.h"
#include "launching.h"
#include "peer.h"
#include "private-watch.h"
#include "service-words.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

constexpr double kLaunchPatience = 30;

struct SendArguments {
    std::string as, to;
    std::vector<std::string> assignments;
    double wait = 0;
    unsigned count = 0;
    bool untrusted = false;
};

struct ListenArguments {
    std::string as;
    unsigned count = 0;
    double timeout = -1;
    bool untrusted = false;
};

struct LaunchArguments {
    std::string as, app;
    std::vector<std::string> assignments;
    double wait = kLaunchPatience;
};

// Where messages are waited for, there is somewhere for them to come to.
PeerAddress ParseListener(const std::string& as, bool trusted)
{
    const PeerAddress self = ParsePeer(as, trusted);
    if (!self.port.empty()) return self;
    throw Stop(Exit::kUsage,
               "which port of [" + self.app + "]? say --as APP:PORT" + OrMeant(self.app, ApplicationIds()));
}

Exit Send(const Options& options, const SendArguments& arguments)
{
    const bool trusted = !arguments.untrusted;
    const bool isWaiting = arguments.wait > 0;
    const PeerAddress self =
        isWaiting ? ParseListener(arguments.as, trusted) : ParsePeer(arguments.as, trusted);
    const PeerAddress to = ParsePeer(arguments.to, trusted);
    const Platform::BundlePtr message = ParseBundle(arguments.assignments);
    SelectWatch(options.root);
    Connection connection;
    WarnOfPeerSlips(self);
    WarnOfMessageSlips(to.app, *message);
    unsigned replies = 0;
    Peer::Callback print;
    if (isWaiting) {
        print = [&](const std::string& app, const std::string& port, const bundle& reply) {
            if (arguments.count > 0 && replies >= arguments.count) return;
            ++replies;
            PrintLine(JsonLine(MessageToJson(app, port, reply)));
        };
    }
    Peer peer(connection, self, trusted, print);
    peer.Send(to, trusted, *message);
    if (!isWaiting) return Exit::kDone;
    connection.RunUntil([&] { return arguments.count > 0 && replies >= arguments.count; },
                        Seconds(arguments.wait));
    if (replies > 0) return Exit::kDone;
    const std::string why = to.app == Platform::kServiceId
                                ? "; the service answers its peers alone: look for watchface-service in " +
                                      LogPlace("watchface-service")
                                : "";
    throw Stop(Exit::kNoAnswer, "nothing came back to [" + self.app + ":" + self.port + "] in time" + why);
}

Exit Listen(const Options& options, const ListenArguments& arguments)
{
    const bool trusted = !arguments.untrusted;
    const PeerAddress self = ParseListener(arguments.as, trusted);
    WarnOfPeerSlips(self);
    SelectWatch(options.root);
    Connection connection;
    unsigned received = 0;
    const auto isDone = [&] { return arguments.count > 0 && received >= arguments.count; };
    Peer peer(connection, self, trusted,
              [&](const std::string& app, const std::string& port, const bundle& message) {
                  if (isDone()) return;
                  ++received;
                  PrintLine(JsonLine(MessageToJson(app, port, message)));
              });
    if (!peer.HasNames()) {
        const auto pid = connection.ProcessBehind(self.app);
        throw Stop(Exit::kError, "[" + self.app + "] is running already" +
                                     (pid ? ", pid " + std::to_string(*pid) : std::string()) +
                                     "; end it first");
    }
    peer.OfferRelay();
    std::fprintf(stderr, "listening as %s:%s\n", self.app.c_str(), self.port.c_str());
    const bool done =
        connection.RunUntil(isDone, arguments.timeout < 0 ? kForEver : Seconds(arguments.timeout));
    peer.FinishRelay();
    if (done) return Exit::kDone;
    if (arguments.count == 0) {
        throw Stop(Exit::kNoAnswer, "the time ran out; " + Counted(received, "message") + " came");
    }
    throw Stop(Exit::kNoAnswer, "the time ran out; " + std::to_string(received) + " of " +
                                    Counted(arguments.count, "message") + " came");
}

Exit Launch(const Options& options, const LaunchArguments& arguments)
{
    const std::string app = CheckedAppId(arguments.app);
    if (!arguments.as.empty()) WarnOfPeerSlips({CheckedAppId(arguments.as), ""});
    const Platform::LaunchData extra = ParseLaunchData(arguments.assignments);
    WarnOfLaunchSlips(app, extra);
    SelectWatch(options.root);
    Connection connection;
    const LaunchAnswer answer = SendLaunch(connection, app, arguments.as, extra, Seconds(arguments.wait));
    PrintLine(JsonLine(Json::object({
        {"result", answer.result                 },
        {"extra",  LaunchDataToJson(answer.extra)}
    })));
    if (answer.result == 0) return Exit::kDone;
    throw Stop(Exit::kError, "[" + app + "] answered " + std::to_string(answer.result) +
                                 ": the request failed, or was done without an answer");
}

}  // namespace

Action DefineSend(CLI::App& parser)
{
    const auto arguments = std::make_shared<SendArguments>();
    parser.add_option("--as", arguments->as, "the application that speaks, and the port for what comes back")
        ->type_name("APP[:PORT]")
        ->required();
    parser.add_option("APP[:PORT]", arguments->to, "the receiver")->required();
    parser.add_option("KEY=VALUE", arguments->assignments, "a text, @FILE or [a,b]; \\@ \\[ \\, are literal")
        ->required();
    parser.add_option("--wait", arguments->wait, "print messages that come back within S seconds")
        ->type_name("S")
        ->check(SecondsProblem);
    parser.add_option("--count", arguments->count, "with --wait: stop after N messages")->type_name("N");
    parser.add_flag("--untrusted", arguments->untrusted, "to, and with, an untrusted port");
    return [arguments](const Options& options) { return Send(options, *arguments); };
}

Action DefineListen(CLI::App& parser)
{
    const auto arguments = std::make_shared<ListenArguments>();
    parser.add_option("--as", arguments->as, "the application and its port")
        ->type_name("APP[:PORT]")
        ->required();
    parser.add_option("--count", arguments->count, "end after N messages")->type_name("N");
    parser.add_option("--timeout", arguments->timeout, "end after S seconds, with status 3")
        ->type_name("S")
        ->check(SecondsProblem);
    parser.add_flag("--untrusted", arguments->untrusted, "an untrusted port");
    return [arguments](const Options& options) { return Listen(options, *arguments); };
}

Action DefineLaunch(CLI::App& parser)
{
    const auto arguments = std::make_shared<LaunchArguments>();
    parser.add_option("APP", arguments->app, "the application to launch")->required();
    parser.add_option("KEY=VALUE", arguments->assignments, "extra data: a text, @FILE or [a,b]");
    parser.add_option("--as", arguments->as, "the caller's id (default: none)")->type_name("APP");
    parser.add_option("--wait", arguments->wait, "how long to wait for the answer (default: 30 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Launch(options, *arguments); };
}

}  // namespace Wfctl
