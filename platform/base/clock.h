#pragma once

// Moments, and the one place where a process learns the current time.

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

using Instant = std::chrono::system_clock::time_point;

/// ISO 8601 in UTC with milliseconds, truncated, not rounded: "2026-11-22T03:30:00.000Z".
std::string formatInstant(Instant instant);

/// Reads an ISO 8601 date and time with seconds, optional fraction, and "Z" or an offset such as
/// "+05:30". Nothing for a text without an offset or with anything around it.
std::optional<Instant> parseInstant(std::string_view text);

/// The process's clock: the real one, one that stands still, or one that runs at another speed.
/// Any thread may read and set it.
class Clock {
public:
    /// Follows the system's clock.
    Clock() = default;
    /// Stands still at `instant`.
    explicit Clock(Instant instant) { set(instant, 0.0); }

    Instant now() const;

    /// From now on the clock shows `instant` and moves on at `rate` seconds a second; 0
    /// stops it.
    void set(Instant instant, double rate);
    /// Back to the system's clock.
    void followSystem();

private:
    struct Setting {
        Instant instant;
        std::chrono::steady_clock::time_point since;
        double rate = 0.0;
    };

    mutable std::mutex mutex_;
    std::optional<Setting> setting_;
};

}  // namespace platform
