// Private watches: up, down, status.

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

#include "application-table.h"
#include "areas.h"
#include "connection.h"
#include "faces.h"
#include "hint.h"
#include "json-text.h"
#include "private-watch.h"
#include "process.h"
#include "supervisor.h"
#include "verb-table.h"

extern char** environ;

namespace Wfctl {

namespace {

namespace fs = std::filesystem;
using Platform::UniqueFd;

constexpr int kReadyPatienceMs = 40'000;
constexpr Milliseconds kDownPatience{15'000};
constexpr int kLogLinesShown = 5;

// The name of the file that tells people about a missing program's package.
constexpr char kNoDbusDaemon[] =
    "the program dbus-daemon is missing, which carries the watch's bus; type: apt-get install dbus-daemon";

struct UpArguments {
    std::string resources;
};

std::string RequiredRoot(const Options& options, const char* verb)
{
    if (!options.root.empty()) return options.root;
    const char* selected = std::getenv("WATCH_ROOT");
    throw Stop(Exit::kUsage, std::string("which watch? type: wfctl ") + verb + " --root " +
                                 (selected && *selected ? ShellQuoted(selected) : "DIR"));
}

WatchPaths MakeRoot(const std::string& dir)
{
    std::error_code error;
    fs::create_directories(dir, error);
    std::error_code ignored;
    if (error && !fs::is_directory(dir, ignored)) {
        throw Stop(Exit::kError, "the folder [" + dir + "] cannot be made: " + error.message() +
                                     "; name another with --root DIR");
    }
    return PathsOf(dir);
}

std::string ResourcesFolder(const std::string& named)
{
    std::error_code error;
    const std::string folder = named.empty() ? Platform::InstallPrefix() + "/" WATCH_DATADIR "/watch" : named;
    const fs::path path = fs::canonical(folder, error);
    if (error) {
        throw Stop(Exit::kNotFound, "there is no folder of faces [" + folder +
                                        "]; name one with --resources DIR" + OrMeantFile(folder));
    }
    return path.string();
}

std::string ProgramFolder()
{
    const std::string folder = Platform::InstallPrefix() + "/" WATCH_LIBEXECDIR "/watch";
    for (const Platform::Application& app : Platform::kApplications) {
        if (app.id != Platform::kServiceId) continue;
        const std::string program = folder + "/" + std::string(app.program);
        if (access(program.c_str(), X_OK) == 0) continue;
        throw Stop(Exit::kNotFound,
                   "the service's program [" + program + "] is missing; build or install it first");
    }
    return folder;
}

// Starts the supervisor in a session of its own; returns where it tells that it is ready.
UniqueFd SpawnSupervisor(const WatchPaths& paths)
{
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0)
        throw Stop(Exit::kError, std::string("no pipe: ") + std::strerror(errno));
    UniqueFd ours(ready[0]);
    const UniqueFd theirs(ready[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, paths.Log().c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, theirs.Get(), kReadyFd);
    // What the caller left open, a lock perhaps, is not for a watch to hold.
    posix_spawn_file_actions_addclosefrom_np(&actions, kReadyFd + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    std::string program = "wfctl", word = kSuperviseWord, root = paths.root;
    char* const arguments[] = {program.data(), word.data(), root.data(), nullptr};
    pid_t pid = 0;
    const int code = posix_spawn(&pid, "/proc/self/exe", &actions, &attributes, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (code != 0)
        throw Stop(Exit::kError, std::string("the supervisor could not be started: ") + std::strerror(code));
    return ours;
}

// The supervisor's line; empty when it ended, or the time did, without one.
std::string AwaitReady(const UniqueFd& ready)
{
    pollfd poller{ready.Get(), POLLIN, 0};
    char text[256];
    if (poll(&poller, 1, kReadyPatienceMs) <= 0) return {};
    const ssize_t length = read(ready.Get(), text, sizeof text);
    std::string line(text, length > 0 ? static_cast<std::size_t>(length) : 0);
    line.erase(std::min(line.find('\n'), line.size()));
    return line;
}

std::string LastLogLines(const WatchPaths& paths)
{
    std::ifstream log(paths.Log());
    std::vector<std::string> lines;
    for (std::string line; std::getline(log, line);) {
        lines.push_back(line);
        if (lines.size() > kLogLinesShown) lines.erase(lines.begin());
    }
    std::string text;
    for (const std::string& line : lines) text += "\n  " + line;
    return text;
}

// Ends everything and removes what `up` made.
void TakeDown(const WatchPaths& paths, const WatchState& state)
{
    const UniqueFd supervisor = OpenProcess(state.supervisor);
    const UniqueFd bus = OpenProcess(state.bus);
    // Programs are descendants of the bus that started them.
    std::vector<UniqueFd> programs;
    if (bus) {
        for (const ProcessMark& process : DescendantsOf(state.bus.pid))
            programs.push_back(OpenProcess(process));
    }
    // The supervisor ends the programs and the bus before it ends itself; the rest is for when it is gone.
    EndProcess(supervisor, kDownPatience);
    EndProcess(bus, kDownPatience);
    for (const UniqueFd& program : programs) EndProcess(program, kDownPatience);
    RemoveRunFiles(paths, state);
}

void PrintUp(const Options& options, const WatchState& state)
{
    if (options.json) {
        return PrintLine(JsonLine(Json::object({
            {"root",      BytesToJson(state.root)     },
            {"address",   state.Address()             },
            {"resources", BytesToJson(state.resources)}
        })));
    }
    const std::string env = ShellQuoted(WatchPaths{state.root}.Env());
    PrintLine("The watch is up. To talk to it:\n  . " + env +
              "\n  wfctl status\nTo take it down:\n  wfctl down --root " + ShellQuoted(state.root));
}

Exit Up(const Options& options, const UpArguments& arguments)
{
    const std::string dir = RequiredRoot(options, "up");
    WatchState state;
    state.resources = ResourcesFolder(arguments.resources);
    const std::string programs = ProgramFolder();
    if (FindProgram("dbus-daemon").empty()) throw Stop(Exit::kNotFound, kNoDbusDaemon);
    const WatchPaths paths = MakeRoot(dir);
    RequireOwnWatch(paths);
    const UniqueFd lock = LockWatch(paths);
    if (const auto old = ReadState(paths)) {
        if (OpenProcess(old->supervisor)) {
            if (access(paths.Env().c_str(), F_OK) != 0) WriteEnv(*old);  // an `up` may have been interrupted
            throw Stop(Exit::kNothingToDo,
                       "already up: [" + paths.root + "]; type: . " + ShellQuoted(paths.Env()));
        }
        TakeDown(paths, *old);  // whatever a killed supervisor left
    }
    state.root = paths.root;
    state.runFolder = MakeRunFolder();
    state.locale = LocaleOfEnvironment();
    WriteState(paths, state);
    WriteBusFiles(state, programs);
    const std::string line = AwaitReady(SpawnSupervisor(paths));
    state = ReadState(paths).value_or(state);  // with its processes
    if (line != "ready") {
        TakeDown(paths, state);
        throw Stop(Exit::kError, "the watch at [" + paths.root + "] did not come up: " +
                                     (line.empty() ? "the service did not start" : line) + "; its log [" +
                                     paths.Log() + "] ends:" + LastLogLines(paths));
    }
    WriteEnv(state);
    PrintUp(options, state);
    return Exit::kDone;
}

Exit Down(const Options& options)
{
    const std::string dir = RequiredRoot(options, "down");
    std::error_code error;
    if (!fs::is_directory(dir, error))
        throw Stop(Exit::kNothingToDo, "nothing to do: there is no folder [" + dir + "]" + OrMeantFile(dir));
    const WatchPaths paths = PathsOf(dir);
    RequireOwnWatch(paths);
    if (!ReadState(paths))
        throw Stop(Exit::kNothingToDo, "nothing to do: no watch is up at [" + paths.root + "]");
    const UniqueFd lock = LockWatch(paths);
    const auto state = ReadState(paths);
    if (!state) throw Stop(Exit::kNothingToDo, "nothing to do: no watch is up at [" + paths.root + "]");
    TakeDown(paths, *state);
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"root", BytesToJson(paths.root)}
        })));
    } else {
        PrintLine("The watch is down; its data stays in [" + paths.root + "].");
    }
    return Exit::kDone;
}

