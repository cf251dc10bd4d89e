#include "platform/text/calendar.h"

#include <date/tz.h>
#include <sys/stat.h>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

namespace platform {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::seconds;

/// What `question` answers about the zone; nothing when there is no such zone or no zone data.
template <typename Question>
auto askZone(const TimeZone& zone, Question question)
    -> std::optional<decltype(question(std::declval<const date::time_zone&>()))> {
    try {
        return question(*date::locate_zone(zone.identifier));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// The first moment that shows `local`, or the end of the gap when a clock change skips it.
date::sys_seconds firstMoment(const date::time_zone& zone, date::local_seconds local) {
    return zone.to_sys(local, date::choose::earliest);
}

date::local_days localDay(const date::time_zone& zone, Instant instant) {
    return date::floor<days>(zone.to_local(floor<seconds>(instant)));
}

/// An Instant counts nanoseconds and only covers the years 1678 to 2261; moments beyond become the first or
/// last Instant.
Instant clampedInstant(date::sys_seconds moment) {
    constexpr auto first = std::chrono::ceil<seconds>(Instant::min());
    constexpr auto last = floor<seconds>(Instant::max());
    if (moment < first) return Instant::min();
    if (moment > last) return Instant::max();
    return Instant(moment);
}

constexpr std::string_view zoneFolder = "/usr/share/zoneinfo/";

/// The identifier in ":Asia/Kolkata", "/usr/share/zoneinfo/Asia/Kolkata" or "posix/Asia/Kolkata".
std::string identifierIn(std::string_view text) {
    if (text.starts_with(':')) text.remove_prefix(1);
    const std::size_t folder = text.find("/zoneinfo/");
    if (folder != std::string_view::npos) text.remove_prefix(folder + std::string_view("/zoneinfo/").size());
    for (const std::string_view variant : {"posix/", "right/"}) {
        if (text.starts_with(variant)) text.remove_prefix(variant.size());
    }
    return std::string(text);
}

std::string environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// Reads an unsigned number of `atLeast` to `atMost` digits and removes it from the front; -1 when there is
/// no such number.
int takeNumber(std::string_view& text, std::size_t atLeast, std::size_t atMost) {
    int number = 0;
    std::size_t count = 0;
    for (; count < atMost && count < text.size() && text[count] >= '0' && text[count] <= '9'; ++count)
        number = number * 10 + (text[count] - '0');
    if (count < atLeast) return -1;
    text.remove_prefix(count);
    return number;
}

bool takeDash(std::string_view& text) {
    if (!text.starts_with('-')) return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

std::optional<Instant> Calendar::dateByAddingSeconds(std::int64_t seconds, Instant to) const {
    constexpr std::int64_t ticksPerSecond = Instant::duration::period::den;
    std::int64_t ticks = 0;
    std::int64_t sum = 0;
    if (__builtin_mul_overflow(seconds, ticksPerSecond, &ticks) ||
        __builtin_add_overflow(to.time_since_epoch().count(), ticks, &sum))
        return std::nullopt;
    return Instant(Instant::duration(sum));
}

std::optional<Instant> Calendar::startOfDay(Instant instant) const { return timeOnDay(instant, seconds(0)); }

std::optional<Instant> Calendar::timeOnDay(Instant instant, seconds timeOfDay) const {
    return askZone(zone_, [&](const date::time_zone& zone) {
        return clampedInstant(firstMoment(zone, localDay(zone, instant) + timeOfDay));
    });
}

std::optional<Instant> Calendar::midnight(std::chrono::year_month_day date) const {
    if (!date.ok()) return std::nullopt;
    const date::local_days day(std::chrono::sys_days(date).time_since_epoch());
    const auto moment = askZone(zone_, [&](const date::time_zone& zone) {
        const date::sys_seconds first = firstMoment(zone, day);
        // A country that moves across the date line skips a whole day.
        const bool isOnDay = date::floor<days>(zone.to_local(first)) == day;
        return isOnDay ? std::optional(clampedInstant(first)) : std::nullopt;
    });
    return moment ? *moment : std::nullopt;
}

std::optional<TimeZone> timeZoneForAbbreviation(std::string_view abbreviation) {
    if (abbreviation == "IST") return TimeZone{"Asia/Kolkata"};
    if (abbreviation == "UTC" || abbreviation == "GMT") return TimeZone{"UTC"};
    return std::nullopt;
}

std::optional<std::chrono::year_month_day> parseDay(std::string_view text) {
    const int year = takeNumber(text, 4, 4);
    if (year < 0 || !takeDash(text)) return std::nullopt;
    const int month = takeNumber(text, 1, 2);
    if (month < 0 || !takeDash(text)) return std::nullopt;
    const int day = takeNumber(text, 1, 2);
    if (day < 0 || !text.empty()) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    return date.ok() ? std::optional(date) : std::nullopt;
}

bool isTimeZone(const std::string& identifier) {
    // Files in lower case are lists and rules; "Factory" means that nobody has chosen a zone yet.
    const bool isName = !identifier.empty() && identifier.front() >= 'A' && identifier.front() <= 'Z';
    if (!isName || identifier == "Factory") return false;
    // Another path to the same file is not another name of the zone.
    for (const char* detour : {"//", "/."}) {
        if (identifier.find(detour) != std::string::npos) return false;
    }
    struct stat file = {};
    return stat((std::string(zoneFolder) + identifier).c_str(), &file) == 0 && S_ISREG(file.st_mode);
}

TimeZone systemTimeZone() {
    std::error_code error;
    for (const std::string& identifier :
         {identifierIn(environmentVariable("TZ")),
          identifierIn(std::filesystem::read_symlink("/etc/localtime", error).string())}) {
        if (isTimeZone(identifier)) return {identifier};
    }
    return {};
}

Locale systemLocale() {
    for (const char* name : {"LC_ALL", "LANG"}) {
        const std::string value = environmentVariable(name);
        if (value.empty()) continue;
        const std::string identifier = value.substr(0, value.find_first_of(".@"));
        if (identifier.empty() || identifier == "C" || identifier == "POSIX") return {};
        return {identifier};
    }
    return {};
}

}  // namespace platform
