// Another application on a real bus: a connection with a loop and a thread of its own.

#pragma once

#include <future>
#include <mutex>
#include <set>
#include <thread>

#include "event-loop-sdevent.h"
#include "harness.h"
#include "message-port-sdbus.h"
#include "value-store-sqlite.h"

namespace Contract {

class BusPeer final : public Peer {
public:
    // `toApp` is the application under test.
    BusPeer(const std::string& address, std::string appId, std::string toApp);
    ~BusPeer() override;

    void Listen(const std::string& port, bool trusted) override;
    std::vector<Received> Inbox() const override;
    void Send(const std::string& port, bool trusted, const Message& message,
              const std::string& fromPort) override;
    std::function<std::optional<LaunchAnswer>()> Launch(const Message& extra) override;
    void AnswerLaunches(const LaunchAnswer& answer) override;
    void SetKey(const std::string& key, const KeyValue& value) override;

private:
    void Run(const std::string& address, std::promise<void> ready);
    void OnThread(std::function<void()> work);  // returns when it has run
    static int OnCall(sd_bus_message* message, void* self, sd_bus_error*);
    int Take(sd_bus_message* message);
    int Answer(sd_bus_message* message);

    const std::string mAppId;
    const std::string mToApp;
    mutable std::mutex mMutex;
    std::set<std::pair<std::string, bool>> mListening;  // port, trusted
    std::vector<Received> mInbox;
    std::optional<LaunchAnswer> mLaunchAnswer;
    sd_event* mEvent = nullptr;  // these are the thread's
    sd_bus* mBus = nullptr;
    std::unique_ptr<Platform::LoopInbox> mWork;
    std::thread mThread;
};

}  // namespace Contract
