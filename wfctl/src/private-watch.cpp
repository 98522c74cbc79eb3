#include "private-watch.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "application-table.h"
#include "areas.h"
#include "bus-names.h"
#include "exit-status.h"
#include "hint.h"
#include "process.h"
#include "reading-files.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr char kRunFolderName[] = "/watch-XXXXXX";
// A folder whose name leaves room for "/watch-XXXXXX/bus" in a socket's 107 bytes.
constexpr std::size_t kLongestRunBase = 80;
// Of a watch that is down: no file can be below it, so no bus ever answers there.
constexpr char kNoRunFolder[] = "/dev/null";
constexpr char kHowToStartAny[] = "wfctl up --root DIR && . DIR/watch.env";

std::string gNamedRoot;

[[noreturn]] void Failed(const std::string& what, const std::string& path)
{
    throw Stop(Exit::kError, what + " [" + path + "]: " + std::strerror(errno));
}

// Replaces the file in one step; only the user may read it.
void WriteFile(const std::string& path, const std::string& text)
{
    const std::string unfinished = path + ".new";
    const Platform::UniqueFd file(open(unfinished.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!file) Failed("could not write", unfinished);
    if (write(file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        rename(unfinished.c_str(), path.c_str()) != 0) {
        Failed("could not write", path);
    }
}

std::string ProcessText(const ProcessMark& process)
{
    return std::to_string(process.pid) + " " + std::to_string(process.startTime);
}

// None where the numbers are not those of a process.
ProcessMark ParseProcess(const std::string& text)
{
    ProcessMark process;
    const char* const end = text.data() + text.size();
    const auto [space, code] = std::from_chars(text.data(), end, process.pid);
    if (code != std::errc() || process.pid < 0 || space == end || *space != ' ') return {};
    return std::from_chars(space + 1, end, process.startTime).ec == std::errc() ? process : ProcessMark();
}

std::string Exports(const WatchState& state)
{
    return "export DBUS_SESSION_BUS_ADDRESS=" + ShellQuoted(state.Address()) +
           "\nexport WATCH_ROOT=" + ShellQuoted(state.root) +
           "\nexport WATCH_RESOURCES=" + ShellQuoted(state.resources) + "\n";
}

// A value in an activation file: its backslashes are the file's own.
std::string DesktopEscaped(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

std::string XmlEscaped(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else
            out += c;
    }
    return out;
}

std::optional<WatchState> ReadStateOfDown(const WatchPaths& paths)
{
    if (access(paths.Lock().c_str(), F_OK) != 0) return std::nullopt;
    WatchState state;
    state.root = paths.root;
    state.resources = ReadableBytes(paths.Resources());
    state.runFolder = kNoRunFolder;
    return state;
}

std::string HowToComeUp(const std::string& root)
{
    return "type: wfctl up --root " + ShellQuoted(root);
}

bool IsOwnFolder(const std::string& path)
{
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid();
}

bool IsSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value;
}

std::string HowToSource(const WatchPaths& paths)
{
    return "type: . " + ShellQuoted(paths.Env());
}

// The watch whose run folder a bus's address lies in; empty where it lies in none.
std::string RootOfBus(const std::string& address)
{
    constexpr std::string_view kPath = "unix:path=";
    if (!address.starts_with(kPath)) return {};
    const std::string socket = address.substr(kPath.size(), address.find(',') - kPath.size());
    WatchState state;
    state.runFolder = fs::path(socket).parent_path().string();
    if (socket != state.Socket() || !IsOwnFolder(state.runFolder)) return {};
    return ReadableBytes(state.RootNote());
}

}  // namespace

std::string ShellQuoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

std::map<std::string, std::string> ParseShellAssignments(const std::string& text)
{
    std::map<std::string, std::string> values;
    std::size_t at = 0;
    while (at < text.size()) {
        if (text.compare(at, 7, "export ") == 0) at += 7;
        const std::size_t equals = text.find("='", at);
        const std::size_t lineEnd = text.find('\n', at);
        if (equals == std::string::npos || lineEnd < equals) {
            if (lineEnd == std::string::npos) break;
            at = lineEnd + 1;
            continue;
        }
        const std::string name = text.substr(at, equals - at);
        std::string value;
        for (at = equals + 2; at < text.size(); ++at) {
            if (text.compare(at, 4, "'\\''") == 0) {
                value += '\'';
                at += 3;
            } else if (text[at] == '\'') {
                break;
            } else {
                value += text[at];
            }
        }
        at += 2;  // the quote and the end of the line
        values[name] = value;
    }
    return values;
}

