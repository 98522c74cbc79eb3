// Stored values: key, pref, setting.

#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "application-table.h"
#include "areas.h"
#include "arguments.h"
#include "connection.h"
#include "exit-status.h"
#include "faces.h"
#include "hint.h"
#include "json-text.h"
#include "locales-icu.h"
#include "platform-keys-sdbus.h"
#include "private-watch.h"
#include "settings.h"
#include "trace-switch-keys.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

using Platform::StoredValue;
using Platform::SystemSetting;
using Platform::ValueStore;

constexpr unsigned kKeysMode = 0660;
constexpr unsigned kPreferencesMode = 0600;

struct ValueArguments {
    std::string app, key, value, type;
    std::vector<std::string> keys;
    unsigned count = 0;
    double timeout = -1;
};

// The platform keys of the selected watch, and the bus on which their changes are announced.
struct KeyStore {
    explicit KeyStore(const Options& options)
        : connection((SelectWatch(options.root), std::make_unique<Connection>())),
          values(Platform::KeysPath(), kKeysMode)
    {
    }
    std::unique_ptr<Connection> connection;
    ValueStore values;

    void Set(const std::string& key, const StoredValue& value)
    {
        const int code = Platform::SetKey(values, connection->Get(), key, value);
        if (code != 0)
            throw Stop(Exit::kError, "the key [" + key + "] could not be written: " + sqlite3_errstr(code));
        BeHeard();
    }

    // The bus drops what it has not read of a program that is gone when it has something to write to it.
    void BeHeard() { connection->RoundTrip(); }
};

void CheckWritten(int code, const std::string& what, const std::string& key)
{
    if (code == 0) return;
    throw Stop(Exit::kError, "the " + what + " [" + key + "] could not be written: " + sqlite3_errstr(code));
}

// What kind of values a verb is about, as its errors say it.
struct ValueKind {
    std::string what;  // "key"
    std::string list;  // the verb that lists them
    Names known;       // that may be unset
};

// Stops with the nearest of those that there are.
StoredValue Required(ValueStore& store, const ValueKind& kind, const std::string& key)
{
    if (auto value = store.Get(key)) return *std::move(value);
    const auto stored = store.List();
    Names names = kind.known;
    for (const auto& [name, value] : stored) names.push_back(name);
    // One that is known and unset is spelled right.
    const std::string hint = std::ranges::find(names, key) == names.end() ? DidYouMean(key, names) : "";
    throw Stop(Exit::kNotFound,
               "there is no " + kind.what + " [" + key + "]; " + hint + "type: wfctl " + kind.list);
}

void Print(const Options& options, const StoredValue& value)
{
    PrintLine(options.json ? JsonLine(ValueToJson(value)) : ValueText(value));
}

void PrintList(const Options& options, const std::vector<std::pair<std::string, StoredValue>>& values)
{
    Json object = Json::object();
    for (const auto& [key, value] : values) {
        if (options.json)
            object[key] = ValueToJson(value);
        else
            PrintLine(key + "=" + ValueText(value));
    }
    if (options.json) PrintLine(JsonLine(object));
}

// What was written is news to programs alone.
void PrintWritten(const Options& options, const std::vector<std::pair<std::string, StoredValue>>& values)
{
    if (options.json) PrintList(options, values);
}

void PrintUnset(const Options& options, const std::vector<std::string>& keys)
{
    Json unset = Json::object();
    for (const std::string& key : keys) unset[key] = nullptr;
    if (options.json) PrintLine(JsonLine(unset));
}