struct ProgramStatus {
    std::string id;
    std::optional<uint32_t> pid;
};

struct WatchStatus {
    std::string address;
    std::string kind;  // private, session, system
    std::vector<ProgramStatus> programs;
    std::size_t faces = 0;
    std::string current;
};

std::string BusKind(const std::string& address)
{
    const auto state = ReadState(WatchPaths{Platform::CurrentAreas().root});
    if (state && state->Address() == address) return "private";
    return Platform::IsSystemBus(address) ? "system" : "session";
}

std::string TrustText(const std::string& kind)
{
    return kind == "system" ? "policy-backed: the bus says which user may be which application"
                            : "trusted means the same user";
}

Json StatusJson(const WatchStatus& status)
{
    Json json = Json::object();
    for (const ProgramStatus& program : status.programs) {
        Json one = Json::object({
            {"running", program.pid.has_value()}
        });
        if (program.pid) one["pid"] = *program.pid;
        json[program.id == Platform::kServiceId ? "service" : "capture"] = one;
    }
    json["bus"] = Json::object({
        {"address", status.address},
        {"kind",    status.kind   }
    });
    json["trust"] = status.kind == "system" ? "policy" : "same-user";
    json["root"] = BytesToJson(Platform::CurrentAreas().root);
    json["resources"] = BytesToJson(Platform::CurrentAreas().resources);
    json["faces"] = status.faces;
    json["current"] = BytesToJson(status.current);
    return json;
}

