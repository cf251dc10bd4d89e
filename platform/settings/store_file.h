#pragma once

// The files of a settings store: the SQLite file, its two side files, and a lock beside them.

#include <chrono>
#include <filesystem>
#include <string_view>
#include "platform/base/result.h"
#include "platform/settings/sqlite_database.h"

namespace platform {

/// Who uses a store holds its lock shared; who takes it away holds it alone. Who makes a missing one
/// holds a second lock beside the shared one: those who wait for it may be users already. Where nothing
/// may be written there is no lock, and nobody who could take the store away.
class StoreLock {
public:
    explicit StoreLock(const std::filesystem::path& storeFile);
    ~StoreLock();
    StoreLock(StoreLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    StoreLock& operator=(StoreLock&&) = delete;

    bool exists() const { return descriptor_ >= 0; }
    /// The first two give up what each other held. False when others still held theirs at the end of
    /// `patience`.
    bool holdShared(std::chrono::milliseconds patience) const;
    bool holdAlone(std::chrono::milliseconds patience) const;
    bool holdMaking(std::chrono::milliseconds patience) const;
    void releaseMaking() const;

private:
    int descriptor_ = -1;
};

/// Whether there is anything at `file`, be it only a dangling link.
bool isThere(const std::filesystem::path& file);

/// The folder of the stores, made with mode 0700 where it is missing, without symbolic links in its name.
Result<std::filesystem::path> storeFolder(const std::filesystem::path& directory);

/// Why a suite cannot have this name; empty when it can.
std::string_view objectionToSuiteName(std::string_view name);

/// Makes an empty store at `file`, all or nothing. The caller holds the lock for making.
Result<void> createStore(const std::filesystem::path& file);

/// Opens a store and reads its first pages. An empty or foreign file counts as damaged.
Result<Database> openStore(const std::filesystem::path& file);

/// Reads the whole store; an error that `isDamage` tells when it is damaged. Alone, and touches nothing.
Result<void> examineStore(const std::filesystem::path& file);

/// Moves the store's files to a new name beside them (mode 0600) and answers it. The caller holds the lock
/// alone, or the one for making when only side files are left. The side files go first: a log without its
/// store would otherwise end in the next one.
Result<std::filesystem::path> setStoreAside(const std::filesystem::path& file);

}  // namespace platform
