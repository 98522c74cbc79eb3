// What a contract test needs of the platform that it runs on: time, the main loop, and other applications.
// Each platform supplies one harness-*.cpp with Harness::Make(); the tests are the same.
//
// Terms
//   application  the one under test: this process, as ApplicationId(). Its ports are those that the test
//   opens
//                with CommonUtilIPCControl; they can be reached by peers from the loop's next turn on.
//   peer         another application, in another process or on another connection.
//
// One Harness a test. It starts with empty stores, no settings set, an empty Root(), and the areas
// (Platform::SetAreas) below it.

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app-control.h"
#include "common-util-system-settings.h"

namespace Contract {

using Strings = std::vector<std::string>;
using Message = std::map<std::string, std::variant<std::string, Strings>>;
using KeyValue = std::variant<bool, int, std::string>;

// What reached a port of a peer.
struct Received {
    std::string from;
    std::string fromPort;
    std::string port;
    Message message;
};

// A usage record that was kept.
struct SurveyRecord {
    bool isFeature = false;  // else a status
    std::string application, feature, value, extra;
    bool operator==(const SurveyRecord&) const = default;
};

struct LaunchAnswer {
    int result = 0;
    Message extra;
};

class Peer {
public:
    virtual ~Peer() = default;  // leaves: its ports and its id are free when this returns

    // The port is up when this returns.
    virtual void Listen(const std::string& port, bool trusted) = 0;
    virtual std::vector<Received> Inbox() const = 0;  // in the order of arrival

    // To a port of the application, as the peer itself; whether it gets there is the platform's to say. Calls
    // of one peer keep their order.
    virtual void Send(const std::string& port, bool trusted, const Message& message,
                      const std::string& fromPort = "") = 0;

    // Sends the application a launch request. The function that is returned gives the answer once it is
    // there.
    virtual std::function<std::optional<LaunchAnswer>()> Launch(const Message& extra) = 0;
    // From now on this peer answers each launch request that it gets so, without any help of the main loop.
    virtual void AnswerLaunches(const LaunchAnswer& answer) = 0;

    // Writes a platform key, as any other process does.
    virtual void SetKey(const std::string& key, const KeyValue& value) = 0;
};

class Harness {
public:
    static std::unique_ptr<Harness> Make();
    virtual ~Harness() = default;

    virtual std::string ApplicationId() const = 0;
    virtual std::string Root() const = 0;

    // Runs the main loop until `condition` holds; false when it does not within `deadline` seconds.
    virtual bool RunUntil(const std::function<bool()>& condition, double deadline = 10) = 0;
    // Runs the main loop until all that is pending has run and it would wait.
    virtual void WaitTurn() = 0;
    virtual double Now() const = 0;  // seconds on the clock of the timers

    // The id is one of the application table's.
    virtual std::unique_ptr<Peer> AsPeer(const std::string& appId) = 0;
    // The id of an application whose program cannot be started.
    virtual std::string UnstartableApplication() = 0;
    // Takes the place of the application's launch request callback.
    virtual void OnLaunchRequest(std::function<void(app_control_h)> handler) = 0;

    // Written by another process. For the hour mode "true" or "false".
    virtual void SetSetting(system_settings_key_e key, const std::string& value) = 0;

    // The application's usage records, as whoever collects them finds them.
    virtual std::vector<SurveyRecord> Survey() = 0;

    // What the log prints during `body` with WATCH_LOG=`filter`, line by line, when stderr is neither a file
    // nor the journal. `body` may run in a process of its own: nothing but its log lines comes back.
    virtual Strings Printed(const std::string& filter, const std::function<void()>& body) = 0;
};

}  // namespace Contract