WatchPaths PathsOf(const std::string& dir)
{
    std::error_code error;
    const fs::path root = fs::canonical(dir, error);
    if (error)
        throw Stop(Exit::kNoWatch, "no watch is up at [" + dir + "]; " + HowToComeUp(dir) + OrMeantFile(dir));
    return {root.string()};
}

std::map<std::string, std::string> LocaleOfEnvironment()
{
    std::map<std::string, std::string> locale;
    for (const char* name : kLocaleVariables) {
        const char* value = std::getenv(name);
        locale[name] = value == nullptr ? "" : value;
    }
    return locale;
}

std::optional<WatchState> ReadState(const WatchPaths& paths)
{
    const std::string text = ReadableBytes(paths.State());
    if (text.empty()) return std::nullopt;
    auto values = ParseShellAssignments(text);
    WatchState state;
    state.root = paths.root;  // the folder may have been moved
    state.resources = values["WATCH_RESOURCES"];
    state.runFolder = values["RUN_FOLDER"];
    for (const char* name : kLocaleVariables) {
        if (const auto at = values.find(name); at != values.end()) state.locale.insert(*at);
    }
    state.supervisor = ParseProcess(values["SUPERVISOR"]);
    state.bus = ParseProcess(values["BUS"]);
    if (state.runFolder.empty()) return std::nullopt;
    return state;
}

void WriteState(const WatchPaths& paths, const WatchState& state)
{
    std::string locale;
    for (const auto& [name, value] : state.locale) locale += name + "=" + ShellQuoted(value) + "\n";
    WriteFile(paths.State(), Exports(state) + locale + "RUN_FOLDER=" + ShellQuoted(state.runFolder) +
                                 "\nSUPERVISOR=" + ShellQuoted(ProcessText(state.supervisor)) +
                                 "\nBUS=" + ShellQuoted(ProcessText(state.bus)) + "\n");
    WriteFile(paths.Resources(), state.resources);
}

void WriteEnv(const WatchState& state)
{
    WriteFile(WatchPaths{state.root}.Env(), Exports(state));
}

std::string MakeRunFolder()
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    const bool usable = runtime && *runtime == '/' && std::strlen(runtime) <= kLongestRunBase &&
                        IsOwnFolder(runtime) &&
                        std::string(runtime).find_first_not_of(
                            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                            "0123456789-_/.") == std::string::npos;
    std::string folder = std::string(usable ? runtime : "/tmp") + kRunFolderName;
    if (!mkdtemp(folder.data())) Failed("could not make", folder);
    return folder;
}

std::string BusConfigText(const WatchState& state)
{
    return R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>)" +
           XmlEscaped(state.Address()) + R"(</listen>
  <auth>EXTERNAL</auth>
  <servicedir>)" +
           XmlEscaped(state.Services()) + R"(</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_message_size">33554432</limit>
  <limit name="max_incoming_bytes">268435456</limit>
  <limit name="max_outgoing_bytes">)" +
           std::to_string(Platform::kMostUnreadBytes) + R"(</limit>
  <limit name="max_match_rules_per_connection">50000</limit>
  <limit name="max_names_per_connection">50000</limit>
  <limit name="max_replies_per_connection">50000</limit>
  <limit name="service_start_timeout">30000</limit>
</busconfig>
)";
}

std::string ActivationFileText(const std::string& appId, const std::string& program)
{
    return "[D-BUS Service]\nName=" + appId + "\nExec=" + DesktopEscaped(ShellQuoted(program)) + "\n";
}

void WriteBusFiles(const WatchState& state, const std::string& libexec)
{
    if (mkdir(state.Services().c_str(), 0700) != 0) Failed("could not make", state.Services());
    WriteFile(state.BusConfig(), BusConfigText(state));
    WriteFile(state.RootNote(), state.root);
    for (const Platform::Application& app : Platform::kApplications) {
        if (app.program.empty()) continue;
        const std::string id(app.id);
        WriteFile(state.Services() + "/" + id + ".service",
                  ActivationFileText(id, libexec + "/" + std::string(app.program)));
    }
}

void RemoveRunFolder(const WatchState& state)
{
    // Only what MakeRunFolder() and WriteBusFiles() made, whatever the state file says.
    if (!fs::path(state.runFolder).filename().string().starts_with("watch-") || !IsOwnFolder(state.runFolder))
        return;
    for (const Platform::Application& app : Platform::kApplications) {
        unlink((state.Services() + "/" + std::string(app.id) + ".service").c_str());
    }
    rmdir(state.Services().c_str());
    unlink(state.BusConfig().c_str());
    unlink(state.RootNote().c_str());
    unlink(state.Socket().c_str());
    rmdir(state.runFolder.c_str());
}

