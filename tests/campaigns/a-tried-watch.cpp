#include "a-tried-watch.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "message-port-sdbus.h"
#include "stored-values.h"
#include "writable-path-posix.h"

namespace Campaign {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using TestSupport::Clock;
using TestSupport::Header;

constexpr auto kPatience = 60s;  // longer than every wait of the service's own, one behind the other
constexpr auto kLookAgain = 1ms;
constexpr auto kWordIsLost = 1s;  // that it is ready
constexpr const char* kAreas[] = {
    "apps/com.corvane.watchface/shared/data",
    "apps/com.corvane.watchface/shared/trusted",
};

void WriteFile(const std::string& path, const std::string& content)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

// With the times of the files; what is at `to` goes.
void CopyTree(const std::string& from, const std::string& to)
{
    fs::remove_all(to);
    fs::copy(from, to, fs::copy_options::recursive);
    for (const auto& entry : fs::recursive_directory_iterator(from)) {
        const fs::path copy = to / fs::path(entry).lexically_relative(from);
        if (entry.is_regular_file()) fs::last_write_time(copy, entry.last_write_time());
    }
}

Platform::UniqueFd ReadinessSocket(const std::string& path)
{
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    Platform::UniqueFd socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (bind(socket.Get(), reinterpret_cast<sockaddr*>(&name), sizeof name) != 0)
        throw std::runtime_error("no socket at " + path);
    return socket;
}

// Whether READY=1 is among what has come.
bool IsReadinessSaid(int socket)
{
    char text[256];
    for (ssize_t size = 0; (size = recv(socket, text, sizeof text, MSG_DONTWAIT)) >= 0;) {
        if (std::string_view(text, static_cast<std::size_t>(size)).find("READY=1") != std::string_view::npos)
            return true;
    }
    return false;
}

// Its output goes to the file, its errors to nobody.
pid_t StartProgram(const std::vector<std::string>& command, const std::string& output)
{
    const std::vector<char*> words = WordsOf(command);
    const pid_t process = fork();
    if (process != 0) return process;
    dup2(open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    execv(words[0], words.data());
    _exit(127);
}

bool IsEvaluator(const Identity& peer)
{
    return std::string_view(peer.app) == kEvaluator.app;
}

std::string MessageOf(const Identity& peer, const Values& values)
{
    return IsEvaluator(peer) ? PortMessage(kService, kEvaluationPort, peer.app, peer.port, values, false)
                             : ToService(peer, values);
}

// What a message of the service says of how it went.
Answer AnswerIn(const RawBus::Message& message)
{
    const std::string_view status = message.Value("status");
    const std::string_view code = message.Value("evaluation-helper-ret");
    if (status == "success" || code == "0") return Answer::kSuccess;
    return status == "fail" || !code.empty() ? Answer::kFailure : Answer::kNone;
}

}  // namespace

TriedWatch::TriedWatch(const std::string& prefix, std::chrono::milliseconds replyIsLost)
    : mReplyIsLost(replyIsLost),
      mFolder("/dev/shm"),
      mRoot(mFolder.Path() + "/watch"),
      mPrefix(prefix),
      mShippedFaces(prefix + "/share/watch/com.corvane.watchface/shared/res/watchlist/")
{
    const std::string readiness = mFolder.Path() + "/readiness";
    mReadiness = ReadinessSocket(readiness);
    fs::create_directory(mRoot);
    setenv("DBUS_SESSION_BUS_ADDRESS", mBus.Address().c_str(), 1);
    setenv("WATCH_ROOT", mRoot.c_str(), 1);
    setenv("NOTIFY_SOCKET", readiness.c_str(), 1);
    setenv("LC_ALL", "en_GB", 1);
    setenv("TZ", "UTC", 1);
    for (const Identity& identity : {kManager, kEditor, kHome, kCapture, kBackupAgent, kEvaluator})
        Connect(identity);
    mKeyWatcher = std::make_unique<RawBus>(mBus.Address());
    mKeyWatcher->AddMatch(std::string("type='signal',interface='") + Platform::kKeysInterface + "'");
}

void TriedWatch::Connect(const Identity& peer)
{
    auto bus = std::make_unique<RawBus>(mBus.Address());
    bus->RequestName(Platform::PortBusName(peer.app, peer.port, !IsEvaluator(peer)));
    bus->ReplyTo(bus->Call(TestSupport::NameRequest(peer.app)));
    mPeers[peer.app] = std::move(bus);
}

std::size_t TriedWatch::LogSize() const
{
    return fs::file_size(mFolder.Path() + "/log");
}

std::string TriedWatch::LogFrom(std::size_t offset) const
{
    std::ifstream log(mFolder.Path() + "/log");
    log.seekg(static_cast<std::streamoff>(offset));
    return {std::istreambuf_iterator<char>(log), {}};
}

bool TriedWatch::Start(GatedProgram::Watcher watcher)
{
    mService.reset();
    IsReadinessSaid(mReadiness.Get());
    mService = std::make_unique<GatedProgram>(std::vector{mPrefix + "/libexec/watch/watchface-service"},
                                              mFolder.Path() + "/log", std::move(watcher));
    const auto begin = Clock::now();
    while (Clock::now() < begin + kPatience) {
        if (IsReadinessSaid(mReadiness.Get())) return true;
        if (HasEnded()) return false;
        // The word may have been lost to a fault.
        if (mService->IsIdle() && Clock::now() > begin + kWordIsLost) return true;
        pollfd socket{mReadiness.Get(), POLLIN, 0};
        poll(&socket, 1, 1);
    }
    throw Hang("it does not become ready");
}

bool TriedWatch::HasEnded()
{
    return !mService || mService->Status().has_value();
}

bool TriedWatch::IsRunning()
{
    return !HasEnded();
}

void TriedWatch::Stop()
{
    if (!mService) return;
    kill(mService->Pid(), SIGTERM);
    if (!mService->WaitForEnd(kPatience)) throw Hang("it does not end");
    mService.reset();
}

Answer TriedWatch::Ask(const Identity& peer, const Values& values)
{
    RawBus& bus = *mPeers.at(peer.app);
    Answer answer = Answer::kNone;
    const uint32_t call = bus.Call(MessageOf(peer, values));
    const auto deadline = Clock::now() + kPatience;
    auto lastSign = Clock::now();  // of the service
    while (Clock::now() < deadline) {
        if (!bus.HasNext(kLookAgain)) {
            if (HasEnded()) return answer;
            if (!mService->IsIdle()) lastSign = Clock::now();
            // Its answer may have been lost to a fault of the bus.
            if (Clock::now() - lastSign > mReplyIsLost) return answer;
            continue;
        }
        lastSign = Clock::now();
        const RawBus::Message message = bus.Next();
        if (message.type == Header::kCall) {
            if (const Answer said = AnswerIn(message); said != Answer::kNone) answer = said;
        }
        if (message.replyTo == call) return answer;
    }
    throw Hang("a message is not dealt with");
}

void TriedWatch::Ping()
{
    static const std::string ping =
        TestSupport::Layout({Header::kCall, kService, "/", "org.freedesktop.DBus.Peer", "Ping", ""}, {});
    RawBus& bus = *mPeers.at(kManager.app);
    const uint32_t call = bus.Call(ping);
    const auto deadline = Clock::now() + kPatience;
    auto lastSign = Clock::now();
    bool isAnswered = false;
    while (!HasEnded() && Clock::now() < deadline) {
        if (!mService->IsIdle()) lastSign = Clock::now();
        // Its answer may have been lost to a fault of the bus, too.
        const bool isOver = isAnswered || Clock::now() - lastSign > mReplyIsLost;
        if (isOver && mService->IsIdle()) return;
        if (!isAnswered && bus.HasNext(kLookAgain)) isAnswered = bus.Next().replyTo == call;
    }
    if (!HasEnded()) throw Hang("it comes to no rest");
}

void TriedWatch::Settle()
{
    Ping();
    DrainPeers(Drawing::kSaid);
    if (!HasEnded()) Ping();
}

std::vector<std::string> TriedWatch::TakeAnnouncedKeys()
{
    std::vector<std::string> keys;
    // What was routed before its answer has been announced before it.
    const uint32_t call = mKeyWatcher->Call(TestSupport::DriverCall("GetId", "", {}));
    for (;;) {
        const RawBus::Message message = mKeyWatcher->Next();
        if (message.replyTo == call) return keys;
        if (message.type == Header::kSignal) keys.emplace_back(message.Text(0));
    }
}

// The capture application says of each request that it is done, true or not.
void TriedWatch::DrainPeers(Drawing drawing)
{
    for (auto& [app, bus] : mPeers) {
        std::vector<std::string> requested;
        while (bus->HasNext(0ms)) {
            const RawBus::Message message = bus->Next();
            if (message.type == Header::kCall) requested.emplace_back(message.Value("pkgName"));
        }
        if (app != kCapture.app) continue;
        for (const std::string& face : requested) {
            if (face.empty()) continue;
            if (drawing == Drawing::kDone) Draw(face);
            bus->Call(ToService(kCapture, {
                                              {"type",  "watch-capture-finished"},
                                              {"pkgid", face                    }
            }));
        }
    }
}

void TriedWatch::Draw(const std::string& face) const
{
    const std::string list = mRoot + "/" + kAreas[0] + "/watchlist/";
    const std::string drawn = mFolder.Path() + "/drawn.png";
    WriteFile(drawn, TestSupport::ReadFile(ShippedPreview(face)));
    fs::rename(drawn, list + face + "/" + face + ".png");
}

TriedWatch::ToolResult TriedWatch::RunTool(std::vector<std::string> arguments)
{
    const std::string output = mFolder.Path() + "/tool";
    arguments.insert(arguments.begin(), mPrefix + "/bin/wfctl");
    mPeers.erase(kEditor.app);
    const pid_t tool = StartProgram(arguments, output);
    const auto deadline = Clock::now() + kPatience;
    int status = 0;
    while (waitpid(tool, &status, WNOHANG) == 0) {
        if (Clock::now() > deadline) {
            kill(tool, SIGKILL);
            waitpid(tool, &status, 0);
            throw Hang("wfctl does not end");
        }
        DrainPeers(Drawing::kDone);
        std::this_thread::sleep_for(kLookAgain);
    }
    Connect(kEditor);
    return {status, TestSupport::ReadFile(output)};
}

State TriedWatch::Look() const
{
    State state;
    for (const char* area : kAreas) {
        const std::string folder = mRoot + "/" + area;
        if (!fs::exists(folder)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            const std::string path = fs::path(entry).lexically_relative(mRoot);
            if (fs::path(entry).filename().string().starts_with(Platform::kUnfinishedPrefix)) continue;
            if (entry.is_directory()) {
                state[path + "/"];
            } else {
                state[path] = TestSupport::ReadFile(entry.path());
            }
        }
    }
    for (const Store& store : kStores) {
        for (const auto& [key, value] : StoredValues(mRoot + "/" + store.path))
            state[store.label + key] = value;
    }
    return state;
}

void TriedWatch::Restore(const State& state)
{
    const State now = Look();
    if (now == state && Leftovers().empty()) return;
    for (const char* area : kAreas) {
        if (!fs::exists(mRoot + "/" + area)) continue;
        for (const auto& entry : fs::directory_iterator(mRoot + "/" + area)) fs::remove_all(entry);
    }
    for (const bool arePreviews : {false, true}) {
        for (const auto& [path, content] : state) {
            if (path.ends_with(".png") != arePreviews) continue;
            if (path.ends_with('/')) {
                fs::create_directories(mRoot + "/" + path);
            } else if (path.starts_with("apps/")) {
                WriteFile(mRoot + "/" + path, content);
            } else if (const auto had = now.find(path); had == now.end() || had->second != content) {
                BringValueBack(path, content);
            }
        }
    }
}

void TriedWatch::BringValueBack(const std::string& name, const std::string& value) const
{
    for (const Store& store : kStores) {
        const std::string_view label = store.label;
        if (name.starts_with(label)) ChangeValue(mRoot + "/" + store.path, name.substr(label.size()), value);
    }
}

void TriedWatch::KeepRoot() const
{
    CopyTree(mRoot, mFolder.Path() + "/kept");
}

void TriedWatch::BringRootBack() const
{
    CopyTree(mFolder.Path() + "/kept", mRoot);
}

std::vector<std::string> TriedWatch::Leftovers() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(mRoot)) {
        if (fs::path(entry).filename().string().starts_with(Platform::kUnfinishedPrefix))
            names.push_back(entry.path());
    }
    return names;
}

