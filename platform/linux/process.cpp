#include "process.h"

#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "application-table.h"
#include "areas.h"
#include "platform-log.h"
#include "trace-event-json.h"

namespace Platform {

namespace {

constexpr mode_t kKeysMode = 0660;
constexpr mode_t kPreferencesMode = 0600;

Process* gCurrent = nullptr;

std::string Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string DefaultRoot()
{
    if (const std::string state = Environment("STATE_DIRECTORY"); !state.empty()) return state;
    if (const std::string state = Environment("XDG_STATE_HOME"); !state.empty()) return state + "/watch";
    // The system's bus carries the device's watch, where one is installed.
    std::error_code error;
    if (IsSystemBus(BusAddress()) && std::filesystem::is_directory(kDeviceRoot, error))
        return std::string(kDeviceRoot);
    return Environment("HOME") + "/.local/state/watch";
}

// The platform keys are found at the root, and lie where all programs may make files: a database needs more
// than its one.
bool MakeRoot()
{
    std::error_code error;
    std::filesystem::create_directories(CurrentAreas().Common(), error);
    if (error) {
        PLATFORM_FAULT("could not make [%s]: %s", CurrentAreas().Common().c_str(), error.message().c_str());
        return false;
    }
    std::filesystem::create_symlink("common/keys.db", CurrentAreas().root + "/keys.db", error);
    return true;
}

}  // namespace

std::string InstallPrefix()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::filesystem::path exe(std::string(path, length > 0 ? static_cast<std::size_t>(length) : 0));
    const std::filesystem::path folder = exe.parent_path();
    // PREFIX/bin/wfctl, PREFIX/libexec/watch/PROGRAM
    return (folder.filename() == "watch" ? folder.parent_path().parent_path() : folder.parent_path())
        .string();
}

void SetAreasFromEnvironment()
{
    std::string root = Environment("WATCH_ROOT");
    std::string resources = Environment("WATCH_RESOURCES");
    if (root.empty()) root = DefaultRoot();
    if (resources.empty()) resources = InstallPrefix() + "/" WATCH_DATADIR "/watch";
    const auto plain = [](const std::string& path) {
        std::string text = std::filesystem::absolute(path).lexically_normal().string();
        while (text.size() > 1 && text.back() == '/') text.pop_back();
        return text;
    };
    SetAreas({plain(root), plain(resources)});
}

std::unique_ptr<Process> Process::Start(const std::string& appId)
{
    SetAreasFromEnvironment();
    if (!MakeRoot()) return nullptr;
    std::unique_ptr<Process> process(new Process(appId, BusAddress()));
    return process->Connect() ? std::move(process) : nullptr;
}

Process::Process(std::string appId, std::string address)
    : mAppId(std::move(appId)),
      mAddress(std::move(address)),
      mInbox(MainLoop()),
      mKeys(KeysPath(), kKeysMode),
      mPreferences(PreferencesPath(mAppId), kPreferencesMode),
      mSurvey(SurveyPath(mAppId))
{
    assert(!gCurrent);
    gCurrent = this;
}

Process::~Process()
{
    gCurrent = nullptr;
}

Process& Process::Current()
{
    assert(gCurrent);
    return *gCurrent;
}

bool Process::Connect()
{
    std::string error;
    const auto lost = [this] {
        PLATFORM_FAULT("the bus is gone; ending");
        Exit(kExitBusLost);
    };
    mBus = Bus::Open(mAddress, MainLoop(), lost, &error);
    if (!mBus) {
        PLATFORM_FAULT("no bus at %s; is a watch running?", error.c_str());
        return false;
    }
    mPorts = std::make_unique<MessagePorts>(*mBus, mAppId);
    mLaunches = std::make_unique<LaunchSender>(*mBus, mAddress, mAppId, mInbox);
    mTracing = std::make_unique<TraceSwitch>(*mBus, mKeys, mAppId);
    return true;
}

void Process::HandleSignals()
{
    signal(SIGPIPE, SIG_IGN);  // whoever reads our log may leave
    for (const int number : {SIGTERM, SIGINT}) {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, number);
        sigprocmask(SIG_BLOCK, &set, nullptr);
        const auto end = [](sd_event_source* source, const signalfd_siginfo*, void*) {
            return sd_event_exit(sd_event_source_get_event(source), 0);
        };
        const int code = sd_event_add_signal(MainLoop(), nullptr, number, end, nullptr);
        if (code >= 0) continue;
        PLATFORM_FAULT("could not wait for signal %d: %s", number, std::strerror(-code));
        sigprocmask(SIG_UNBLOCK, &set, nullptr);  // it ends the program all the same, without a farewell
    }
}

int Process::TakeNames()
{
    std::string name;
    int code = mPorts->Announce(&name);
    if (code >= 0) code = mBus->RequestName(name = mAppId);
    if (code >= 0) return 0;
    if (code == -EEXIST) {
        PLATFORM_FAULT("another %s is running: the name [%s] is taken", mAppId.c_str(), name.c_str());
        return kExitAlreadyRunning;
    }
    PLATFORM_FAULT("could not take the name [%s]: %s", name.c_str(), std::strerror(-code));
    return kExitBusLost;
}

// Whatever is sent from then on finds nobody, or starts the program anew.
void Process::GiveUpNames()
{
    mBus->ReleaseName(mAppId);
    mPorts->Retire();
}

int Process::Run(const service_app_lifecycle_callback_s& callbacks, void* userData)
{
    HandleSignals();
    mTracing->Follow();
    const LaunchReceiver receiver(*mBus, [&](app_control_h request) {
        if (callbacks.app_control) callbacks.app_control(request, userData);
    });
    const auto create = [&] {
        const TraceSpan span("application", "create");
        return !callbacks.create || callbacks.create(userData);
    };
    if (!create()) return EXIT_FAILURE;
    int code = TakeNames();
    if (code == 0) {
        sd_event_set_watchdog(MainLoop(), true);
        if (const int said = sd_notify(0, "READY=1"); said < 0)
            PLATFORM_FAULT("could not say that it is ready: %s", std::strerror(-said));
        code = sd_event_loop(MainLoop());
        sd_notify(0, "STOPPING=1");
        GiveUpNames();
    }
    const TraceSpan span("application", "terminate");
    mLaunches->CancelAll();
    if (callbacks.terminate) callbacks.terminate(userData);
    return code;
}

void Process::Leave()
{
    if (mEnd) return;
    mEnd = std::make_unique<CommonUtilIdler>([this] {
        Exit(0);
        return kCommonUtilTaskEnd;
    });
    GiveUpNames();
    // The first answer comes behind everything that was routed to our names, the second behind the answers to
    // what had to be asked about the senders of that.
    mBus->AfterRouting([this] { mBus->AfterRouting([this] { mEnd->Start(); }); });
}

void Process::Exit(int code)
{
    sd_event_exit(MainLoop(), code);
}

}  // namespace Platform
