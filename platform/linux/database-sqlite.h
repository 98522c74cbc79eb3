// One SQLite file that several programs of the watch share, in WAL mode.
//
// It is opened, and made, at first use, its folder too; the file's rights are those of its folder. Statements
// are prepared once. A file that is damaged, although the disk gives all of it, is set aside under an
// exclusive lock and begun anew, with one line in the log; another failure is one line too.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "unique-fd.h"

struct sqlite3;
struct sqlite3_stmt;

namespace Platform {

class Database {
public:
    struct Layout {
        const char* setUp;  // run at each opening, in WAL mode: makes the tables where there are none
        std::span<const char* const> statements;  // kept by the caller
    };
    Database(std::string path, unsigned mode, Layout layout);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // Runs the statement at that place of the layout: `use` binds its values, steps it, and returns the code
    // of its last step. It is called again when the file had to be begun anew. 0, or SQLite's code.
    using Use = std::function<int(sqlite3_stmt*)>;
    int Run(std::size_t statement, const Use& use);
    int Changes() const;  // rows that the statement which runs has changed

private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };

    bool Open();
    int OpenOnce();
    int Prepare();
    std::optional<UniqueFd> LockOpening() const;
    void Close();
    void FoundDamaged(int code);
    bool SetAside(int code);

    const std::string mPath;
    const unsigned mMode;
    const Layout mLayout;
    uint64_t mInode = 0;
    std::unique_ptr<sqlite3, Closer> mDatabase;  // before the statements, which go first
    std::vector<std::unique_ptr<sqlite3_stmt, Finalizer>> mStatements;
};

// Texts are kept as bytes.
void BindBytes(sqlite3_stmt* statement, int index, std::string_view bytes);  // that outlive the step
std::string ColumnBytes(sqlite3_stmt* statement, int column);

}  // namespace Platform