void RemoveRunFiles(const WatchPaths& paths, const WatchState& state)
{
    RemoveRunFolder(state);
    unlink(paths.Env().c_str());
    unlink(paths.State().c_str());
}

Platform::UniqueFd LockWatch(const WatchPaths& paths)
{
    Platform::UniqueFd lock(open(paths.Lock().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock || flock(lock.Get(), LOCK_EX) != 0) Failed("could not lock", paths.Lock());
    return lock;
}

void RequireOwnWatch(const WatchPaths& paths)
{
    struct stat info {};
    // The lock is there also while the watch is down.
    const bool isSeen = stat(paths.Lock().c_str(), &info) == 0;
    if (isSeen ? info.st_uid == geteuid() : errno != EACCES) return;
    throw Stop(Exit::kNotPermitted,
               "the watch at [" + paths.root + "] is another user's; speak to it as that user");
}

std::string LogPlace(const std::string& tag)
{
    const std::string path = WatchPaths{Platform::CurrentAreas().root}.Log();
    return access(path.c_str(), F_OK) == 0 ? "[" + path + "]" : "the journal (journalctl -t " + tag + ")";
}

bool IsPrivateWatch()
{
    return access(WatchPaths{Platform::CurrentAreas().root}.Lock().c_str(), F_OK) == 0;
}

bool IsDown()
{
    if (!IsPrivateWatch()) return false;
    const auto state = ReadState({Platform::CurrentAreas().root});
    return !state || !OpenProcess(state->supervisor);
}

void SelectWatch(const std::string& dir)
{
    gNamedRoot = dir;
    if (!dir.empty()) {
        const WatchPaths paths = PathsOf(dir);
        RequireOwnWatch(paths);
        auto state = ReadState(paths);
        if (!state) state = ReadStateOfDown(paths);
        if (!state)
            throw Stop(Exit::kNoWatch,
                       "no watch is up at [" + dir + "]; " + HowToComeUp(dir) + OrMeantFile(dir));
        setenv("DBUS_SESSION_BUS_ADDRESS", state->Address().c_str(), 1);
        setenv("WATCH_ROOT", state->root.c_str(), 1);
        setenv("WATCH_RESOURCES", state->resources.c_str(), 1);
        unsetenv("DBUS_STARTER_ADDRESS");
    }
    Platform::SetAreasFromEnvironment();
    if (dir.empty() && IsSet("WATCH_ROOT")) RequireOwnWatch({Platform::CurrentAreas().root});
}

const std::string& RequireRoot()
{
    const std::string& root = Platform::CurrentAreas().root;
    std::error_code error;
    if (fs::is_directory(root, error)) return root;
    throw Stop(Exit::kNoWatch, "there is no watch at [" + root + "]; " + HowToStart());
}

const std::string& NamedRoot()
{
    return gNamedRoot;
}

std::string WhyOtherWatch(const std::string& address)
{
    const std::string root = Platform::CurrentAreas().root;
    const std::string other = RootOfBus(address);
    std::error_code error;
    if (fs::exists(other, error) && !fs::equivalent(other, root, error)) {
        return "the bus [" + address + "] is that of the watch at [" + other + "], but WATCH_ROOT is " +
               (IsSet("WATCH_ROOT") ? "[" + root + "]" : "not set") + "; " + HowToSource({other});
    }
    const auto state = ReadState({root});
    if (!state || !OpenProcess(state->supervisor) || address.starts_with(state->Address())) return {};
    return (IsSet("DBUS_SESSION_BUS_ADDRESS")
                ? "the watch at [" + root + "] came up again, with another bus than [" + address + "]"
                : "DBUS_SESSION_BUS_ADDRESS is not set, where the bus of the watch at [" + root + "] is") +
           "; " + HowToSource({root});
}

std::string HowToStart()
{
    if (!NamedRoot().empty()) return HowToComeUp(NamedRoot());
    if (!IsPrivateWatch()) return std::string("type: ") + kHowToStartAny;
    const WatchPaths paths{Platform::CurrentAreas().root};
    return HowToComeUp(paths.root) + " && . " + ShellQuoted(paths.Env());
}

std::string WhyBusGone(const std::string& address)
{
    return "the bus at [" + address + "] is gone; " + HowToStart();
}

std::string WhyNoWatch(const std::string& error)
{
    if (IsDown()) return "no watch is up at [" + Platform::CurrentAreas().root + "]; " + HowToStart();
    return "no watch is running: no bus answers at " + error + "; type: " + kHowToStartAny;
}

}  // namespace Wfctl
