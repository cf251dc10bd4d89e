#pragma once

// Random identifiers, and where they come from.

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace platform {

struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    /// Upper case, as the platform prints it.
    std::string text() const;
    /// Reads either case; nothing when `text` is not an identifier in the usual form.
    static std::optional<UUID> parse(std::string_view text);

    bool operator==(const UUID&) const = default;
};

/// Makes random identifiers (version 4). With a seed the sequence is always the same, so that
/// output with identifiers can be compared. Any thread.
class IdSource {
public:
    IdSource();
    explicit IdSource(std::uint64_t seed);

    UUID next();

private:
    std::mutex mutex_;
    std::mt19937_64 generator_;
};

}  // namespace platform
