// Small typed values that survive a power cut: platform keys and preferences.
//
// One database file, in WAL mode with full sync; a write is durable when Set() returns. Statements are
// prepared once. A database that is damaged is set aside under an exclusive lock and begun anew, with one
// line in the log.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "unique-fd.h"

struct sqlite3;
struct sqlite3_stmt;

namespace Platform {

using StoredValue = std::variant<std::string, int64_t, bool>;

class ValueStore {
public:
    // The file is opened, and made, at first use; its folder too.
    ValueStore(std::string path, unsigned mode);
    ~ValueStore();
    ValueStore(const ValueStore&) = delete;
    ValueStore& operator=(const ValueStore&) = delete;

    std::optional<StoredValue> Get(const std::string& key);
    // 0, or SQLite's code.
    int Set(const std::string& key, const StoredValue& value);
    // 0, SQLITE_NOTFOUND when there is no such key, or another code.
    int Unset(const std::string& key);
    std::vector<std::pair<std::string, StoredValue>> List();  // by key

private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

    bool Open();
    int OpenOnce();
    std::optional<UniqueFd> LockOpening() const;
    void Close();
    void FoundDamaged(int code);
    void SetAside(int code);
    int Prepare(const char* sql, Statement* statement);
    int Run(Statement ValueStore::*statement, const std::function<int(sqlite3_stmt*)>& bindAndStep);

    const std::string mPath;
    const unsigned mMode;
    uint64_t mInode = 0;
    std::unique_ptr<sqlite3, Closer> mDatabase;  // before the statements, which go first
    Statement mGet, mSet, mUnset, mList;
};

// The store of the platform keys, and of an application's preferences, below the watch's root.
std::string KeysPath();
std::string PreferencesPath(const std::string& appId);

// What reads one typed value: nothing when the key is missing or holds another type.
template <typename Value>
std::optional<Value> GetAs(ValueStore& store, const std::string& key)
{
    const auto value = store.Get(key);
    const auto* held = value ? std::get_if<Value>(&*value) : nullptr;
    return held ? std::optional<Value>(*held) : std::nullopt;
}

// An integer that fits an int.
std::optional<int> GetAsInt(ValueStore& store, const std::string& key);

}  // namespace Platform
