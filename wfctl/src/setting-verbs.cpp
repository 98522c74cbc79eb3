// System settings: setting get, set, list, watch.

#include "arguments.h"
#include "exit-status.h"
#include "hint.h"
#include "locales-icu.h"
#include "private-watch.h"
#include "settings.h"
#include "shell-command.h"
#include "stored-values.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

using Platform::StoredValue;
using Platform::SystemSetting;

const SystemSetting& FindSetting(const std::string& name)
{
    if (const SystemSetting* setting = Platform::FindSystemSetting(name)) return *setting;
    std::vector<std::string_view> names;
    for (const SystemSetting& setting : Platform::kSystemSettings) names.push_back(setting.name);
    throw Stop(Exit::kUsage,
               "there is no setting [" + name + "]" + OrMeant(name, names, "known: " + Listed(names)));
}

Exit Get(const Options& options, const ValueArguments& arguments)
{
    const SystemSetting& setting = FindSetting(arguments.key);
    KeyStore store(options);
    PrintValue(options, SettingValue(store.Values(), setting));
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
    throw Stop(Exit::kUsage,
               problem + " To write it all the same: " +
                   WatchCommand("key set " + std::string(setting.key) + " " + ShellQuoted(text)));
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

Exit Set(const Options& options, const ValueArguments& arguments)
{
    SelectWatch(options.root);  // so that what is advised is for this watch
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

Exit List(const Options& options)
{
    KeyStore store(options);
    std::vector<std::pair<std::string, StoredValue>> values;
    for (const SystemSetting& setting : Platform::kSystemSettings) {
        values.emplace_back(setting.name, SettingValue(store.Values(), setting));
    }
    PrintValues(options, values);
    return Exit::kDone;
}

Exit Watch(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    std::vector<Watched> watched;
    for (const SystemSetting& setting : Platform::kSystemSettings) {
        watched.push_back({std::string(setting.name), std::string(setting.key), [&store, &setting] {
                               return std::optional(SettingValue(store.Values(), setting));
                           }});
    }
    return WatchAll(options, arguments, store.Bus(), watched);
}

}  // namespace

Action DefineSettingGet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKey(parser, arguments, "NAME");
    return Runs(arguments, Get);
}

Action DefineSettingSet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    parser
        .add_option("NAME=VALUE", arguments->keys,
                    "language, country (as en_GB), 24-hour (true, false), timezone (a path)")
        ->required();
    return Runs(arguments, Set);
}

Action DefineSettingList(CLI::App&)
{
    return List;
}

Action DefineSettingWatch(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddEnd(parser, arguments);
    return Runs(arguments, Watch);
}

}  // namespace Wfctl
