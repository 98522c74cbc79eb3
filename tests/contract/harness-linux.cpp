// The real platform, on a bus and in folders of its own.

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <thread>

#include "areas.h"
#include "harness.h"
#include "peer-linux.h"
#include "private-bus.h"
#include "process.h"
#include "system-setting-table.h"

namespace Contract {

namespace {

constexpr char kApp[] = "com.corvane.watchface-service";
constexpr char kUnstartable[] = "com.corvane.worldclock-map";

class LinuxHarness final : public Harness {
public:
    LinuxHarness()
    {
        for (const char* name : {"DBUS_STARTER_ADDRESS", "LC_ALL", "LC_TIME", "LANG", "TZ"}) unsetenv(name);
        setenv("DBUS_SESSION_BUS_ADDRESS", mBus.Address().c_str(), 1);
        setenv("WATCH_ROOT", mRoot.Path().c_str(), 1);
        setenv("WATCH_RESOURCES", (mRoot.Path() + "/resources").c_str(), 1);
        mBus.AddActivation(kUnstartable, "/bin/false");
        mProcess = Platform::Process::Start(kApp);
        std::string failed;
        mProcess->Ports().Announce(&failed);
        mProcess->GetBus().RequestName(kApp);
    }

    std::string ApplicationId() const override { return kApp; }
    std::string Root() const override { return Platform::CurrentAreas().root; }

    bool RunUntil(const std::function<bool()>& condition, double deadline) override
    {
        const double end = Now() + deadline;
        while (!condition()) {
            if (Now() > end) return false;
            sd_event_run(Platform::MainLoop(), 5'000);
        }
        return true;
    }

    // What was sent to us before reaches us before the bus answers; then nothing may be left to do.
    void WaitTurn() override
    {
        bool answered = false;
        sd_bus* bus = mProcess->GetBus().Get();
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_method_call(bus, &raw, Platform::kDriver, Platform::kDriverPath, Platform::kDriver,
                                       "GetId");
        const Platform::MessagePtr call(raw);
        Platform::CallDetached(bus, raw, 0, [&](sd_bus_message*) { answered = true; });
        while (!answered) sd_event_run(Platform::MainLoop(), UINT64_MAX);
        while (sd_event_run(Platform::MainLoop(), 0) > 0) {
        }
    }

    double Now() const override
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    }

    std::unique_ptr<Peer> AsPeer(const std::string& appId) override
    {
        return std::make_unique<BusPeer>(mBus.Address(), appId, kApp);
    }

    std::string UnstartableApplication() override { return kUnstartable; }

    void OnLaunchRequest(std::function<void(app_control_h)> handler) override
    {
        mReceiver.reset();
        mReceiver = std::make_unique<Platform::LaunchReceiver>(mProcess->GetBus(), std::move(handler));
    }

    void SetSetting(system_settings_key_e key, const std::string& value) override
    {
        const Platform::SystemSetting* setting = Platform::FindSystemSetting(key);
        const auto peer = AsPeer("com.corvane.watch-utils.setting-list");
        if (setting->isBool)
            peer->SetKey(std::string(setting->key), value == "true");
        else
            peer->SetKey(std::string(setting->key), value);
    }

    std::vector<SurveyRecord> Survey() override
    {
        std::vector<SurveyRecord> records;
        for (auto& kept : Platform::SurveyStore(Platform::SurveyPath(kApp)).List()) {
            records.push_back({kept.isFeature, kept.application, kept.feature, kept.value, kept.extra});
        }
        return records;
    }

    Strings Printed(const std::string& filter, const std::function<void()>& body) override
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return {};
        std::string text;
        std::thread reader([&, in = ends[0]] {
            char buffer[4096];
            for (ssize_t n = 0; (n = read(in, buffer, sizeof buffer)) > 0;)
                text.append(buffer, static_cast<size_t>(n));
        });
        const int before = dup(STDERR_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
        setenv("WATCH_LOG", filter.c_str(), 1);
        body();
        unsetenv("WATCH_LOG");
        dup2(before, STDERR_FILENO);
        close(before);
        reader.join();
        close(ends[0]);
        Strings lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) lines.push_back(line);
        return lines;
    }

private:
    TestSupport::PrivateBus mBus;
    TestSupport::TemporaryFolder mRoot;
    std::unique_ptr<Platform::Process> mProcess;
    std::unique_ptr<Platform::LaunchReceiver> mReceiver;
};

}  // namespace

std::unique_ptr<Harness> Harness::Make()
{
    return std::make_unique<LinuxHarness>();
}

}  // namespace Contract
