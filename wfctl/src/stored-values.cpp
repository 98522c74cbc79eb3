#include "stored-values.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>

#include "arguments.h"
#include "exit-status.h"
#include "hint.h"
#include "json-text.h"
#include "platform-keys-sdbus.h"
#include "private-watch.h"
#include "shell-command.h"
#include "utf8.h"

namespace Wfctl {

namespace {

using Platform::StoredValue;
using Platform::ValueStore;

constexpr unsigned kKeysMode = 0660;

std::vector<std::string> StoredNames(ValueStore& store)
{
    std::vector<std::string> names;
    for (const auto& [name, value] : store.List()) names.push_back(name);
    return names;
}

}  // namespace

KeyStore::KeyStore(const Options& options)
    : mConnection((SelectWatch(options.root), std::make_unique<Connection>())),
      mValues(Platform::KeysPath(), kKeysMode)
{
}

void KeyStore::Set(const std::string& key, const StoredValue& value)
{
    if (!Platform::IsUtf8(key))
        throw Stop(Exit::kUsage, "the name [" + key + "] is no UTF-8, so nobody would hear of the key");
    CheckWritten(Platform::SetKey(mValues, mConnection->Get(), key, value), "key", key);
    BeHeard();
}

void KeyStore::Unset(const std::vector<std::string>& keys)
{
    for (const std::string& key : keys) {
        CheckRemoved(mValues.Unset(key), "key", key);
        if (Platform::IsUtf8(key)) Platform::AnnounceKey(mConnection->Get(), key);
    }
    BeHeard();
}

// The bus drops what it has not read of a program that is gone when it has something to write to it.
void KeyStore::BeHeard()
{
    mConnection->RoundTrip();
}

StoredValue Required(ValueStore& store, const ValueKind& kind, const std::string& key)
{
    if (auto value = store.Get(key)) return *std::move(value);
    const Names known = NamesOf(kind.known);
    const std::vector<std::string> stored = StoredNames(store);
    const bool isNearKnown = std::ranges::find(known, key) != known.end() || !MeantName(key, known).empty();
    throw Stop(Exit::kNotFound,
               "there is no " + kind.what + " [" + key + "]" +
                   OrMeant(key, isNearKnown ? known : NamesOf(stored), "type: " + WatchCommand(kind.list)));
}

std::vector<std::string> Once(const std::vector<std::string>& names)
{
    std::vector<std::string> once;
    for (const std::string& name : names) {
        if (std::ranges::find(once, name) == once.end()) once.push_back(name);
    }
    return once;
}

void WarnOfNewName(ValueStore& store, const ValueKind& kind, const std::string& key)
{
    if (!store.Get(key)) WarnOfSlip("there is no " + kind.what, key, NamesOf(kind.known));
}

void CheckWritten(int code, const std::string& what, const std::string& key)
{
    if (code == SQLITE_OK) return;
    throw Stop(Exit::kError, "the " + what + " [" + key + "] could not be written: " + sqlite3_errstr(code));
}

void CheckRemoved(int code, const std::string& what, const std::string& key)
{
    CheckWritten(code == SQLITE_NOTFOUND ? SQLITE_OK : code, what, key);
}

void PrintValue(const Options& options, const StoredValue& value)
{
    PrintLine(options.json ? JsonLine(ValueToJson(value)) : ValueText(value));
}

void PrintValues(const Options& options, const StoredValues& values)
{
    Json object = Json::object();
    for (const auto& [key, value] : values) {
        if (options.json)
            object[JsonName(key)] = ValueToJson(value);
        else
            PrintLine(key + "=" + ValueText(value));
    }
    if (options.json) PrintLine(JsonLine(object));
}

void PrintWritten(const Options& options, const StoredValues& values)
{
    if (options.json) PrintValues(options, values);
}

void PrintUnset(const Options& options, const std::vector<std::string>& keys)
{
    Json unset = Json::object();
    for (const std::string& key : keys) unset[JsonName(key)] = nullptr;
    if (options.json) PrintLine(JsonLine(unset));
}

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
    std::fprintf(stderr, "watching %s\n", Counted(watched.size(), "key").c_str());
    const bool done =
        connection.RunUntil(isDone, arguments.timeout < 0 ? kForEver : Seconds(arguments.timeout));
    if (done) return Exit::kDone;
    throw Stop(Exit::kNoAnswer, "the time ran out; " + Counted(seen, "change") + " came");
}

void AddKey(CLI::App& parser, const SharedArguments& arguments, const char* what)
{
    parser.add_option(what, arguments->key, "which one")->required();
}

void AddKeys(CLI::App& parser, const SharedArguments& arguments)
{
    parser.add_option("KEY", arguments->keys, "which ones")->required();
}

void AddValue(CLI::App& parser, const SharedArguments& arguments)
{
    parser.add_option("VALUE", arguments->value, "the new value")->required();
    parser
        .add_option("--type", arguments->type,
                    "string, int or bool (default: as the value that is there, else as it looks)")
        ->type_name("TYPE")
        ->check(OneOf("the type", {"string", "int", "bool"}));
}

void AddEnd(CLI::App& parser, const SharedArguments& arguments)
{
    parser.add_option("--count", arguments->count, "end after N changes")->type_name("N");
    parser.add_option("--timeout", arguments->timeout, "end after S seconds, with status 3")
        ->type_name("S")
        ->check(SecondsProblem);
}

}  // namespace Wfctl
