// Preferences of applications: pref get, set, unset, list.

#include <filesystem>

#include "application-table.h"
#include "areas.h"
#include "arguments.h"
#include "exit-status.h"
#include "folder-entries.h"
#include "hint.h"
#include "private-watch.h"
#include "service-words.h"
#include "shell-command.h"
#include "stored-values.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

using Platform::ValueStore;

constexpr unsigned kPreferencesMode = 0600;

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

// The applications of the selected watch, and all that have a folder.
std::vector<std::string> KnownApplications()
{
    const Names ids = ApplicationIds();
    std::vector<std::string> known(ids.begin(), ids.end());
    for (const std::filesystem::path& folder : EntriesOf(Platform::CurrentAreas().root + "/apps"))
        known.push_back(folder.filename());
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
    const std::string meant(MeantName(app, NamesOf(known)));
    const std::string next = meant.empty() ? "pref set --help" : "pref list " + meant;
    throw Stop(Exit::kNotFound, "[" + app + "] has no preferences" +
                                    OrMeant(app, NamesOf(known), "type: " + WatchCommand(next)));
}

ValueKind PreferencesOf(const std::string& app, const std::string& key)
{
    ValueKind kind{"preference", "pref list " + app, {}};
    if (app == Platform::kServiceId) kind.known = PreferenceNames(key);
    return kind;
}

Exit Get(const Options& options, const ValueArguments& arguments)
{
    const auto store = RequiredPreferences(options, arguments.app);
    PrintValue(options, Required(*store, PreferencesOf(arguments.app, arguments.key), arguments.key));
    return Exit::kDone;
}

Exit Set(const Options& options, const ValueArguments& arguments)
{
    const auto store = Preferences(options, arguments.app, true);
    WarnOfUnknown(arguments.app);
    const Platform::StoredValue value =
        ParseValue(arguments.value, arguments.type, store->Get(arguments.key));
    WarnOfNewName(*store, PreferencesOf(arguments.app, arguments.key), arguments.key);
    CheckWritten(store->Set(arguments.key, value), "preference", arguments.key);
    PrintWritten(options, {
                              {arguments.key, value}
    });
    return Exit::kDone;
}

Exit Unset(const Options& options, const ValueArguments& arguments)
{
    const auto store = RequiredPreferences(options, arguments.app);
    const std::vector<std::string> keys = Once(arguments.keys);
    for (const std::string& key : keys) Required(*store, PreferencesOf(arguments.app, key), key);
    for (const std::string& key : keys) CheckRemoved(store->Unset(key), "preference", key);
    PrintUnset(options, keys);
    return Exit::kDone;
}

Exit List(const Options& options, const ValueArguments& arguments)
{
    const auto store = Preferences(options, arguments.app, false);
    if (!store) WarnOfUnknown(arguments.app);
    PrintValues(options, store ? store->List() : StoredValues());
    return Exit::kDone;
}

SharedArguments WithApp(CLI::App& parser)
{
    auto arguments = std::make_shared<ValueArguments>();
    parser.add_option("APP", arguments->app, "the application whose preference it is")->required();
    return arguments;
}

}  // namespace

Action DefinePrefGet(CLI::App& parser)
{
    const auto arguments = WithApp(parser);
    AddKey(parser, arguments, "KEY");
    return Runs(arguments, Get);
}

Action DefinePrefSet(CLI::App& parser)
{
    const auto arguments = WithApp(parser);
    AddKey(parser, arguments, "KEY");
    AddValue(parser, arguments);
    return Runs(arguments, Set);
}

Action DefinePrefUnset(CLI::App& parser)
{
    const auto arguments = WithApp(parser);
    AddKeys(parser, arguments);
    return Runs(arguments, Unset);
}

Action DefinePrefList(CLI::App& parser)
{
    return Runs(WithApp(parser), List);
}

}  // namespace Wfctl
