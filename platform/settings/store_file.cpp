#include "platform/settings/store_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <thread>
#include "platform/base/clock.h"
#include "platform/base/files.h"
#include "platform/settings/stored_value.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;
constexpr std::array<const char*, 2> sideFiles{"-wal", "-shm"};
/// The total tells when rows are missing. SQLite keeps it with every write, in the same transaction.
constexpr const char* schema =
    "CREATE TABLE settings(key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL, checksum INTEGER NOT NULL)"
    " WITHOUT ROWID;"
    "CREATE TABLE total(rows INTEGER NOT NULL, checksums INTEGER NOT NULL);"
    "INSERT INTO total VALUES(0, 0);"
    "CREATE TRIGGER added AFTER INSERT ON settings BEGIN"
    " UPDATE total SET rows = rows + 1, checksums = checksums + new.checksum; END;"
    "CREATE TRIGGER changed AFTER UPDATE ON settings BEGIN"
    " UPDATE total SET checksums = checksums - old.checksum + new.checksum; END;"
    "CREATE TRIGGER removed AFTER DELETE ON settings BEGIN"
    " UPDATE total SET rows = rows - 1, checksums = checksums - old.checksum; END;"
    "PRAGMA user_version=2";

fs::path withSuffix(fs::path file, const std::string& suffix) { return file += suffix; }

tl::unexpected<Error> systemFailure(const std::string& what, const fs::path& file) {
    const int code = errno;
    return settingsFailure(SQLITE_CANTOPEN, "cannot " + what + " " + file.string() + ": " +
                                                std::generic_category().message(code));
}

bool makeFolder(const fs::path& folder) {
    if (mkdir(folder.c_str(), folderMode) == 0 || errno == EEXIST) return true;
    if (errno != ENOENT || !folder.has_parent_path() || folder.parent_path() == folder) return false;
    return makeFolder(folder.parent_path()) && (mkdir(folder.c_str(), folderMode) == 0 || errno == EEXIST);
}

/// Repeats `take`, a system call that does not wait, until it succeeds or `patience` is over.
template <typename Take>
bool hold(const Take& take, milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (take() != 0) {
        // On a file system without locks nobody waits for one.
        if (errno != EWOULDBLOCK && errno != EACCES && errno != EINTR) return true;
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(milliseconds(2));
    }
    return true;
}

/// Locks a range of bytes, which is independent of the lock on the file as a whole.
int lockBytes(int descriptor, short kind) {
    struct flock range = {};
    range.l_type = kind;
    range.l_whence = SEEK_SET;
    return fcntl(descriptor, F_OFD_SETLK, &range);
}

Result<void> makeEmptyFile(const fs::path& file) {
    // SQLite does not create it, because it gives the side files the mode of the main file.
    const FileDescriptor made(
        ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, fileMode));
    if (!made.isOpen()) return systemFailure("create", file);
    return {};
}

Result<void> moveAside(const fs::path& from, const fs::path& to) {
    if (!isThere(from)) return {};
    if (std::rename(from.c_str(), to.c_str()) != 0) return systemFailure("set aside", from);
    fchmodat(AT_FDCWD, to.c_str(), fileMode, 0);
    return {};
}

fs::path nameAside(const fs::path& file) {
    std::string moment = formatInstant(std::chrono::system_clock::now()).substr(0, 19) + "Z";
    std::erase(moment, ':');
    const fs::path base = withSuffix(file, ".damaged-" + moment);
    fs::path name = base;
    const auto isTaken = [&name] {
        return isThere(name) || std::any_of(sideFiles.begin(), sideFiles.end(),
                                            [&name](auto side) { return isThere(withSuffix(name, side)); });
    };
    for (int number = 2; isTaken(); ++number) name = withSuffix(base, "-" + std::to_string(number));
    return name;
}

/// The first read of a connection: SQLite opens nearly anything and reports faults only now.
Result<void> readFirstPages(Database& database) {
    const auto prepared =
        database.execute("PRAGMA synchronous=NORMAL; PRAGMA cache_size=-256; PRAGMA cell_size_check=ON");
    if (!prepared) return prepared;
    const std::string version = TRY(database.text("PRAGMA user_version"));
    if (version == "0")
        return settingsFailure(SQLITE_CORRUPT, "settings store: the file is empty or not a settings store");
    if (version != "1" && version != "2")
        return settingsFailure(SQLITE_MISMATCH, "settings store: the file was written by a newer version");
    return {};
}

