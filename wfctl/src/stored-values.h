// What the verbs of keys, preferences and settings share: naming stored values, printing and watching them.

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "connection.h"
#include "value-store-sqlite.h"
#include "verb-table.h"

namespace Wfctl {

using StoredValues = std::vector<std::pair<std::string, Platform::StoredValue>>;

struct ValueArguments {
    std::string app, key, value, type;
    std::vector<std::string> keys;
    unsigned count = 0;
    double timeout = -1;
};

// The platform keys of the selected watch, and the bus on which their changes are announced.
class KeyStore {
public:
    explicit KeyStore(const Options& options);

    Platform::ValueStore& Values() { return mValues; }
    Connection& Bus() { return *mConnection; }

    // Both return when the bus has the announcement; they stop with Exit::kError when the disk refuses.
    void Set(const std::string& key, const Platform::StoredValue& value);
    void Unset(const std::vector<std::string>& keys);

private:
    void BeHeard();

    std::unique_ptr<Connection> mConnection;
    Platform::ValueStore mValues;
};

// What kind of values a verb is about.
struct ValueKind {
    std::string what;                // "key", as errors call it
    std::string list;                // the verb that lists them
    std::vector<std::string> known;  // names with a meaning, stored or not
};

// The value of that name, or Stop with Exit::kNotFound and the name that may be meant. A known one goes
// before one that is only stored, which may be a slip itself.
Platform::StoredValue Required(Platform::ValueStore& store, const ValueKind& kind, const std::string& key);

// The names without those that come again.
std::vector<std::string> Once(const std::vector<std::string>& names);

// A line on stderr where a name that is not stored may be a slip of a known one.
void WarnOfNewName(Platform::ValueStore& store, const ValueKind& kind, const std::string& key);

// Stops with Exit::kError unless SQLite's code is good. What is gone already is removed.
void CheckWritten(int code, const std::string& what, const std::string& key);
void CheckRemoved(int code, const std::string& what, const std::string& key);

void PrintValue(const Options& options, const Platform::StoredValue& value);
void PrintValues(const Options& options, const StoredValues& values);
// What was written or removed is news to programs alone.
void PrintWritten(const Options& options, const StoredValues& values);
void PrintUnset(const Options& options, const std::vector<std::string>& keys);

// Prints what `read` gives for a name whenever its key is written, until the count or the time is over.
struct Watched {
    std::string name, key;
    std::function<std::optional<Platform::StoredValue>()> read;
};
Exit WatchAll(const Options& options, const ValueArguments& arguments, Connection& connection,
              const std::vector<Watched>& watched);

// The arguments of the verbs.
using SharedArguments = std::shared_ptr<ValueArguments>;

template <typename Run>
Action Runs(const SharedArguments& arguments, Run run)
{
    return [arguments, run](const Options& options) { return run(options, *arguments); };
}

void AddKey(CLI::App& parser, const SharedArguments& arguments, const char* what);
void AddKeys(CLI::App& parser, const SharedArguments& arguments);
void AddValue(CLI::App& parser, const SharedArguments& arguments);
void AddEnd(CLI::App& parser, const SharedArguments& arguments);

}  // namespace Wfctl