// Prints what `read` gives for a name whenever its key is written, until the count or the time is over.
struct Watched {
    std::string name, key;
    std::function<std::optional<StoredValue>()> read;
};
Exit WatchAll(const Options& options, const ValueArguments& arguments, Connection& connection,
              const std::vector<Watched>& watched)
{
    unsigned seen = 0;
    const auto isDone = [&] { return arguments.count > 0 && seen >= arguments.count; };
    std::vector<Platform::SlotPtr> slots;
    slots.reserve(watched.size());
    for (const Watched& one : watched) {
        slots.push_back(Platform::WatchKey(connection.Get(), one.key, [&, &shown = one] {
            if (isDone()) return;
            ++seen;
            const auto value = shown.read();
            if (options.json) {
                PrintLine(JsonLine(Json::object({
                    {"key",   BytesToJson(shown.name)                    },
                    {"value", value ? ValueToJson(*value) : Json(nullptr)}
                })));
            } else {
                PrintLine(value ? shown.name + "=" + ValueText(*value) : shown.name + " is unset");
            }
        }));
    }
    connection.RoundTrip();
    std::fprintf(stderr, "watching %zu %s\n", watched.size(), watched.size() == 1 ? "key" : "keys");
    const bool done =
        connection.RunUntil(isDone, arguments.timeout < 0 ? kForEver : Seconds(arguments.timeout));
    if (done) return Exit::kDone;
    throw Stop(Exit::kNoAnswer, "the time ran out; " + std::to_string(seen) + " changes came");
}

// --- platform keys ---

ValueKind PlatformKeys()
{
    ValueKind kind{
        "key", "key list", {kIdleClockKey, kWatchfaceNameKey, Platform::kTraceKey}
    };
    for (const SystemSetting& setting : Platform::kSystemSettings) kind.known.push_back(setting.key);
    return kind;
}

Exit KeyGet(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    Print(options, Required(store.values, PlatformKeys(), arguments.key));
    return Exit::kDone;
}

Exit KeySet(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    const StoredValue value = ParseValue(arguments.value, arguments.type, store.values.Get(arguments.key));
    store.Set(arguments.key, value);
    PrintWritten(options, {
                              {arguments.key, value}
    });
    return Exit::kDone;
}

Exit KeyUnset(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    for (const std::string& key : arguments.keys) Required(store.values, PlatformKeys(), key);
    for (const std::string& key : arguments.keys) {
        CheckWritten(store.values.Unset(key), "key", key);
        Platform::AnnounceKey(store.connection->Get(), key);
    }
    store.BeHeard();
    PrintUnset(options, arguments.keys);
    return Exit::kDone;
}

Exit KeyList(const Options& options)
{
    KeyStore store(options);
    PrintList(options, store.values.List());
    return Exit::kDone;
}

Exit KeyWatch(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    std::vector<Watched> watched;
    const ValueKind kind = PlatformKeys();
    for (const std::string& key : arguments.keys) {
        WarnOfSlip("there is no key", key, kind.known);
        watched.push_back({key, key, [&store, key] { return store.values.Get(key); }});
    }
    return WatchAll(options, arguments, *store.connection, watched);
}

// --- preferences ---

// Nothing is made for an application that has no preferences yet, unless `make`.
std::unique_ptr<ValueStore> Preferences(const Options& options, const std::string& app, bool make)
{
    const std::string id = CheckedAppId(app);
    SelectWatch(options.root);
    const Connection connection;  // a watch that is not running has no preferences to talk about
    const std::string path = Platform::PreferencesPath(id);
    std::error_code error;
    if (!make && !std::filesystem::exists(path, error)) return nullptr;
    return std::make_unique<ValueStore>(path, kPreferencesMode);
}

// The applications of the watch, and all that have a folder.
std::vector<std::string> KnownApplications()
{
    const Names ids = ApplicationIds();
    std::vector<std::string> known(ids.begin(), ids.end());
    std::error_code error;
    const std::string folder = Platform::CurrentAreas().root + "/apps";
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        known.push_back(entry.path().filename());
    return known;
}

void WarnOfUnknown(const std::string& app)
{
    const std::vector<std::string> known = KnownApplications();
    WarnOfSlip("there is no application", app, NamesOf(known));
}

std::unique_ptr<ValueStore> RequiredPreferences(const Options& options, const std::string& app)
{
    if (auto store = Preferences(options, app, false)) return store;
    const std::vector<std::string> known = KnownApplications();
    const bool isKnown = std::ranges::find(known, app) != known.end();
    throw Stop(Exit::kNotFound, "[" + app + "] has no preferences; " +
                                    (isKnown ? "" : DidYouMean(app, NamesOf(known))) +
                                    "type: wfctl pref set --help");
}

ValueKind PreferencesOf(const std::string& app)
{
    Names known;
    if (app == Platform::kServiceId) known = {kWorldClockTargetPref, "wfs-pref-idle-change-request-from"};
    return {"preference", "pref list " + app, known};
}

