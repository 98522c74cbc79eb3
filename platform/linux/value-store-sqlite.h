// Small typed values that survive a power cut: platform keys and preferences.
//
// A write is durable when Set() returns.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "database-sqlite.h"

namespace Platform {

using StoredValue = std::variant<std::string, int64_t, bool>;

class ValueStore {
public:
    // The file is opened, and made, at first use; its folder too.
    ValueStore(std::string path, unsigned mode);

    std::optional<StoredValue> Get(const std::string& key);
    // 0, or SQLite's code.
    int Set(const std::string& key, const StoredValue& value);
    // 0, SQLITE_NOTFOUND when there is no such key, or another code.
    int Unset(const std::string& key);
    std::vector<std::pair<std::string, StoredValue>> List();  // by key

    // The keys that end so, each with the bytes of its value where that is a text. 0, or SQLite's code.
    using Sizes = std::vector<std::pair<std::string, std::size_t>>;
    int ListSizes(std::string_view keyEnd, Sizes* sizes);

private:
    Database mDatabase;
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
