#include <algorithm>
#include <vector>

#include "application-table.h"
#include "harness.h"
#include "memory-platform.h"

namespace Contract {

namespace {

class MemoryPeer;

class MemoryHarness : public Harness {
public:
    MemoryHarness() { platform.UnsetSettings(); }

    std::string ApplicationId() const override { return std::string(Platform::kServiceId); }
    std::string Root() const override { return platform.Root(); }
    bool RunUntil(const std::function<bool()>& condition, double deadline) override;
    void WaitTurn() override
    {
        AnswerLaunches();
        platform.RunUntilIdle();
    }
    double Now() const override { return platform.Now(); }
    std::unique_ptr<Peer> AsPeer(const std::string& appId) override;
    std::string UnstartableApplication() override
    {
        platform.ScriptLaunches({APP_CONTROL_ERROR_LAUNCH_FAILED});
        return "com.corvane.no-such-application";
    }
    void OnLaunchRequest(std::function<void(app_control_h)> handler) override
    {
        onRequest = std::move(handler);
    }
    void SetSetting(system_settings_key_e key, const std::string& value) override;
    std::vector<SurveyRecord> Survey() override
    {
        std::vector<SurveyRecord> records;
        for (const auto& sent : platform.Survey()) {
            records.push_back({sent.feature, sent.appId, sent.name, sent.value, sent.extra});
        }
        return records;
    }
    Strings Printed(const std::string& filter, const std::function<void()>& body) override;

    MemoryPlatform::Platform platform;
    std::function<void(app_control_h)> onRequest;
    std::vector<MemoryPeer*> peers;

private:
    bool AnswerLaunches();

    std::size_t mAnswered = 0;
};

class MemoryPeer : public Peer {
public:
    MemoryPeer(MemoryHarness& harness, std::string id) : mHarness(harness), mId(std::move(id))
    {
        mHarness.peers.push_back(this);
    }
    ~MemoryPeer() override
    {
        std::erase(mHarness.peers, this);
        for (const Port& port : mPorts) mHarness.platform.SetPortUp(mId, port.name, false);
    }

    void Listen(const std::string& port, bool trusted) override
    {
        mPorts.push_back({port, trusted, mHarness.platform.Sent().size()});
        if (trusted) mHarness.platform.SetPortUp(mId, port);
    }

    std::vector<Received> Inbox() const override
    {
        std::vector<Received> inbox;
        const auto sent = mHarness.platform.Sent();
        for (std::size_t i = 0; i < sent.size(); ++i) {
            const auto takes = [&](const Port& port) {
                return port.name == sent[i].port && port.trusted == sent[i].trusted && i >= port.upSince;
            };
            if (sent[i].appId != mId || std::none_of(mPorts.begin(), mPorts.end(), takes)) continue;
            inbox.push_back({mHarness.ApplicationId(), sent[i].senderPort, sent[i].port, sent[i].message});
        }
        return inbox;
    }

    void Send(const std::string& port, bool trusted, const Message& message,
              const std::string& fromPort) override
    {
        mHarness.platform.SendAs(mId, port, trusted, message, fromPort);
    }

    std::function<std::optional<LaunchAnswer>()> Launch(const Message& extra) override
    {
        const auto request = std::make_shared<MemoryPlatform::ReceivedRequest>(extra, mId);
        mHarness.platform.Post([this, request] {
            mHarness.onRequest(request->Handle());
            request->Close();
        });
        return [request]() -> std::optional<LaunchAnswer> {
            if (!request->IsAnswered()) return std::nullopt;
            return LaunchAnswer{request->Result(), request->ReplyExtra()};
        };
    }

    void AnswerLaunches(const LaunchAnswer& given) override { answer = given; }
    void SetKey(const std::string& key, const KeyValue& value) override
    {
        mHarness.platform.SetKey(key, value);
    }
    const std::string& Id() const { return mId; }

    std::optional<LaunchAnswer> answer;

private:
    struct Port {
        std::string name;
        bool trusted;
        std::size_t upSince;  // the number of messages sent before
    };
    MemoryHarness& mHarness;
    const std::string mId;
    std::vector<Port> mPorts;
};

bool MemoryHarness::AnswerLaunches()
{
    const auto launches = platform.Launches();
    bool any = false;
    for (; mAnswered < launches.size(); ++mAnswered) {
        if (launches[mAnswered].result != 0) continue;
        const auto peer = std::find_if(peers.begin(), peers.end(), [&](const MemoryPeer* candidate) {
            return candidate->Id() == launches[mAnswered].appId;
        });
        if (peer == peers.end() || !(*peer)->answer) break;
        const LaunchAnswer& answer = *(*peer)->answer;
        any = platform.ReplyToLaunch(static_cast<app_control_result_e>(answer.result), answer.extra);
    }
    return any;
}

bool MemoryHarness::RunUntil(const std::function<bool()>& condition, double deadline)
{
    const double end = Now() + deadline;
    while (!condition()) {
        if (AnswerLaunches() || platform.RunTurn()) continue;
        const auto next = platform.NextTimer();
        if (!next || Now() + *next > end) return false;
        platform.Advance(*next);
    }
    return true;
}

std::unique_ptr<Peer> MemoryHarness::AsPeer(const std::string& appId)
{
    return std::make_unique<MemoryPeer>(*this, appId);
}

void MemoryHarness::SetSetting(system_settings_key_e key, const std::string& value)
{
    switch (key) {
        case SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY:
            return platform.SetCountry(value);
        case SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE:
            return platform.SetLanguage(value);
        case SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR:
            return platform.Set24HourMode(value == "true");
        case SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE:
            return platform.SetTimezone(value);
    }
}

Strings MemoryHarness::Printed(const std::string& filter, const std::function<void()>& body)
{
    platform.Forget();
    platform.SetLogFilter(filter);
    body();
    return platform.PrintedLog();
}

}  // namespace

std::unique_ptr<Harness> Harness::Make()
{
    return std::make_unique<MemoryHarness>();
}

}  // namespace Contract
