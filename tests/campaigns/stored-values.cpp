#include "stored-values.h"

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

namespace Campaign {

namespace {

struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using DatabasePtr = std::unique_ptr<sqlite3, Closer>;
using StatementPtr = std::unique_ptr<sqlite3_stmt, Closer>;
using Row = std::vector<std::string>;

DatabasePtr Open(const std::string& path)
{
    sqlite3* raw = nullptr;
    sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    DatabasePtr database(raw);
    sqlite3_busy_timeout(raw, 2000);
    return database;
}

void Require(bool isDone, const std::string& path, int code)
{
    if (!isDone) throw std::runtime_error(path + ": " + sqlite3_errstr(code));
}

std::string Column(sqlite3_stmt* row, int column)
{
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
    const void* bytes = sqlite3_column_blob(row, column);
    return bytes ? std::string(static_cast<const char*>(bytes), size) : std::string();
}

std::vector<Row> Query(const std::string& path, const char* sql)
{
    if (!std::filesystem::exists(path)) return {};
    const DatabasePtr database = Open(path);
    std::vector<Row> rows;
    sqlite3_stmt* raw = nullptr;
    int code = sqlite3_prepare_v2(database.get(), sql, -1, &raw, nullptr);
    const StatementPtr statement(raw);
    while (code == SQLITE_OK || code == SQLITE_ROW) {
        code = sqlite3_step(raw);
        if (code != SQLITE_ROW) break;
        Row& row = rows.emplace_back();
        for (int i = 0; i < sqlite3_column_count(raw); ++i) row.push_back(Column(raw, i));
    }
    // An error of SQL: it was made, and no table in it.
    Require(code == SQLITE_DONE || code == SQLITE_ERROR, path, code);
    return rows;
}

}  // namespace

std::map<std::string, std::string> StoredValues(const std::string& database)
{
    std::map<std::string, std::string> values;
    for (const Row& row : Query(database, "SELECT key, value FROM value")) values[row[0]] = row[1];
    return values;
}

std::string FaultInDatabase(const std::string& database)
{
    for (const Row& row : Query(database, "PRAGMA integrity_check")) {
        if (row[0] != "ok") return row[0];
    }
    return {};
}

void ChangeValue(const std::string& database, const std::string& key, const std::string& value)
{
    const DatabasePtr opened = Open(database);
    sqlite3_stmt* raw = nullptr;
    sqlite3_prepare_v2(opened.get(), "UPDATE value SET value = ?2 WHERE key = ?1", -1, &raw, nullptr);
    const StatementPtr statement(raw);
    sqlite3_bind_blob(raw, 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
    sqlite3_bind_blob(raw, 2, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    const int code = sqlite3_step(raw);
    Require(code == SQLITE_DONE, database, code);
}

void Execute(const std::string& database, const std::string& sql)
{
    const int code = sqlite3_exec(Open(database).get(), sql.c_str(), nullptr, nullptr, nullptr);
    Require(code == SQLITE_OK, database, code);
}

}  // namespace Campaign
