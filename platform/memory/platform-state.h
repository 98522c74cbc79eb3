// What one MemoryPlatform::Platform keeps, and how the platform's functions reach it.

#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "key-node.h"
#include "launch-data.h"
#include "memory-platform.h"
#include "record.h"
#include "virtual-loop.h"

// The name is the C interface's.
struct app_event_handler {
    app_event_type_e type;
    app_event_cb callback;
    void* userData;
};

namespace MemoryPlatform {

// A registered handler. It outlives its owner's object while it runs, so that it may destroy that object.
template <typename Handler>
struct Registration {
    std::string name;  // of the port, the key or the setting
    bool trusted = false;
    int id = 0;
    bool alive = true;
    Handler handler;
};

template <typename Handler>
using Registrations = std::vector<std::shared_ptr<Registration<Handler>>>;

using PortHandler = std::function<void(int, const std::string&, const std::string&, bool, bundle*)>;
using KeyHandler = std::function<void(keynode_t*)>;
using SettingHandler = std::function<void(system_settings_key_e)>;

struct WaitingReply {
    app_control_s request;
    app_control_reply_cb callback = nullptr;
    void* userData = nullptr;
};

struct Settings {
    std::optional<std::string> language, country, timezone;
    std::optional<bool> is24Hour;
};

struct State {
    std::shared_ptr<Record> record = std::make_shared<Record>();
    VirtualLoop loop;
    std::string root, resources;
    std::string logFilter = "info";
    std::map<std::string, std::string> areaPaths;  // function to path

    std::set<std::pair<std::string, std::string>> portsUp;
    std::vector<SentMessage> sent;
    Registrations<PortHandler> ports;
    int lastPortId = 0;

    std::map<std::string, StoreValue> keys, prefs;
    Registrations<KeyHandler> keyWatchers;
    bool trace = false;
    Settings settings;
    Registrations<SettingHandler> settingWatchers;

    std::mutex launchMutex;          // guards the next five: launches are sent on any thread
    std::set<app_control_h> clones;  // that are not destroyed yet
    std::deque<int> launchResults;
    std::vector<Launch> launches;
    std::deque<WaitingReply> waitingReplies;
    bool repliesAtOnce = false;

    MainScript mainScript;
    const service_app_lifecycle_callback_s* application = nullptr;  // while service_app_main() runs
    void* applicationData = nullptr;
    std::vector<app_event_handler_h> eventHandlers;

    DataLibrary data;
    std::function<std::string(int64_t)> dates;  // none: the product's
    std::vector<SurveyRecord> survey;
    std::function<void(const SurveyRecord&)> onSurvey;
};

// The Platform in use, or null.
State* Current();

// Records a call; nothing without a Platform.
void Note(const std::string& text);
// A use of a function; its code when it is to fail.
std::optional<int> Use(const std::string& function);
// A path in a call: the areas by their short names.
std::string Shown(const std::string& path);
inline std::string Shown(const char* path)
{
    return path ? Shown(std::string(path)) : "(null)";
}

Message ContentOf(const ::Platform::LaunchData& extra);
::Platform::LaunchData LaunchDataOf(const Message& message);

// Runs `call` for every registration of that name which is still alive when its turn comes.
template <typename Handler, typename Run>
void ForEachRegistered(const Registrations<Handler>& registrations, const std::string& name, Run&& run)
{
    const Registrations<Handler> now = registrations;
    for (const auto& registration : now) {
        if (registration->alive && registration->name == name) run(*registration);
    }
}

template <typename Handler>
std::shared_ptr<Registration<Handler>> Register(Registrations<Handler>& registrations, std::string name,
                                                Handler handler)
{
    auto registration = std::make_shared<Registration<Handler>>();
    registration->name = std::move(name);
    registration->handler = std::move(handler);
    registrations.push_back(registration);
    return registration;
}

template <typename Handler>
void Unregister(Registrations<Handler>& registrations,
                const std::shared_ptr<Registration<Handler>>& registration)
{
    registration->alive = false;
    std::erase(registrations, registration);
}

}  // namespace MemoryPlatform