Result<bool> isOfFirstVersion(Database& database) {
    return database.text("PRAGMA user_version").map([](const std::string& version) {
        return version == "1";
    });
}

Result<void> checkPages(Database& database) {
    const std::string found = TRY(database.text("PRAGMA integrity_check(1)"));
    if (found != "ok") return settingsFailure(SQLITE_CORRUPT, "settings store: " + found);
    return {};
}

enum class Check { checksums, values };

/// Reads every row, and compares all of them with the total. The first version has neither checksums nor
/// total.
Result<void> checkRows(Database& database, Check check) {
    const bool isFirst = TRY(isOfFirstVersion(database));
    TRY(database.execute("BEGIN"));
    std::int64_t rows = 0;
    std::int64_t checksums = 0;
    {
        Statement all = TRY(database.prepare(isFirst ? "SELECT key, value, '' FROM settings"
                                                     : "SELECT key, value, checksum FROM settings"));
        auto run = all.run();
        while (TRY(run.step())) {
            const std::string_view key = run.bytes(0).value_or("");
            const std::string_view value = run.bytes(1).value_or("");
            const std::string expected = checksum(key, value);
            if ((!isFirst && run.text(2) != expected) ||
                (check == Check::values && !decodeStoredValue(value))) {
                return settingsFailure(
                    SQLITE_CORRUPT, "settings store: the value of \"" + std::string(key) + "\" is damaged");
            }
            ++rows;
            checksums += std::stoll(expected);
        }
    }
    const std::string total = isFirst ? "" : TRY(database.text("SELECT rows || ' ' || checksums FROM total"));
    if (!isFirst && total != std::to_string(rows) + " " + std::to_string(checksums))
        return settingsFailure(SQLITE_CORRUPT, "settings store: values are missing");
    return database.execute("COMMIT");
}

/// Gives the checksums to a store of the first version. All or nothing, and once when several processes try.
Result<void> addChecksums(Database& database) {
    TRY(database.execute("BEGIN IMMEDIATE"));
    if (!TRY(isOfFirstVersion(database))) return database.execute("COMMIT");
    TRY(checkPages(database));
    TRY(database.execute("ALTER TABLE settings RENAME TO earlier"));
    TRY(database.execute(schema));
    {
        Statement all = TRY(database.prepare("SELECT key, value FROM earlier"));
        Statement insert = TRY(database.prepare("INSERT INTO settings VALUES(?1, ?2, ?3)"));
        auto read = all.run();
        while (TRY(read.step())) {
            const std::string_view key = read.bytes(0).value_or("");
            const std::string_view value = read.bytes(1).value_or("");
            const std::string sum = checksum(key, value);
            auto write = insert.run();
            write.bindText(1, key);
            write.bindBytes(2, value);
            write.bindText(3, sum);
            TRY(write.step());
        }
    }
    TRY(database.execute("DROP TABLE earlier"));
    return database.execute("COMMIT");
}

Result<Database> openAs(const fs::path& file, Database::Access access) {
    Database database = TRY(Database::open(file, access));
    TRY(readFirstPages(database));
    if (!TRY(isOfFirstVersion(database))) {
        TRY(checkRows(database, Check::checksums));
    } else if (database.isReadOnly()) {
        TRY(checkPages(database));
        TRY(database.execute(
            "PRAGMA temp_store=MEMORY;"
            "CREATE TEMP VIEW settings AS SELECT key, value, '' AS checksum FROM main.settings"));
    } else {
        TRY(addChecksums(database));
    }
    return database;
}

/// Whether a connection failed because it could not make its side files.
bool isReadOnlyPlace(const Error& error) {
    const int primary = error.code & 0xFF;
    return primary == SQLITE_CANTOPEN || primary == SQLITE_READONLY;
}

bool holdsSomething(const fs::path& file) {
    std::error_code error;
    return fs::file_size(file, error) > 0 && !error;
}

}  // namespace

