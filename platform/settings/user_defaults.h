#pragma once

// The settings store that an app and its widgets share: typed values under text keys, in one file
// per suite, used by several processes at once.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>
#include "platform/base/result.h"
#include "platform/settings/property_list.h"

namespace platform {

/// One suite. Every read and write is atomic per key, and every process sees a write at once. An absent value
/// is an empty optional; a value that could not be read is an Error (domain "SettingsError"). Any thread.
class UserDefaults {
public:
    /// Several writes and the reads that they depend on. Other readers see all of the writes or none.
    class Transaction {
    public:
        virtual ~Transaction() = default;
        virtual Result<std::optional<PropertyList>> object(std::string_view key) = 0;
        virtual Result<void> set(std::string_view key, const PropertyList& value) = 0;
        virtual Result<void> remove(std::string_view key) = 0;
    };

    using Complaint = std::function<void(const Error&)>;

    /// Opens (and creates where needed: folder mode 0700, file mode 0600) the suite's file in
    /// `directory`. Fails when it cannot be opened or is damaged; the file is then left as it is. Damage
    /// that a later read or write finds is reported to `complain`, once, on that thread.
    static Result<std::shared_ptr<UserDefaults>> open(const std::filesystem::path& directory,
                                                      std::string_view suiteName, Complaint complain = {});

    ~UserDefaults();

    /// The value as stored, whatever its type.
    Result<std::optional<PropertyList>> object(std::string_view key) const;
    /// Several values as of one moment, in the order of `keys`. A value that cannot be decoded is an error in
    /// its own place; everything fails when the store cannot be read.
    Result<std::vector<Result<std::optional<PropertyList>>>> objects(
        const std::vector<std::string>& keys) const;
    /// Everything, as of one moment.
    Result<PropertyList::Dictionary> dictionaryRepresentation() const;

    Result<void> set(std::string_view key, const PropertyList& value);
    Result<void> remove(std::string_view key);
    /// Runs `work` with the store locked for writing and keeps all of its writes, or none when
    /// `work` returns an error.
    Result<void> transaction(const std::function<Result<void>(Transaction&)>& work);

private:
    struct Connection;
    UserDefaults(std::unique_ptr<Connection> connection, Complaint complain);
    /// What `work` returns, with the connection locked; complains about damage.
    template <typename Work>
    std::invoke_result_t<Work, Connection&> withConnection(Work work) const;

    std::unique_ptr<Connection> connection_;
    const Complaint complain_;
    mutable std::once_flag complainOnce_;
};

/// How the platform's typed getters read a stored value: with conversions, and with a default for values that
/// do not convert. The accessors of PropertyList convert nothing.
std::int64_t coercedInteger(const std::optional<PropertyList>& value);  // 2.67 as 2, "12abc" as 12
bool coercedBool(const std::optional<PropertyList>& value);             // "YES" as true
/// The elements of an array of dictionaries; nothing for any other value.
std::optional<std::vector<PropertyList::Dictionary>> arrayOfDictionaries(
    const std::optional<PropertyList>& value);

/// The path of a suite's file in `directory`.
std::filesystem::path storeFile(const std::filesystem::path& directory, std::string_view suiteName);

/// Moves a damaged store file and its side files aside to another name (mode 0600), under an exclusive lock.
/// Returns the main file's new path; nothing when the store is in order or missing.
Result<std::optional<std::filesystem::path>> repairStore(const std::filesystem::path& directory,
                                                         std::string_view suiteName);

}  // namespace platform
