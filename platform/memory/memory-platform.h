// The platform for tests: everything that platform/include declares, inside the test's process, with the
// clock, the main loop, the peers and the failures in the test's hands.
//
// Terms
//   call      what the code under test asked of the platform, as one line of text (see Calls()). Paths in it
//             are short: "RW:", "RO:" and "TRUSTED:" stand for the areas of com.corvane.watchface, "ROOT:"
//             and "RES:" for the folders that hold every area.
//   main      the thread that made the Platform. It runs the loop: nothing that belongs on the main loop
//             happens outside RunUntilIdle(), Advance(), RunTurn(), Deliver() and RaiseEvent().
//   worker    any other thread; numbered from 1 in the order in which they first called the platform.
//   use       one call of a named function; see Fail() and Hold().
//
// Normal flow
//   MemoryPlatform::Platform platform;                   // one per test, made first, destroyed last
//   platform.SetKey("db/wms/clocks_set_idle", "com.corvane.watchface");
//   platform.SetPortUp("com.corvane.w-home", "w-home::localport");
//   ... make the object under test ...
//   platform.Deliver("watchface-service::localport", "com.corvane.w-home", {{"type", "watch-idle-changed"}});
//   platform.RunUntilIdle();
//   EXPECT_THAT(platform.Calls({"key set"}), ElementsAre("key set db/wms/clocks_set_idle=..."));
//   EXPECT_THAT(platform.LogTexts(), Contains("E idle clock set done!!"));
//
// What always holds
//   - Every Platform of a process uses the same folder, emptied at its start and at its end: code that
//     keeps a path for the life of the process stays right from test to test.
//   - Files are real, written by the file layer of the product. Calls that are made to fail have no effect.
//   - What a test calls of the platform itself is recorded and counted like the calls of the code under test.
//   - Recording is safe on any thread. usleep() returns at once; on the main thread it moves the clock.

#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "app-control.h"
#include "bundle.h"
#include "common-util-system-settings.h"
#include "data-util.h"
#include "log.h"
#include "service-app.h"

namespace MemoryPlatform {

struct State;

using Strings = std::vector<std::string>;

// A bundle or a launch request's extra data.
using Message = std::map<std::string, std::variant<std::string, Strings>>;
bundle* NewBundle(const Message& message);  // released with bundle_free()
Message ContentOf(const bundle* message);
// {"key": "text", "list": ["a", "b"]}, keys in byte order.
std::string ToText(const Message& message);

// A value of a platform key or a preference.
using StoreValue = std::variant<bool, int, std::string>;

enum Where { kAnyThread, kMainThread, kWorkerThreads };

struct Call {
    std::string text;
    int thread = 0;  // 0 is main
};

struct LogLine {
    int priority = DLOG_UNKNOWN;
    std::string tag;
    std::string text;  // as written, with its prefix
    // "file: function(line) > message"; without such a prefix the message is the whole text.
    std::string file;
    std::string function;
    int line = 0;
    std::string message;
    int thread = 0;
};

struct SentMessage {
    std::string appId;
    std::string port;
    std::string senderPort;  // empty when sent without a port object
    bool trusted = false;
    bool arrived = false;  // whether that port was up
    Message message;

    // The string under the key; empty when there is none.
    std::string Text(const std::string& key) const;
};

struct SurveyRecord {
    bool feature = false;  // SendFeatureSurveyInfo, else SendStatusSurveyInfo
    std::string appId;
    std::string name;
    std::string value;
    std::string extra;
    bool operator==(const SurveyRecord&) const = default;
};
void PrintTo(const SurveyRecord& record, std::ostream* out);  // for a test that fails

// A launch request that the code under test sent.
struct Launch {
    std::string appId;
    Message extra;
    int result = 0;  // what app_control_send_launch_request() returned
    int thread = 0;
};

// How a named function fails: from its `use`-th use on, counted from the call of Fail(), `times` times.
struct Failure {
    int use = 1;
    int times = 1;
    int code = -5;  // what functions that return a code return
    static constexpr int kAlways = 1 << 30;
};

// A launch request that the application received. The handle is released by Close(), as the platform does
// when the application's callback returns, or with this object; clones keep the request open.
class ReceivedRequest {
public:
    explicit ReceivedRequest(const Message& extra, const std::string& caller = "");
    ~ReceivedRequest();
    ReceivedRequest(const ReceivedRequest&) = delete;
    ReceivedRequest& operator=(const ReceivedRequest&) = delete;

    app_control_h Handle() const { return mHandle; }
    void Close();

