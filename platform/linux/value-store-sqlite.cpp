#include "value-store-sqlite.h"

#include <sqlite3.h>

#include <limits>

#include "areas.h"
#include "trace-event-json.h"

namespace Platform {

namespace {

// Kept in the file; do not renumber.
enum StoredType { kString = 0, kInteger = 1, kBool = 2 };

// Every write is durable when it is acknowledged.
constexpr char kSetUp[] =
    "PRAGMA synchronous=FULL;"
    "CREATE TABLE IF NOT EXISTS value"
    "(key BLOB PRIMARY KEY NOT NULL, type INTEGER NOT NULL, value NOT NULL) WITHOUT ROWID;";

// Of the keys that end in a text.
constexpr char kSizesByEnd[] =
    "SELECT key, CASE typeof(value) WHEN 'blob' THEN length(value) ELSE 0 END FROM value "
    "WHERE substr(key, -length(?1)) = ?1";

enum Statement { kGet, kSet, kUnset, kList, kListSizes };
constexpr const char* kStatements[] = {
    "SELECT type, value FROM value WHERE key = ?1",
    "INSERT OR REPLACE INTO value VALUES (?1, ?2, ?3)",
    "DELETE FROM value WHERE key = ?1",
    "SELECT key, type, value FROM value ORDER BY key",
    kSizesByEnd,
};

std::optional<StoredValue> ColumnValue(sqlite3_stmt* statement, int typeColumn, int valueColumn)
{
    switch (sqlite3_column_int(statement, typeColumn)) {
        case kString:
            return ColumnBytes(statement, valueColumn);
        case kInteger:
            return int64_t{sqlite3_column_int64(statement, valueColumn)};
        case kBool:
            return sqlite3_column_int(statement, valueColumn) != 0;
        default:
            return std::nullopt;
    }
}

void BindValue(sqlite3_stmt* statement, const StoredValue& value)
{
    sqlite3_bind_int(statement, 2, static_cast<int>(value.index()));
    if (const auto* text = std::get_if<std::string>(&value)) BindBytes(statement, 3, *text);
    if (const auto* number = std::get_if<int64_t>(&value)) sqlite3_bind_int64(statement, 3, *number);
    if (const auto* flag = std::get_if<bool>(&value)) sqlite3_bind_int(statement, 3, *flag);
}

}  // namespace

ValueStore::ValueStore(std::string path, unsigned mode)
    : mDatabase(std::move(path), mode, {kSetUp, kStatements})
{
}

std::optional<StoredValue> ValueStore::Get(const std::string& key)
{
    std::optional<StoredValue> value;
    mDatabase.Run(kGet, [&](sqlite3_stmt* statement) {
        BindBytes(statement, 1, key);
        const int code = sqlite3_step(statement);
        if (code == SQLITE_ROW) value = ColumnValue(statement, 0, 1);
        return code;
    });
    return value;
}

int ValueStore::Set(const std::string& key, const StoredValue& value)
{
    const TraceSpan span("key", "write", {"key", key});
    return mDatabase.Run(kSet, [&](sqlite3_stmt* statement) {
        BindBytes(statement, 1, key);
        BindValue(statement, value);
        return sqlite3_step(statement);
    });
}

int ValueStore::Unset(const std::string& key)
{
    int changes = 0;
    const int code = mDatabase.Run(kUnset, [&](sqlite3_stmt* statement) {
        BindBytes(statement, 1, key);
        const int step = sqlite3_step(statement);
        changes = mDatabase.Changes();
        return step;
    });
    if (code != SQLITE_OK) return code;
    return changes > 0 ? SQLITE_OK : SQLITE_NOTFOUND;
}

std::vector<std::pair<std::string, StoredValue>> ValueStore::List()
{
    std::vector<std::pair<std::string, StoredValue>> all;
    mDatabase.Run(kList, [&](sqlite3_stmt* statement) {
        all.clear();
        int code = 0;
        while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
            if (auto value = ColumnValue(statement, 1, 2))
                all.emplace_back(ColumnBytes(statement, 0), *value);
        }
        return code;
    });
    return all;
}

int ValueStore::ListSizes(std::string_view keyEnd, Sizes* sizes)
{
    return mDatabase.Run(kListSizes, [&](sqlite3_stmt* statement) {
        BindBytes(statement, 1, keyEnd);
        sizes->clear();
        int code = 0;
        while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
            sizes->emplace_back(ColumnBytes(statement, 0),
                                static_cast<std::size_t>(sqlite3_column_int64(statement, 1)));
        }
        return code;
    });
}

std::string KeysPath()
{
    return CurrentAreas().Common() + "keys.db";
}
std::string PreferencesPath(const std::string& appId)
{
    return CurrentAreas().PrivateOf(appId) + "prefs.db";
}

std::optional<int> GetAsInt(ValueStore& store, const std::string& key)
{
    const auto number = GetAs<int64_t>(store, key);
    using Limits = std::numeric_limits<int>;
    if (!number || *number < Limits::min() || *number > Limits::max()) return std::nullopt;
    return static_cast<int>(*number);
}

}  // namespace Platform
