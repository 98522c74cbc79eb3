#include "database-sqlite.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cassert>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

#include "folder-rights-posix.h"
#include "platform-log.h"

namespace Platform {

namespace {

constexpr int kBusyMilliseconds = 2000;
constexpr int kMostAttempts = 3;  // as it is, opened anew, begun anew
constexpr auto kLockPause = std::chrono::milliseconds(2);

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

// SQLite calls a file damaged also when the disk did not give it, which it may do the next time.
bool CanBeRead(const std::string& path)
{
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) return errno == ENOENT;
    char buffer[1 << 16];
    for (off_t at = 0;;) {
        const ssize_t size = pread(file.Get(), buffer, sizeof buffer, at);
        if (size == 0) return true;
        if (size < 0 && errno != EINTR) return false;
        if (size > 0) at += size;
    }
}

}  // namespace

void BindBytes(sqlite3_stmt* statement, int index, std::string_view bytes)
{
    sqlite3_bind_blob64(statement, index, bytes.data(), bytes.size(), SQLITE_STATIC);
}

std::string ColumnBytes(sqlite3_stmt* statement, int column)
{
    const void* data = sqlite3_column_blob(statement, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return data ? std::string(static_cast<const char*>(data), size) : std::string();
}

void Database::Closer::operator()(sqlite3* database) const
{
    sqlite3_close_v2(database);
}
void Database::Finalizer::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

Database::Database(std::string path, unsigned mode, Layout layout)
    : mPath(std::move(path)), mMode(mode), mLayout(layout)
{
}
Database::~Database() = default;

int Database::Changes() const
{
    return sqlite3_changes(mDatabase.get());
}

int Database::Prepare()
{
    for (const char* sql : mLayout.statements) {
        sqlite3_stmt* raw = nullptr;
        const int code =
            sqlite3_prepare_v3(mDatabase.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
        mStatements.emplace_back(raw);
        if (code != SQLITE_OK) return code;
    }
    return SQLITE_OK;
}

// Held while the file is opened or set aside. Without it, several programs that start together stand in each
// other's way while the first makes the tables, and one that comes late sets the new file aside for the old.
std::optional<UniqueFd> Database::LockOpening() const
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

int Database::OpenOnce()
{
    if (!MakeFile(mPath, mMode)) return SQLITE_CANTOPEN;
    sqlite3* raw = nullptr;
    int code = sqlite3_open_v2(mPath.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    mDatabase.reset(raw);
    if (code == SQLITE_OK) code = sqlite3_busy_timeout(raw, kBusyMilliseconds);
    if (code == SQLITE_OK) code = sqlite3_exec(raw, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    if (code == SQLITE_OK) code = sqlite3_exec(raw, mLayout.setUp, nullptr, nullptr, nullptr);
    if (code == SQLITE_OK) code = Prepare();
    mInode = InodeOf(mPath);
    if (code != SQLITE_OK) Close();
    return code;
}

bool Database::Open()
{
    if (mDatabase && InodeOf(mPath) == mInode) return true;
    Close();  // another process may have set the file aside, or somebody removed it
    std::error_code error;
    std::filesystem::create_directories(FolderOf(mPath), error);
    const auto lock = LockOpening();
    int code = lock ? OpenOnce() : SQLITE_BUSY;
    if (IsDamage(code)) code = OpenOnce();
    if (IsDamage(code) && SetAside(code)) code = OpenOnce();
    if (code != SQLITE_OK) PLATFORM_FAULT("could not open [%s]: %s", mPath.c_str(), sqlite3_errstr(code));
    return code == SQLITE_OK;
}

void Database::Close()
{
    mStatements.clear();
    mDatabase.reset();
}

// A statement found the open file damaged, again after it was opened anew.
void Database::FoundDamaged(int code)
{
    const auto lock = LockOpening();
    Close();
    // Whoever waited for the lock finds a new file and leaves it alone.
    if (lock && InodeOf(mPath) == mInode) SetAside(code);
}

// Only while LockOpening() is held and the file is closed: whoever closes a file gives up the locks that its
// process holds on it. Whether the file is out of the way; one that cannot be read stays.
bool Database::SetAside(int code)
{
    if (!CanBeRead(mPath) || !CanBeRead(mPath + "-wal")) return false;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto stamp = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    const std::string aside = mPath + ".damaged-" + std::to_string(stamp);
    for (const char* suffix : {"", "-wal", "-shm"})
        rename((mPath + suffix).c_str(), (aside + suffix).c_str());
    PLATFORM_FAULT("[%s] was damaged (%s); it is kept as [%s] and begun anew", mPath.c_str(),
                   sqlite3_errstr(code), aside.c_str());
    return true;
}

int Database::Run(std::size_t statement, const Use& use)
{
    assert(statement < mLayout.statements.size());
    int code = SQLITE_CANTOPEN;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        if (!Open()) return SQLITE_CANTOPEN;
        sqlite3_stmt* raw = mStatements[statement].get();
        code = use(raw);
        sqlite3_reset(raw);
        sqlite3_clear_bindings(raw);
        if (!IsDamage(code)) break;
        attempt == 0 ? Close() : FoundDamaged(code);
    }
    const bool done = code == SQLITE_DONE || code == SQLITE_ROW;
    if (!done) PLATFORM_FAULT("[%s]: %s", mPath.c_str(), sqlite3_errstr(code));
    return done ? SQLITE_OK : code;
}

}  // namespace Platform