Exit PrefGet(const Options& options, const ValueArguments& arguments)
{
    const auto store = RequiredPreferences(options, arguments.app);
    Print(options, Required(*store, PreferencesOf(arguments.app), arguments.key));
    return Exit::kDone;
}

Exit PrefSet(const Options& options, const ValueArguments& arguments)
{
    WarnOfUnknown(arguments.app);
    const auto store = Preferences(options, arguments.app, true);
    const StoredValue value = ParseValue(arguments.value, arguments.type, store->Get(arguments.key));
    CheckWritten(store->Set(arguments.key, value), "preference", arguments.key);
    PrintWritten(options, {
                              {arguments.key, value}
    });
    return Exit::kDone;
}

Exit PrefUnset(const Options& options, const ValueArguments& arguments)
{
    const auto store = RequiredPreferences(options, arguments.app);
    for (const std::string& key : arguments.keys) Required(*store, PreferencesOf(arguments.app), key);
    for (const std::string& key : arguments.keys) CheckWritten(store->Unset(key), "preference", key);
    PrintUnset(options, arguments.keys);
    return Exit::kDone;
}

Exit PrefList(const Options& options, const ValueArguments& arguments)
{
    const auto store = Preferences(options, arguments.app, false);
    if (!store) WarnOfUnknown(arguments.app);
    PrintList(options, store ? store->List() : std::vector<std::pair<std::string, StoredValue>>());
    return Exit::kDone;
}

// --- system settings ---

const SystemSetting& FindSetting(const std::string& name)
{
    if (const SystemSetting* setting = Platform::FindSystemSetting(name)) return *setting;
    std::vector<std::string_view> names;
    for (const SystemSetting& setting : Platform::kSystemSettings) names.push_back(setting.name);
    throw Stop(Exit::kUsage,
               "there is no setting [" + name + "]; " + DidYouMean(name, names) + "known: " + Listed(names));
}

Exit SettingGet(const Options& options, const ValueArguments& arguments)
{
    const SystemSetting& setting = FindSetting(arguments.key);
    KeyStore store(options);
    Print(options, SettingValue(store.values, setting));
    return Exit::kDone;
}

// What applications could not make sense of is a slip of typing. Who means it writes the key.
void CheckSetting(const SystemSetting& setting, const std::string& text)
{
    if (setting.isBool && text != "true" && text != "false") {
        throw Stop(Exit::kUsage, "the setting [" + std::string(setting.name) + "] is true or false, not [" +
                                     text + "]" + OrMeant(text, {"true", "false"}));
    }
    if (setting.isBool) return;
    const bool isZone = setting.id == SYSTEM_SETTINGS_KEY_LOCALE_TIMEZONE;
    const bool isCountry = setting.id == SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY;
    const std::string problem = isZone      ? TimezoneProblem(text)
                                : isCountry ? CountryProblem(text)
                                            : LanguageProblem(text);
    if (problem.empty()) return;
    throw Stop(Exit::kUsage, problem + " To write it all the same: wfctl key set " +
                                 std::string(setting.key) + " " + ShellQuoted(text));
}

// NAME=VALUE…, or one NAME and its VALUE.
std::vector<std::pair<std::string, std::string>> ParseSettings(const std::vector<std::string>& words)
{
    std::vector<std::pair<std::string, std::string>> settings;
    if (words.size() == 2 && words[0].find('=') == std::string::npos)
        return {
            {words[0], words[1]}
        };
    for (const std::string& word : words) {
        const auto equals = word.find('=');
        if (equals == std::string::npos)
            throw Stop(Exit::kUsage, "[" + word + "] is no NAME=VALUE; type: wfctl setting set --help");
        settings.emplace_back(word.substr(0, equals), word.substr(equals + 1));
    }
    return settings;
}

