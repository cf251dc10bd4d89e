#pragma once

// Days and times of day in a time zone.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/clock.h"
#include "platform/base/locale.h"

namespace platform {

/// The Gregorian calendar in one zone. Operations answer nothing when the zone is not known.
class Calendar {
public:
    explicit Calendar(TimeZone zone) : zone_(std::move(zone)) {}

    /// Exact elapsed time, in any zone; nothing when the result is outside of what an Instant can tell.
    std::optional<Instant> dateByAddingSeconds(std::int64_t seconds, Instant to) const;

    /// The first moment of the local day that holds `instant`.
    std::optional<Instant> startOfDay(Instant instant) const;

    /// The given time on the local day that holds `instant`, searched forward from the day's start:
    /// the next valid moment when a clock change skips it, the first when it occurs twice.
    std::optional<Instant> timeOnDay(Instant instant, std::chrono::seconds timeOfDay) const;

    /// Midnight (or the first moment) of a date of this zone; nothing when there is no such day. A date that
    /// an Instant cannot tell (before 1678, after 2261) gives the first or last one that it can.
    std::optional<Instant> midnight(std::chrono::year_month_day date) const;

private:
    TimeZone zone_;
};

/// The zone that an abbreviation stands for; "IST" is India's. Nothing for one that is not known.
std::optional<TimeZone> timeZoneForAbbreviation(std::string_view abbreviation);

/// Reads the pattern "yyyy-MM-dd": a four-digit year, one or two digits of month and day, a real
/// day, and nothing before or after it.
std::optional<std::chrono::year_month_day> parseDay(std::string_view text);

/// Whether the system has a zone of that name. Looks for its file alone: listing all zones takes
/// milliseconds, and most runs never need one.
bool isTimeZone(const std::string& identifier);

/// The device's zone: `TZ`, then the system's setting, else UTC.
TimeZone systemTimeZone();

/// The device's locale from `LC_ALL`, then `LANG`; "C", "POSIX" and none read as en_US.
Locale systemLocale();

}  // namespace platform
