#include "platform/settings/user_defaults.h"

#include <unistd.h>

#include <array>
#include <mutex>
#include <utility>
#include "platform/settings/sqlite_database.h"
#include "platform/settings/store_file.h"
#include "platform/settings/stored_value.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{5};

// They index `queries` and the statements of a connection.
enum Query : std::size_t { readOne, readAll, write, erase, queryCount };
constexpr std::array<const char*, queryCount> queries{
    "SELECT value, checksum FROM settings WHERE key = ?1",
    "SELECT key, value, checksum FROM settings ORDER BY key",
    "INSERT INTO settings VALUES(?1, ?2, ?3)"
    " ON CONFLICT(key) DO UPDATE SET value = excluded.value, checksum = excluded.checksum",
    "DELETE FROM settings WHERE key = ?1",
};

// The codes of errors that concern one value and not the store.
constexpr int undecodable = SQLITE_MISMATCH;
constexpr int damagedValue = SQLITE_CORRUPT | (99 << 8);

/// The bytes of a value and its checksum, in two columns from `column` on.
Result<std::string_view> intactValue(std::string_view key, const Statement::Run& run, int column) {
    const std::string_view bytes = run.bytes(column).value_or("");
    const std::string sum = run.text(column + 1);
    if (sum.empty() || sum == checksum(key, bytes)) return bytes;
    return settingsFailure(damagedValue,
                           "settings store: the value of \"" + std::string(key) + "\" is damaged");
}

Result<PropertyList> decoded(std::string_view key, std::string_view bytes) {
    std::optional<PropertyList> value = decodeStoredValue(bytes);
    if (value) return std::move(*value);
    return settingsFailure(undecodable,
                           "settings store: the value of \"" + std::string(key) + "\" cannot be decoded");
}

/// Holds the lock shared and makes sure that the store exists: the first process to find it missing creates
/// it.
Result<void> joinStore(const StoreLock& lock, const fs::path& file) {
    if (!lock.holdShared(patience))
        return settingsFailure(SQLITE_BUSY, "the settings store is being repaired");
    if (isThere(file)) return {};
    if (!lock.holdForCreating(patience))
        return settingsFailure(SQLITE_BUSY, "the settings store is being created");
    const Result<void> made = isThere(file) ? Result<void>() : createStore(file);
    lock.releaseForCreating();
    return made;
}

}  // namespace

struct UserDefaults::Connection {
    Connection(StoreLock ownLock, Database ownDatabase)
        : lock(std::move(ownLock)), database(std::move(ownDatabase)) {}

    ~Connection() {
        if (isForked()) {
            // Closing would remove the log that the parent still uses.
            for (auto& statement : statements) (void)statement.release();
            database.abandon();
        }
    }

    bool isForked() const { return owner != getpid(); }

    Result<Statement*> statement(Query query) {
        auto& cached = statements[query];
        if (!cached) {
            Statement prepared = TRY(database.prepare(queries[query]));
            cached = std::make_unique<Statement>(std::move(prepared));
        }
        return cached.get();
    }

    Result<std::optional<PropertyList>> object(std::string_view key) {
        Statement* prepared = TRY(statement(readOne));
        auto run = prepared->run();
        run.bindText(1, key);
        if (!TRY(run.step())) return std::nullopt;
        const std::string_view bytes = TRY(intactValue(key, run, 0));
        return decoded(key, bytes);
    }

    Result<void> set(std::string_view key, const PropertyList& value) {
        const std::optional<std::string> bytes = encodeStoredValue(value);
        if (!bytes) {
            return settingsFailure(SQLITE_TOOBIG, "settings store: the value of \"" + std::string(key) +
                                                      "\" is nested too deeply");
        }
        return change(write, key, *bytes);
    }

    Result<void> remove(std::string_view key) { return change(erase, key, std::nullopt); }

    Result<void> change(Query query, std::string_view key, std::optional<std::string_view> bytes) {
        if (database.isReadOnly())
            return settingsFailure(SQLITE_READONLY, "settings store: the file cannot be written");
        TRY(keepDamaged(key));
        Statement* prepared = TRY(statement(query));
        auto run = prepared->run();
        run.bindText(1, key);
        const std::string sum = bytes ? checksum(key, *bytes) : "";
        if (bytes) {
            run.bindBytes(2, *bytes);
            run.bindText(3, sum);
        }
        TRY(run.step());
        return {};
    }

    /// A damaged value is not overwritten: it is for repair to set aside.
    Result<void> keepDamaged(std::string_view key) {
        Statement* prepared = TRY(statement(readOne));
        auto run = prepared->run();
        run.bindText(1, key);
        if (!TRY(run.step())) return {};
        return intactValue(key, run, 0).map([](std::string_view) {});
    }

    /// Runs `work` between `begin` and a commit; rolls back unless both succeed.
    template <typename Work>
    Result<void> inTransaction(const char* begin, Work&& work) {
        TRY(database.execute(begin));
        struct Undo {
            Database& database;
            ~Undo() {
                if (database.isInTransaction()) (void)database.execute("ROLLBACK");
            }
        } undo{database};
        const Result<void> done = work();
        return done ? database.execute("COMMIT") : done;
    }

    struct OpenTransaction final : Transaction {
        explicit OpenTransaction(Connection& own) : connection(own) {}
        Result<std::optional<PropertyList>> object(std::string_view key) override {
            return connection.object(key);
        }
        Result<void> set(std::string_view key, const PropertyList& value) override {
            return connection.set(key, value);
        }
        Result<void> remove(std::string_view key) override { return connection.remove(key); }

        Connection& connection;
    };

