#pragma once

// Days and times of day in a time zone.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/clock.h"
#include "platform/base/locale.h"

namespace platform {

/// The Gregorian calendar in one zone. Every operation returns nothing when the zone is unknown.
class Calendar {
public:
    explicit Calendar(TimeZone zone) : zone_(std::move(zone)) {}

    /// Exact elapsed time, in any zone; nothing when an Instant cannot represent the result.
    std::optional<Instant> dateByAddingSeconds(std::int64_t seconds, Instant to) const;

    /// The first moment of the local day that holds `instant`.
    std::optional<Instant> startOfDay(Instant instant) const;

    /// The given time on the local day that holds `instant`, searched forward from the day's start:
    /// the next valid moment when a clock change skips it, the first when it occurs twice.
    std::optional<Instant> timeOnDay(Instant instant, std::chrono::seconds timeOfDay) const;

    /// Midnight (or the first moment) of a date of this zone; nothing when there is no such day. A date that
    /// an Instant cannot represent (before 1678, after 2261) gives the first or last Instant.
    std::optional<Instant> midnight(std::chrono::year_month_day date) const;

private:
    TimeZone zone_;
};

/// The zone that an abbreviation stands for; "IST" is India's. Nothing for an unknown abbreviation.
std::optional<TimeZone> timeZoneForAbbreviation(std::string_view abbreviation);

/// Reads the pattern "yyyy-MM-dd": a four-digit year, one or two digits of month and day, a day
/// that exists, and nothing before or after it.
std::optional<std::chrono::year_month_day> parseDay(std::string_view text);

/// Whether the system has a zone of that name. Only looks for the zone's file: listing all zones takes
/// milliseconds, and most runs never need the list.
bool isTimeZone(const std::string& identifier);

/// The device's zone: `TZ`, then the system's setting, then UTC.
TimeZone systemTimeZone();

/// The device's locale from `LC_ALL`, then `LANG`; "C", "POSIX" and unset variables mean en_US.
Locale systemLocale();

}  // namespace platform
