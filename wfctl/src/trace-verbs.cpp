// What the watch's programs do, recorded: trace.

#include <filesystem>
#include <fstream>
#include <sstream>

#include "application-table.h"
#include "exit-status.h"
#include "files.h"
#include "json-text.h"
#include "launching.h"
#include "private-watch.h"
#include "shell-command.h"
#include "trace-switch-keys.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

constexpr Seconds kPatienceForTheSwitch{30};

struct OffArguments {
    std::string out;
};

bool IsOn()
{
    Platform::ValueStore keys(Platform::KeysPath(), 0660);
    return Platform::GetAs<bool>(keys, Platform::kTraceKey).value_or(false);
}

// The service leaves the request unanswered; the key says what it did.
void Switch(Connection& connection, bool on)
{
    Platform::LaunchData request;
    request["wfs/req/type"] = std::string(on ? "ttrace_enable" : "ttrace_disable");
    const std::string service(Platform::kServiceId);
    SendLaunch(connection, service, "", request, kPatienceForTheSwitch);
    if (IsOn() == on) return;
    throw Stop(Exit::kError,
               "the service did not switch the trace; look for [platform] in " + LogPlace("platform"));
}

Exit On(const Options& options)
{
    SelectWatch(options.root);
    Connection connection;
    if (IsOn())
        throw Stop(Exit::kNothingToDo,
                   "nothing to do: the trace is on already; type: " + WatchCommand("trace off"));
    Switch(connection, true);
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"trace", BytesToJson(Platform::TracePath())}
        })));
    }
    return Exit::kDone;
}

// The trace as a whole JSON array. Programs leave it open behind the last event, and one that is killed may
// leave an event cut short; each stands in a line of its own.
void WriteWhole(const std::string& trace, const std::string& out)
{
    std::ofstream file(out, std::ios::binary | std::ios::trunc);
    const char* separator = "[\n";
    std::istringstream lines(ReadWholeFile(trace));
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with(',')) line.pop_back();
        if (!Json::accept(line)) continue;
        file << separator << line;
        separator = ",\n";
    }
    file << "\n]\n";
    file.close();
    if (!file) throw Stop(Exit::kError, "[" + out + "] could not be written");
}

Exit Off(const Options& options, const OffArguments& arguments)
{
    SelectWatch(options.root);
    Connection connection;
    const bool wasOn = IsOn();
    if (wasOn) Switch(connection, false);
    const std::string trace = Platform::TracePath();
    std::error_code error;
    if (!std::filesystem::exists(trace, error))
        throw Stop(Exit::kNotFound, "no trace was recorded; type: " + WatchCommand("trace on"));
    if (!wasOn && arguments.out.empty())
        throw Stop(Exit::kNothingToDo, "nothing to do: the trace is off already; it is in [" + trace + "]");
    if (!arguments.out.empty()) WriteWhole(trace, arguments.out);
    const std::string path = arguments.out.empty() ? trace : arguments.out;
    PrintLine(options.json ? JsonLine(Json::object({
                                 {"trace", BytesToJson(path)}
    }))
                           : path);
    return Exit::kDone;
}

}  // namespace

Action DefineTraceOn(CLI::App&)
{
    return On;
}

Action DefineTraceOff(CLI::App& parser)
{
    const auto arguments = std::make_shared<OffArguments>();
    parser.add_option("-o,--output", arguments->out, "a copy of the trace")->type_name("OUT.json");
    return [arguments](const Options& options) { return Off(options, *arguments); };
}

}  // namespace Wfctl