StoreLock::StoreLock(const fs::path& storeFile) {
    const fs::path file = withSuffix(storeFile, "-lock");
    file_ = FileDescriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, fileMode));
    if (!exists()) file_ = FileDescriptor(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
}

bool StoreLock::holdShared(milliseconds patience) const {
    return !exists() || hold([this] { return flock(file_.number(), LOCK_SH | LOCK_NB); }, patience);
}

bool StoreLock::holdExclusively(milliseconds patience) const {
    return !exists() || hold([this] { return flock(file_.number(), LOCK_EX | LOCK_NB); }, patience);
}

bool StoreLock::holdForCreating(milliseconds patience) const {
    return !exists() || hold([this] { return lockBytes(file_.number(), F_WRLCK); }, patience);
}

void StoreLock::releaseForCreating() const {
    if (exists()) lockBytes(file_.number(), F_UNLCK);
}

std::string checksum(std::string_view key, std::string_view value) {
    const auto add = [](uLong sum, std::string_view bytes) {
        return crc32_z(sum, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    };
    return std::to_string(add(add(add(0, key), std::string_view("\0", 1)), value));
}

bool isThere(const fs::path& file) {
    std::error_code error;
    return fs::symlink_status(file, error).type() != fs::file_type::not_found;
}

Result<fs::path> storeFolder(const fs::path& directory) {
    if (!makeFolder(directory)) return systemFailure("create", directory);
    std::error_code error;
    fs::path folder = fs::canonical(directory, error);
    if (!error && !fs::is_directory(folder)) error = std::make_error_code(std::errc::not_a_directory);
    if (error)
        return settingsFailure(SQLITE_CANTOPEN, "cannot use " + directory.string() + ": " + error.message());
    return folder;
}

std::string_view objectionToSuiteName(std::string_view name) {
    if (name.empty() || name == "NSGlobalDomain") return "a settings store cannot have this name";
    if (name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
        return "the name of a settings store cannot be a path";
    return {};
}

Result<void> createStore(const fs::path& file) {
    // Side files without a store are the remains of an earlier one; SQLite would apply their log to ours.
    for (const char* side : sideFiles) {
        if (!isThere(withSuffix(file, side))) continue;
        TRY(setStoreAside(file));
    }
    // Created under another name, so that a file with the store's own name is always complete.
    const fs::path fresh = withSuffix(file, ".new");
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) unlink(withSuffix(fresh, suffix).c_str());
    TRY(makeEmptyFile(fresh));
    {
        Database database = TRY(Database::open(fresh, Database::Access::readWrite));
        TRY(database.execute("BEGIN IMMEDIATE"));
        TRY(database.execute(schema));
        TRY(database.execute("COMMIT; PRAGMA journal_mode=WAL"));
    }
    if (std::rename(fresh.c_str(), file.c_str()) != 0) return systemFailure("create", file);
    syncFolder(file.parent_path());
    return {};
}

Result<Database> openStore(const fs::path& file) {
    Result<Database> database = openAs(file, Database::Access::readWrite);
    if (database || !isReadOnlyPlace(database.error())) return database;
    // Without side files the main file can still be read, unless part of the content is in the log.
    if (holdsSomething(withSuffix(file, "-wal"))) return database;
    Result<Database> frozen = openAs(file, Database::Access::frozen);
    return frozen ? std::move(frozen) : std::move(database);
}

Result<void> examineStore(const fs::path& file) {
    Database database = TRY(Database::open(file, Database::Access::readWrite));
    database.keepLog();
    // Also keeps out programs that do not know our lock.
    TRY(database.execute("PRAGMA locking_mode=EXCLUSIVE"));
    TRY(readFirstPages(database));
    TRY(checkPages(database));
    return checkRows(database, Check::values);
}

Result<fs::path> setStoreAside(const fs::path& file) {
    fs::path name = nameAside(file);
    for (const char* side : sideFiles) {
        TRY(moveAside(withSuffix(file, side), withSuffix(name, side)));
    }
    TRY(moveAside(file, name));
    syncFolder(file.parent_path());
    return name;
}

}  // namespace platform
