#include "value-store-sqlite.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <limits>
#include <thread>

#include "areas.h"
#include "folder-rights-posix.h"
#include "platform-log.h"

namespace Platform {

namespace {

constexpr int kBusyMilliseconds = 2000;
constexpr auto kLockPause = std::chrono::milliseconds(2);

// Kept in the file; do not renumber.
enum StoredType { kString = 0, kInteger = 1, kBool = 2 };

constexpr char kSetUp[] =
    "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;"
    "CREATE TABLE IF NOT EXISTS value"
    "(key BLOB PRIMARY KEY NOT NULL, type INTEGER NOT NULL, value NOT NULL) WITHOUT ROWID;";

bool IsDamage(int code)
{
    return (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB;
}

std::string FolderOf(const std::string& path)
{
    return std::filesystem::path(path).parent_path();
}

uint64_t InodeOf(const std::string& path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}

// The mode of a new file is ours, not SQLite's. A file that is there must not be opened: closing it again
// would drop the locks that this process holds on it, and another process would take the write-ahead log
// away.
bool MakeFile(const std::string& path, mode_t mode)
{
    const UniqueFd made(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (made) TakeRightsOf(FolderOf(path), made.Get(), mode);
    return made || errno == EEXIST;
}

void BindBytes(sqlite3_stmt* statement, int index, const std::string& bytes)
{
    sqlite3_bind_blob64(statement, index, bytes.data(), bytes.size(), SQLITE_STATIC);
}

std::string ColumnBytes(sqlite3_stmt* statement, int column)
{
    const void* data = sqlite3_column_blob(statement, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return data ? std::string(static_cast<const char*>(data), size) : std::string();
}

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

void ValueStore::Closer::operator()(sqlite3* database) const
{
    sqlite3_close_v2(database);
}
void ValueStore::Finalizer::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

ValueStore::ValueStore(std::string path, unsigned mode) : mPath(std::move(path)), mMode(mode) {}
ValueStore::~ValueStore() = default;

int ValueStore::Prepare(const char* sql, Statement* statement)
{
    sqlite3_stmt* raw = nullptr;
    const int code = sqlite3_prepare_v3(mDatabase.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
    statement->reset(raw);
    return code;
}

// Held while the file is opened or set aside. Without it, several programs that start together stand in each
// other's way while the first makes the tables, and one that comes late sets the new file aside for the old.
std::optional<UniqueFd> ValueStore::LockOpening() const
{
    UniqueFd lock(open((mPath + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, mMode));
    if (!lock) return lock;  // what cannot be locked cannot be written either, or is not shared
    TakeRightsOf(FolderOf(mPath), lock.Get(), mMode);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kBusyMilliseconds);
    while (flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
        const bool held = errno == EWOULDBLOCK || errno == EINTR;
        if (!held || std::chrono::steady_clock::now() > deadline) return std::nullopt;
        std::this_thread::sleep_for(kLockPause);
    }
    return lock;
}

int ValueStore::OpenOnce()
{
    if (!MakeFile(mPath, mMode)) return SQLITE_CANTOPEN;
    sqlite3* raw = nullptr;
    int code = sqlite3_open_v2(mPath.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    mDatabase.reset(raw);
    if (code == SQLITE_OK) code = sqlite3_busy_timeout(raw, kBusyMilliseconds);
    if (code == SQLITE_OK) code = sqlite3_exec(raw, kSetUp, nullptr, nullptr, nullptr);
    if (code == SQLITE_OK) code = Prepare("SELECT type, value FROM value WHERE key = ?1", &mGet);
    if (code == SQLITE_OK) code = Prepare("INSERT OR REPLACE INTO value VALUES (?1, ?2, ?3)", &mSet);
    if (code == SQLITE_OK) code = Prepare("DELETE FROM value WHERE key = ?1", &mUnset);
    if (code == SQLITE_OK) code = Prepare("SELECT key, type, value FROM value ORDER BY key", &mList);
    mInode = InodeOf(mPath);
    if (code != SQLITE_OK) Close();
    return code;
}

bool ValueStore::Open()
{
    if (mDatabase && InodeOf(mPath) == mInode) return true;
    Close();  // another process may have set the file aside, or somebody removed it
    std::error_code error;
    std::filesystem::create_directories(FolderOf(mPath), error);
    const auto lock = LockOpening();
    int code = lock ? OpenOnce() : SQLITE_BUSY;
    if (IsDamage(code)) {
        SetAside(code);
        code = OpenOnce();
    }
    if (code != SQLITE_OK) PLATFORM_FAULT("could not open [%s]: %s", mPath.c_str(), sqlite3_errstr(code));
    return code == SQLITE_OK;
}

void ValueStore::Close()
{
    for (Statement* statement : {&mGet, &mSet, &mUnset, &mList}) statement->reset();
    mDatabase.reset();
}

// A statement found the open file damaged.
void ValueStore::FoundDamaged(int code)
{
    const auto lock = LockOpening();
    Close();
    // Whoever waited for the lock finds a new file and leaves it alone.
    if (lock && InodeOf(mPath) == mInode) SetAside(code);
}

// Only while LockOpening() is held.
void ValueStore::SetAside(int code)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto stamp = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    const std::string aside = mPath + ".damaged-" + std::to_string(stamp);
    for (const char* suffix : {"", "-wal", "-shm"})
        rename((mPath + suffix).c_str(), (aside + suffix).c_str());
    PLATFORM_FAULT("[%s] was damaged (%s); it is kept as [%s] and begun anew", mPath.c_str(),
                   sqlite3_errstr(code), aside.c_str());
}

// Runs one statement; a database that turns out damaged is set aside and asked once more.
int ValueStore::Run(Statement ValueStore::*statement, const std::function<int(sqlite3_stmt*)>& bindAndStep)
{
    int code = SQLITE_CANTOPEN;
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!Open()) return SQLITE_CANTOPEN;
        sqlite3_stmt* raw = (this->*statement).get();
        code = bindAndStep(raw);
        sqlite3_reset(raw);
        sqlite3_clear_bindings(raw);
        if (!IsDamage(code)) break;
        FoundDamaged(code);
    }
    const bool done = code == SQLITE_DONE || code == SQLITE_ROW;
    if (!done) PLATFORM_FAULT("[%s]: %s", mPath.c_str(), sqlite3_errstr(code));
    return done ? SQLITE_OK : code;
}

std::optional<StoredValue> ValueStore::Get(const std::string& key)
{
    std::optional<StoredValue> value;
    Run(&ValueStore::mGet, [&](sqlite3_stmt* statement) {
        BindBytes(statement, 1, key);
        const int code = sqlite3_step(statement);
        if (code == SQLITE_ROW) value = ColumnValue(statement, 0, 1);
        return code;
    });
    return value;
}

int ValueStore::Set(const std::string& key, const StoredValue& value)
{
    return Run(&ValueStore::mSet, [&](sqlite3_stmt* statement) {
        BindBytes(statement, 1, key);
        BindValue(statement, value);
        return sqlite3_step(statement);
    });
}

int ValueStore::Unset(const std::string& key)
{
    int changes = 0;
    const int code = Run(&ValueStore::mUnset, [&](sqlite3_stmt* statement) {
        BindBytes(statement, 1, key);
        const int step = sqlite3_step(statement);
        changes = sqlite3_changes(mDatabase.get());
        return step;
    });
    if (code != SQLITE_OK) return code;
    return changes > 0 ? SQLITE_OK : SQLITE_NOTFOUND;
}

std::vector<std::pair<std::string, StoredValue>> ValueStore::List()
{
    std::vector<std::pair<std::string, StoredValue>> all;
    Run(&ValueStore::mList, [&](sqlite3_stmt* statement) {
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
