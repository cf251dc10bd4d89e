#pragma once

// One connection to an SQLite file, with its errors as values.

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include "platform/base/result.h"

namespace platform {

/// An error of the settings store; `code` is SQLite's (extended) or one of its primary codes.
inline tl::unexpected<Error> settingsFailure(int code, std::string message) {
    return failure("SettingsError", code, std::move(message));
}

/// Whether the error says that the file's content is damaged, and not just unreachable at the moment.
bool isDamage(const Error& error);

/// A prepared statement; only one run at a time.
class Statement {
public:
    explicit Statement(sqlite3_stmt* statement) : statement_(statement) {}

    /// One run from start to end; its destruction releases the database. Bound bytes must outlive it.
    class Run {
    public:
        explicit Run(sqlite3_stmt* statement) : statement_(statement) {}
        ~Run();
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;

        void bindText(int index, std::string_view text);
        void bindBytes(int index, std::string_view bytes);
        /// True while there is a row, false at the end.
        Result<bool> step();
        /// A column's bytes, until the next step; nothing for a column that holds neither text
        /// nor bytes.
        std::optional<std::string_view> bytes(int column) const;
        /// A column's value as text, whatever its type.
        std::string text(int column) const;

    private:
        sqlite3_stmt* statement_;
    };

    Run run() { return Run(statement_.get()); }

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// Not for several threads at once, and not across a fork.
class Database {
public:
    enum class Access {
        readWrite,  // read-only where the file cannot be written
        frozen,     // for reading a file that nobody can write; needs no side files
    };

    /// Opens an existing file; refuses a symbolic link anywhere in its path.
    static Result<Database> open(const std::filesystem::path& file, Access access);

    Result<Statement> prepare(const char* sql);
    /// Runs statements and ignores their rows.
    Result<void> execute(const char* sql);
    /// The first column of the first row; empty without a row.
    Result<std::string> text(const char* sql);
    bool isReadOnly() const { return sqlite3_db_readonly(handle_.get(), "main") == 1; }
    bool isInTransaction() const { return sqlite3_get_autocommit(handle_.get()) == 0; }
    /// Leaves the write-ahead log as it is when the connection closes.
    void keepLog();
    /// Drops the connection without closing it, in a child process whose parent still uses it.
    void abandon() { (void)handle_.release(); }

private:
    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
    };

    explicit Database(sqlite3* handle) : handle_(handle) {}
    tl::unexpected<Error> lastError() const;

    std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace platform
