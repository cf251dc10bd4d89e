#include "platform/settings/store_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <thread>
#include "platform/base/clock.h"
#include "platform/base/files.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;
constexpr std::array<const char*, 2> sideFiles{"-wal", "-shm"};
constexpr const char* storeVersion = "1";

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
    if (version != storeVersion)
        return settingsFailure(SQLITE_MISMATCH, "settings store: the file was written by a newer version");
    return {};
}

Result<Database> openAs(const fs::path& file, Database::Access access) {
    Database database = TRY(Database::open(file, access));
    TRY(readFirstPages(database));
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
        const auto filled = database.execute(
            "BEGIN IMMEDIATE;"
            "CREATE TABLE settings(key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL) WITHOUT ROWID;"
            "PRAGMA user_version=1;"
            "COMMIT;"
            "PRAGMA journal_mode=WAL");
        if (!filled) return filled;
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
    const std::string found = TRY(database.text("PRAGMA integrity_check(1)"));
    if (found != "ok") return settingsFailure(SQLITE_CORRUPT, "settings store: " + found);
    return {};
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