bool TriedWatch::AreDatabasesWhole() const
{
    for (const Store& store : kStores) {
        const std::string path = mRoot + "/" + store.path;
        if (!FaultInDatabase(path).empty()) return false;
        const fs::path folder = fs::path(path).parent_path();
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().string().find(".damaged-") != std::string::npos) return false;
        }
    }
    return true;
}

std::size_t TriedWatch::OpenFiles() const
{
    const fs::directory_iterator files("/proc/" + std::to_string(mService->Pid()) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

bool TriedWatch::IsShipped(const std::string& path, const std::string& content) const
{
    const std::string faces = std::string(kAreas[0]) + "/watchlist/";
    if (!path.starts_with(faces)) return false;
    const std::string shipped = mShippedFaces + path.substr(faces.size());
    return path.ends_with('/') ? fs::exists(shipped)
                               : fs::is_regular_file(shipped) && TestSupport::ReadFile(shipped) == content;
}

std::string TriedWatch::ShippedDocument(const std::string& face) const
{
    return TestSupport::ReadFile(mShippedFaces + face + "/" + face + "_result.xml");
}

std::string TriedWatch::ShippedPreview(const std::string& face) const
{
    return mShippedFaces + face + "/" + face + ".png";
}

std::string TriedWatch::Picture(const std::string& name, const std::string& content)
{
    const std::string path = mFolder.Path() + "/pictures/" + name;
    WriteFile(path, content);
    return path;
}

}  // namespace Campaign