void PrintStatus(const WatchStatus& status)
{
    for (const ProgramStatus& program : status.programs) {
        const char* what = program.id == Platform::kServiceId ? "service:    " : "capture:    ";
        PrintLine(what + (program.pid ? "running, pid " + std::to_string(*program.pid)
                                      : std::string("not running (started when it is needed)")));
    }
    PrintLine("bus:        " + status.address + " (" + status.kind + ")");
    PrintLine("trust:      " + TrustText(status.kind));
    PrintLine("root:       " + Platform::CurrentAreas().root);
    PrintLine("resources:  " + Platform::CurrentAreas().resources);
    PrintLine("faces:      " + std::to_string(status.faces) +
              (status.current.empty() ? std::string() : ", current: " + status.current));
    if (status.kind == "private") PrintLine("log:        " + WatchPaths{Platform::CurrentAreas().root}.Log());
}

Exit Status(const Options& options)
{
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    WatchStatus status{
        connection.Address(), BusKind(connection.Address()), {}, ListFaces().size(), CurrentFace().face};
    for (const Platform::Application& app : Platform::kApplications) {
        if (app.program.empty()) continue;
        status.programs.push_back({std::string(app.id), connection.ProcessBehind(std::string(app.id))});
    }
    if (options.json)
        PrintLine(JsonLine(StatusJson(status)));
    else
        PrintStatus(status);
    return Exit::kDone;
}

}  // namespace

Action DefineUp(CLI::App& parser)
{
    const auto arguments = std::make_shared<UpArguments>();
    parser
        .add_option("--resources", arguments->resources,
                    "where the shipped faces are (default: beside the programs)")
        ->type_name("DIR");
    return [arguments](const Options& options) { return Up(options, *arguments); };
}

Action DefineDown(CLI::App&)
{
    return Down;
}
Action DefineStatus(CLI::App&)
{
    return Status;
}

}  // namespace Wfctl