    // What the caller got. Unanswered requests are answered as failed, without data, when the last handle
    // goes.
    bool IsAnswered() const;
    int Result() const;
    Message ReplyExtra() const;

private:
    struct Answer;
    class Pending;
    std::shared_ptr<Answer> mAnswer;
    app_control_h mHandle = nullptr;
};

// A face's usage items as data_util_log_item_get_from_result_xml_file() gives them; what is not set is null.
struct UsageItems {
    std::optional<std::string> firstFeature = {}, firstValue = {};
    std::optional<std::string> secondFeature = {}, secondValue = {};
    std::optional<std::string> complicationFeature = {};
    std::vector<std::optional<std::string>> complicationEntries = {};
};

struct WorldClock {
    std::optional<std::string> complicationName = {}, timezone = {}, timezonePath = {};
    std::optional<std::string> cityName = {}, country = {};
    bool operator==(const WorldClock&) const = default;
};

// What the data library answers. No value is null. Replace any of them. Every use is a call.
struct DataLibrary {
    using Text = std::optional<std::string>;
    // "<watchface>" + text + "</watchface>"; null for an empty text.
    std::function<Text(const std::string& resultXml)> convert;
    std::function<bool(const std::string& path, const char* limitSpec)> hasLimited;     // false
    std::function<Text(const std::string& path, const char* limitSpec)> removeLimited;  // the file, converted
    std::function<Text(const std::string& path, const WorldClock& record)> updateWorldClock;  // likewise
    int serializeSupported = 1;
    int logItemSupported = 1;
    std::function<Text(const std::string& path)> serialize;                   // null
    std::function<std::optional<UsageItems>(const std::string& path)> items;  // null
    data_util_log_item_s* lentItem = nullptr;                                 // what is not released yet
};

// What service_app_main() does between the create and the terminate callback, and what it returns.
struct MainScript {
    std::function<void()> body = {};  // none: RunUntilIdle()
    int result = 0;
    bool runs = true;  // false: refused before the create callback, as a second instance is
};

class Platform {
public:
    Platform();
    ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    // --- Files ---------------------------------------------------------------------------------------------
    std::string Root() const;       // of everything that is written, no "/" at the end
    std::string Resources() const;  // of everything that is installed
    // A path in an area of com.corvane.watchface, for example RW("watchlist/a/watchface.xml").
    std::string RW(const std::string& path = "") const;
    std::string RO(const std::string& path = "") const;
    std::string Trusted(const std::string& path = "") const;
    // On the file system itself, unrecorded; parents are made.
    void WriteFile(const std::string& path, const std::string& content) const;
    std::optional<std::string> ReadFile(const std::string& path) const;
    bool Exists(const std::string& path) const;
    // Every file and folder below `path`, relative, sorted; folders end in "/".
    Strings Tree(const std::string& path) const;

    // --- What was called, in order -------------------------------------------------------------------------
    // Lines, all or those that begin with one of `prefixes`:
    //   key get K | key set K=V | key watch K | key unwatch K      (true, false, 1, text)
    //   pref get K | pref set K=V | ttrace true
    //   setting get NAME | setting watch NAME | setting unwatch NAME
    //                                    (NAME: language, country, 24-hour, timezone, timezone-path)
    //   port open P trusted | port open P open | port close P | port check APP P
    //   send APP P {...} | send-open APP P {...}
    //   job start | idler start | timer start 0.5 | timer stop
    //   mkpath PATH | recursive_rm PATH | remove PATH | ls PATH | exists PATH | is_dir PATH
    //   xml PATH | png PATH | png released | copy FROM -> TO
    //   read PATH | open PATH | close PATH | lock PATH 3 | unlock PATH
    //   usleep 200000
    //   app_control_create | app_control_clone | app_control_set_app_id APP | app_control_destroy
    //   launch APP {...} | launch reply 0 {...}
    //   path resource APP | path data APP | path trusted APP
    //   data_util_... ARGUMENTS
    //   formatter [SKELETON] [TIMEZONE] [LANGUAGE] BEST | format INSTANT | formatter released
    //   survey status APP NAME VALUE EXTRA | survey feature ...
    //   event add N | event remove N | service_app_main ARGUMENTS | service_app_exit
    Strings Calls(const Strings& prefixes = {}, Where where = kAnyThread) const;
    std::vector<Call> CallsWithThreads() const;
    // Calls and log lines in one order; a log line as "log E message". Lines of the tag "platform", the
    // platform's own, are left out.
    Strings Timeline(Where where = kAnyThread) const;
    void Forget();  // calls, logs, sent messages, launches and survey records so far

    std::vector<LogLine> Logs(const std::string& tag = "watchface-service") const;
    // "E message", "I message" ...
    Strings LogTexts(const std::string& tag = "watchface-service", Where where = kAnyThread) const;
    Strings Errors() const;  // messages of that priority under the service's tag
    Strings Infos() const;
    // What __dlog_print would have printed for the lines of at least this priority: "E/TAG(PID): text".
    void SetLogFilter(const std::string& name);  // as WATCH_LOG; "info" at the start; Logs() has all lines
    Strings PrintedLog() const;