Exit SettingSet(const Options& options, const ValueArguments& arguments)
{
    // All are looked at before the first is written.
    std::vector<std::pair<std::string, StoredValue>> values;
    for (const auto& [name, text] : ParseSettings(arguments.keys)) {
        const SystemSetting& setting = FindSetting(name);
        CheckSetting(setting, text);
        values.emplace_back(name, ParseValue(text, setting.isBool ? "bool" : "string", std::nullopt));
    }
    KeyStore store(options);
    for (const auto& [name, value] : values) store.Set(std::string(FindSetting(name).key), value);
    PrintWritten(options, values);
    return Exit::kDone;
}

Exit SettingList(const Options& options)
{
    KeyStore store(options);
    std::vector<std::pair<std::string, StoredValue>> values;
    for (const SystemSetting& setting : Platform::kSystemSettings) {
        values.emplace_back(setting.name, SettingValue(store.values, setting));
    }
    PrintList(options, values);
    return Exit::kDone;
}

Exit SettingWatch(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    std::vector<Watched> watched;
    for (const SystemSetting& setting : Platform::kSystemSettings) {
        watched.push_back({std::string(setting.name), std::string(setting.key), [&store, &setting] {
                               return std::optional(SettingValue(store.values, setting));
                           }});
    }
    return WatchAll(options, arguments, *store.connection, watched);
}

// --- arguments ---

using Arguments = std::shared_ptr<ValueArguments>;

template <typename Run>
Action Runs(const Arguments& arguments, Run run)
{
    return [arguments, run](const Options& options) { return run(options, *arguments); };
}

void AddApp(CLI::App& parser, const Arguments& arguments)
{
    parser.add_option("APP", arguments->app, "the application whose preference it is")->required();
}

void AddKey(CLI::App& parser, const Arguments& arguments, const char* what)
{
    parser.add_option(what, arguments->key, "which one")->required();
}

void AddKeys(CLI::App& parser, const Arguments& arguments)
{
    parser.add_option("KEY", arguments->keys, "which ones")->required();
}

void AddValue(CLI::App& parser, const Arguments& arguments)
{
    parser.add_option("VALUE", arguments->value, "the new value")->required();
    parser
        .add_option("--type", arguments->type,
                    "string, int or bool (default: as the value that is there, else as it looks)")
        ->type_name("TYPE")
        ->check(OneOf("the type", {"string", "int", "bool"}));
}

void AddEnd(CLI::App& parser, const Arguments& arguments)
{
    parser.add_option("--count", arguments->count, "end after N changes")->type_name("N");
    parser.add_option("--timeout", arguments->timeout, "end after S seconds, with status 3")
        ->type_name("S")
        ->check(SecondsProblem);
}

}  // namespace

Action DefineKeyGet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKey(parser, arguments, "KEY");
    return Runs(arguments, KeyGet);
}

Action DefineKeySet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKey(parser, arguments, "KEY");
    AddValue(parser, arguments);
    return Runs(arguments, KeySet);
}

Action DefineKeyUnset(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKeys(parser, arguments);
    return Runs(arguments, KeyUnset);
}

Action DefineKeyList(CLI::App&)
{
    return KeyList;
}

Action DefineKeyWatch(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKeys(parser, arguments);
    AddEnd(parser, arguments);
    return Runs(arguments, KeyWatch);
}

Action DefinePrefGet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddApp(parser, arguments);
    AddKey(parser, arguments, "KEY");
    return Runs(arguments, PrefGet);
}

Action DefinePrefSet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddApp(parser, arguments);
    AddKey(parser, arguments, "KEY");
    AddValue(parser, arguments);
    return Runs(arguments, PrefSet);
}

Action DefinePrefUnset(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddApp(parser, arguments);
    AddKeys(parser, arguments);
    return Runs(arguments, PrefUnset);
}

Action DefinePrefList(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddApp(parser, arguments);
    return Runs(arguments, PrefList);
}

Action DefineSettingGet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKey(parser, arguments, "NAME");
    return Runs(arguments, SettingGet);
}

Action DefineSettingSet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    parser
        .add_option("NAME=VALUE", arguments->keys,
                    "language, country (as en_GB), 24-hour (true, false), timezone (a path)")
        ->required();
    return Runs(arguments, SettingSet);
}

Action DefineSettingList(CLI::App&)
{
    return SettingList;
}

Action DefineSettingWatch(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddEnd(parser, arguments);
    return Runs(arguments, SettingWatch);
}

}  // namespace Wfctl
