// The databases that a watch keeps its values in, read and changed past the service.

#pragma once

#include <map>
#include <string>

namespace Campaign {

struct Store {
    const char* label;  // of its values among others, before the key
    const char* path;   // below the root
};
inline constexpr Store kKeys{"KEYS:", "common/keys.db"};
inline constexpr Store kPreferences{"PREFERENCES:", "apps/com.corvane.watchface-service/prefs.db"};
inline constexpr Store kStores[] = {kKeys, kPreferences};

// By key; nothing when there is no such database, or no table in it yet. Throws std::runtime_error when
// SQLite cannot read it.
std::map<std::string, std::string> StoredValues(const std::string& database);

// What SQLite finds wrong with a database; empty when that is nothing, or there is none. Throws likewise.
std::string FaultInDatabase(const std::string& database);

// Gives a key that is there another value. Throws std::runtime_error when it cannot be written.
void ChangeValue(const std::string& database, const std::string& key, const std::string& value);

// Statements without results. Throws likewise.
void Execute(const std::string& database, const std::string& sql);

}  // namespace Campaign