    const pid_t owner = getpid();
    std::mutex mutex;
    // Destroyed in reverse order: the statements first, the lock last.
    StoreLock lock;
    Database database;
    std::array<std::unique_ptr<Statement>, queryCount> statements;
};

UserDefaults::UserDefaults(std::unique_ptr<Connection> connection, Complaint complain)
    : connection_(std::move(connection)), complain_(std::move(complain)) {}

UserDefaults::~UserDefaults() = default;

template <typename Work>
std::invoke_result_t<Work, UserDefaults::Connection&> UserDefaults::withConnection(Work work) const {
    if (connection_->isForked())
        return settingsFailure(SQLITE_MISUSE, "the settings store was opened before a fork");
    const std::lock_guard lock(connection_->mutex);
    auto result = work(*connection_);
    if (!result && isDamage(result.error()) && complain_)
        std::call_once(complainOnce_, complain_, result.error());
    return result;
}

Result<std::shared_ptr<UserDefaults>> UserDefaults::open(const fs::path& directory,
                                                         std::string_view suiteName, Complaint complain) {
    if (const auto objection = objectionToSuiteName(suiteName); !objection.empty())
        return settingsFailure(SQLITE_CANTOPEN, std::string(objection));
    const fs::path folder = TRY(storeFolder(directory));
    const fs::path file = storeFile(folder, suiteName);
    StoreLock lock(file);
    TRY(joinStore(lock, file));
    Result<Database> database = openStore(file);
    if (!database) {
        Error error = database.error();
        error.message += " (" + file.string() + ")";
        return tl::unexpected(std::move(error));
    }
    auto connection = std::make_unique<Connection>(std::move(lock), std::move(*database));
    // Reads the schema too, so that a damaged one is found here.
    TRY(connection->statement(readOne));
    return std::shared_ptr<UserDefaults>(new UserDefaults(std::move(connection), std::move(complain)));
}

Result<std::optional<PropertyList>> UserDefaults::object(std::string_view key) const {
    return withConnection([&](Connection& connection) { return connection.object(key); });
}

Result<std::vector<Result<std::optional<PropertyList>>>> UserDefaults::objects(
    const std::vector<std::string>& keys) const {
    std::vector<Result<std::optional<PropertyList>>> values;
    values.reserve(keys.size());
    return withConnection([&](Connection& connection) {
               return connection.inTransaction("BEGIN", [&]() -> Result<void> {
                   for (const std::string& key : keys) {
                       Result<std::optional<PropertyList>> value = connection.object(key);
                       if (!value && value.error().code != undecodable && value.error().code != damagedValue)
                           return tl::unexpected(value.error());
                       values.push_back(std::move(value));
                   }
                   return {};
               });
           })
        .map([&] { return std::move(values); });
}

Result<PropertyList::Dictionary> UserDefaults::dictionaryRepresentation() const {
    return withConnection([](Connection& connection) -> Result<PropertyList::Dictionary> {
        Statement* prepared = TRY(connection.statement(readAll));
        auto run = prepared->run();
        PropertyList::Dictionary entries;
        for (Result<bool> row = run.step(); !row || *row; row = run.step()) {
            if (!row) return tl::unexpected(row.error());
            std::string key(run.bytes(0).value_or(""));
            const std::string_view bytes = TRY(intactValue(key, run, 1));
            PropertyList value = TRY(decoded(key, bytes));
            entries.insert_or_assign(std::move(key), std::move(value));
        }
        return entries;
    });
}

Result<void> UserDefaults::set(std::string_view key, const PropertyList& value) {
    return withConnection([&](Connection& connection) { return connection.set(key, value); });
}

Result<void> UserDefaults::remove(std::string_view key) {
    return withConnection([&](Connection& connection) { return connection.remove(key); });
}

Result<void> UserDefaults::transaction(const std::function<Result<void>(Transaction&)>& work) {
    return withConnection([&](Connection& connection) {
        Connection::OpenTransaction open(connection);
        // Takes the write lock at once: a transaction that read first is refused once another process has
        // written.
        return connection.inTransaction("BEGIN IMMEDIATE", [&] { return work(open); });
    });
}

fs::path storeFile(const fs::path& directory, std::string_view suiteName) {
    return directory / (std::string(suiteName) + ".sqlite");
}

Result<std::optional<fs::path>> repairStore(const fs::path& directory, std::string_view suiteName) {
    if (const auto objection = objectionToSuiteName(suiteName); !objection.empty())
        return settingsFailure(SQLITE_CANTOPEN, std::string(objection));
    std::error_code missing;
    const fs::path folder = fs::canonical(directory, missing);
    if (missing == std::errc::no_such_file_or_directory) return std::nullopt;
    if (missing || !fs::is_directory(folder, missing)) {
        const std::string reason = missing ? missing.message() : "Not a directory";
        return settingsFailure(SQLITE_CANTOPEN, "cannot use " + directory.string() + ": " + reason);
    }
    const fs::path file = storeFile(folder, suiteName);
    if (!isThere(file)) return std::nullopt;

    const StoreLock lock(file);
    if (!lock.exists()) return settingsFailure(SQLITE_CANTOPEN, "cannot lock " + file.string());
    if (!lock.holdExclusively(std::chrono::seconds(0))) {
        return settingsFailure(SQLITE_BUSY,
                               "the settings store is in use by another process: " + file.string());
    }
    if (const auto health = examineStore(file); health || !isDamage(health.error()))
        return health ? Result<std::optional<fs::path>>(std::nullopt) : tl::unexpected(health.error());
    return TRY(setStoreAside(file));
}

}  // namespace platform