    // --- Failures and threads ------------------------------------------------------------------------------
    // Makes a named function fail:
    //   bundle_create bundle_dup bundle_add_str bundle_add_str_array bundle_del
    //   app_control_create app_control_clone app_control_destroy app_control_set_app_id
    //   app_control_add_extra_data app_control_get_extra_data app_control_send_launch_request
    //   app_control_reply_to_launch_request
    //   app_manager_get_shared_resource_path app_manager_get_shared_data_path
    //   app_manager_get_shared_trusted_path ecore_file_mkpath ecore_file_recursive_rm ecore_file_remove
    //   ecore_file_exists ecore_file_is_dir ecore_file_ls CommonUtilFile::Copy CommonUtilFile::Exists
    //   ReadWholeFile FileOutputStream CommonUtilVConf::Get CommonUtilVConf::Set CommonUtilPref::Get
    //   CommonUtilPref::Set SendTrustedMessage SendMessage CheckTrustedRemotePort
    //   data_util_... (each by its own name; null or 0) service_app_add_event_handler
    //   cairo_image_surface_create_from_png CommonUtilI18NDateFormatter::Format
    // A failed app_control_destroy releases the handle all the same; a clone that is never destroyed goes
    // with the Platform, as with its process. An unknown name throws.
    void Fail(const std::string& function, Failure failure = {});
    int Uses(const std::string& function) const;  // so far, failed ones included
    // What app_manager_get_shared_..._path gives from here on instead of the area, as it stands.
    void ScriptAreaPath(const std::string& function, const std::string& path);

    // Blocks workers (never main) when they enter this function, until Release().
    void Hold(const std::string& function);
    void Release(const std::string& function);
    // Each waits at most `deadline` seconds of real time and tells whether it happened.
    bool WaitUntilHeld(const std::string& function, double deadline = 10);
    bool WaitForCall(const std::string& prefix, int count = 1, double deadline = 10);  // on any thread
    bool WaitForLog(const std::string& message, int count = 1, double deadline = 10);
    // Until `started` workers have been seen and all of them have ended.
    bool WaitForWorkersEnd(int started = 1, double deadline = 10);

    // --- Main loop -----------------------------------------------------------------------------------------
    double Now() const;  // seconds since the Platform was made
    // What is pending now; then, if that was nothing, each started idler once. False when nothing ran.
    bool RunTurn();
    // Turns until nothing runs; time stands still. Throws when it does not end.
    void RunUntilIdle();
    // Turns until nothing runs, then on to each timer that is due by then.
    void Advance(double seconds);
    void Post(std::function<void()> task);  // on the next turn; from any thread
    // Seconds until the next timer; none when none runs.
    std::optional<double> NextTimer() const;

    // --- Peers ---------------------------------------------------------------------------------------------
    void SetPortUp(const std::string& appId, const std::string& port, bool up = true);  // trusted ones
    std::vector<SentMessage> Sent() const;
    std::vector<SentMessage> SentTo(const std::string& appId) const;
    Strings OpenPorts() const;
    // Hands the message to the callback of that open local port, at once. False when it is not open.
    bool Deliver(const std::string& port, const std::string& senderId, const Message& message,
                 const std::string& senderPort = "");
    bool DeliverNothing(const std::string& port, const std::string& senderId);  // a null bundle
    // As a peer sends it: on the next turn, to an open local port of that kind; else it is lost.
    void SendAs(const std::string& senderId, const std::string& port, bool trusted, const Message& message,
                const std::string& senderPort = "");

    // --- Stores (by another application: watchers are told on the next turn) ---
    void SetKey(const std::string& key, const StoreValue& value);
    void UnsetKey(const std::string& key);
    std::optional<StoreValue> Key(const std::string& key) const;
    void SetPref(const std::string& key, const StoreValue& value);
    void UnsetPref(const std::string& key);
    std::optional<StoreValue> Pref(const std::string& key) const;
    std::map<std::string, StoreValue> Prefs() const;
    bool TraceEnabled() const;

    // en_GB, en_GB, 24-hour and Europe/London at the start.
    void SetLanguage(const std::string& language);
    void SetCountry(const std::string& country);
    void Set24HourMode(bool on);
    void SetTimezone(const std::string& timezone);
    void UnsetSettings();  // from here on they follow the environment

    // --- Launch requests -----------------------------------------------------------------------------------
    // What the next launches return, one each; 0 after the last.
    void ScriptLaunches(const std::vector<int>& results);
    std::vector<Launch> Launches() const;
    // Answers the oldest launch that waits for its reply; the callback runs on the next turn. False when
    // none.
    bool ReplyToLaunch(app_control_result_e result = APP_CONTROL_RESULT_SUCCEEDED, const Message& extra = {});
    void ReplyToLaunchesAtOnce(bool on);  // every later launch is answered as succeeded
    // Hands a request to the application that runs in service_app_main(), at once. The request stays open
    // while clones of it exist. Null when no application runs.
    std::unique_ptr<ReceivedRequest> Request(const Message& extra, const std::string& caller = "");

    // --- The application and what else it calls ---
    void ScriptMain(MainScript script);
    void RaiseEvent(app_event_type_e type);  // runs the handlers at once
    DataLibrary& Data();
    // What dates read from here on; until then they read as on the watch.
    void ScriptDates(const std::function<std::string(int64_t instant)>& format);
    std::vector<SurveyRecord> Survey() const;
    void OnSurvey(std::function<void(const SurveyRecord&)> sent);  // called with each record from here on

private:
    std::unique_ptr<State> mState;
};

}  // namespace MemoryPlatform
