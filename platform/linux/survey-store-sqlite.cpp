#include "survey-store-sqlite.h"

#include <sqlite3.h>

#include <utility>

#include "areas.h"
#include "utf8.h"

namespace Platform {

namespace {

constexpr unsigned kMode = 0600;
constexpr int64_t kShareOfFullFile = 2;  // one half of the records makes room

constexpr char kTables[] =
    "PRAGMA synchronous=NORMAL; PRAGMA wal_autocheckpoint=64;"
    "CREATE TABLE IF NOT EXISTS record"
    "(id INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT NULL, feature_used INTEGER NOT NULL,"
    " application BLOB NOT NULL, feature BLOB NOT NULL, value BLOB NOT NULL, extra BLOB NOT NULL);"
    "PRAGMA max_page_count=";

// Records come in the order of their ids, so each removal looks at little more than what it removes.
enum Statement { kInsert, kDropOverCount, kDropBefore, kDropOldest, kList };
constexpr const char* kStatements[] = {
    "INSERT INTO record VALUES (NULL, ?1, ?2, ?3, ?4, ?5, ?6)",
    "DELETE FROM record WHERE id <= (SELECT max(id) FROM record) - ?1",
    "DELETE FROM record WHERE id < (SELECT id FROM record WHERE time >= ?1 ORDER BY id LIMIT 1)",
    "DELETE FROM record WHERE id <= (SELECT min(id) + (max(id) - min(id)) / ?1 FROM record)",
    "SELECT id, time, feature_used, application, feature, value, extra FROM record WHERE id > ?1 ORDER BY id",
};

SurveyRecord ColumnRecord(sqlite3_stmt* statement)
{
    SurveyRecord record;
    record.id = sqlite3_column_int64(statement, 0);
    record.time = sqlite3_column_int64(statement, 1);
    record.isFeature = sqlite3_column_int(statement, 2) != 0;
    int column = 3;
    for (std::string* text : {&record.application, &record.feature, &record.value, &record.extra}) {
        *text = ColumnBytes(statement, column++);
    }
    return record;
}

}  // namespace

SurveyStore::SurveyStore(std::string path, SurveyLimits limits)
    : mLimits(limits),
      mSetUp(kTables + std::to_string(limits.mostPages)),
      mDatabase(std::move(path), kMode, {mSetUp.c_str(), kStatements})
{
}

int SurveyStore::Insert(const SurveyRecord& record)
{
    return mDatabase.Run(kInsert, [&](sqlite3_stmt* statement) {
        sqlite3_bind_int64(statement, 1, record.time);
        sqlite3_bind_int(statement, 2, record.isFeature);
        int index = 3;
        for (const std::string* text : {&record.application, &record.feature, &record.value, &record.extra}) {
            BindBytes(statement, index++, Utf8Prefix(*text, mLimits.longestText));
        }
        return sqlite3_step(statement);
    });
}

int SurveyStore::Drop(std::size_t statement, int64_t limit)
{
    return mDatabase.Run(statement, [&](sqlite3_stmt* raw) {
        sqlite3_bind_int64(raw, 1, limit);
        return sqlite3_step(raw);
    });
}

int SurveyStore::Add(const SurveyRecord& record)
{
    int code = Insert(record);
    if ((code & 0xff) == SQLITE_FULL && Drop(kDropOldest, kShareOfFullFile) == SQLITE_OK)
        code = Insert(record);
    if (code == SQLITE_OK) code = Drop(kDropOverCount, mLimits.mostRecords);
    if (code == SQLITE_OK) code = Drop(kDropBefore, record.time - mLimits.longestAge);
    return code;
}

std::vector<SurveyRecord> SurveyStore::List(int64_t after)
{
    std::vector<SurveyRecord> all;
    mDatabase.Run(kList, [&](sqlite3_stmt* statement) {
        all.clear();
        sqlite3_bind_int64(statement, 1, after);
        int code = 0;
        while ((code = sqlite3_step(statement)) == SQLITE_ROW) all.push_back(ColumnRecord(statement));
        return code;
    });
    return all;
}

std::string SurveyPath(const std::string& appId)
{
    return CurrentAreas().PrivateOf(appId) + "survey.db";
}

}  // namespace Platform
