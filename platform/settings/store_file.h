#pragma once

// The files of a settings store: the SQLite file, its two side files, and a lock beside them.

#include <chrono>
#include <filesystem>
#include <string_view>
#include "platform/base/file_descriptor.h"
#include "platform/base/result.h"
#include "platform/settings/sqlite_database.h"

namespace platform {

/// Users of a store hold its lock shared; repair, which takes the store away, holds it exclusively. The
/// process that creates a missing store holds a second lock beside the shared one, since those who wait for
/// the store may hold the shared lock already. Where nothing can be written there is no lock: nobody can take
/// the store away either.
class StoreLock {
public:
    explicit StoreLock(const std::filesystem::path& storeFile);

    bool exists() const { return file_.isOpen(); }
    /// Either of the first two gives up the other. False when others still held the lock at the end of
    /// `patience`.
    bool holdShared(std::chrono::milliseconds patience) const;
    bool holdExclusively(std::chrono::milliseconds patience) const;
    bool holdForCreating(std::chrono::milliseconds patience) const;
    void releaseForCreating() const;

private:
    FileDescriptor file_;
};

/// Whether there is anything at `file`, even a dangling link.
bool isThere(const std::filesystem::path& file);

/// The folder of the stores without symbolic links in its name. Creates it with mode 0700 when it is missing.
Result<std::filesystem::path> storeFolder(const std::filesystem::path& directory);

/// Why a suite cannot have this name; empty when it can.
std::string_view objectionToSuiteName(std::string_view name);

/// Creates an empty store at `file`, all or nothing. The caller holds the lock for creating.
Result<void> createStore(const std::filesystem::path& file);

/// What is stored beside a value, so that damage to it or to its key shows.
std::string checksum(std::string_view key, std::string_view value);
/// Opens a store and reads all of it. An empty or foreign file counts as damaged, as do values that do not
/// match their checksums or are missing. A store of the first version, which had no checksums, gets them; where
/// it cannot be written, its checksums read as empty texts.
Result<Database> openStore(const std::filesystem::path& file);

/// Reads the whole store without changing it; damage is an error for which `isDamage` is true. No other
/// process can use the store meanwhile.
Result<void> examineStore(const std::filesystem::path& file);

/// Moves the store's files to a new name beside them (mode 0600) and returns that name. The caller holds the
/// lock exclusively, or the lock for creating when only side files are left. The side files go first: the
/// next store would otherwise take over a log that is not its own.
Result<std::filesystem::path> setStoreAside(const std::filesystem::path& file);

}  // namespace platform
