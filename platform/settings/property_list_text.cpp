#include "platform/base/ascii.h"
#include "platform/settings/property_list_formats.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

namespace platform::property_list {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr seconds referenceDate{978'307'200};

Instant instantFrom(double wholeSeconds, nanoseconds fraction) {
    constexpr double limit = 9'223'372'035.0;  // seconds either side of 1970 that fit 64 bits of nanoseconds
    if (!(wholeSeconds > -limit)) return Instant::min();
    if (wholeSeconds > limit) return Instant::max();
    return Instant(seconds(static_cast<std::int64_t>(wholeSeconds)) + fraction);
}

}  // namespace

std::string realText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
    std::array<char, 400> buffer{};
    const double magnitude = std::fabs(value);
    const bool isPlain = magnitude == 0.0 || (magnitude >= 1e-5 && magnitude < 1e17);
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    return {buffer.data(), std::to_chars(buffer.begin(), buffer.end(), value, format).ptr};
}

Instant instantFromReferenceDate(double secondsSince) {
    const double whole = std::floor(secondsSince);
    const auto fraction = static_cast<std::int64_t>(std::llround((secondsSince - whole) * 1e9));
    return instantFrom(whole + static_cast<double>(referenceDate.count()), nanoseconds(fraction));
}

double secondsSinceReferenceDate(Instant instant) {
    // Not floor(): whole seconds before the first instant are none.
    const auto whole = std::chrono::duration_cast<seconds>(instant.time_since_epoch());
    const std::chrono::duration<double> fraction = instant.time_since_epoch() - whole;
    return static_cast<double>((whole - referenceDate).count()) + fraction.count();
}

std::string dateText(Instant instant) { return formatInstant(instant).substr(0, 19) + "Z"; }

std::optional<Instant> parseDateText(std::string_view text) {
    if (const auto instant = parseInstant(text)) return instant;
    const int year = parsedNumber<int>(text.substr(0, 4)).value_or(-1);
    if (text.size() < 4 || year < 0) return std::nullopt;
    // For a year beyond the clock's range: the same day of a year of the same length, moved by whole days.
    const int like = std::chrono::year(year).is_leap() ? 2000 : 2001;
    const auto near = parseInstant(std::to_string(like) + std::string(text.substr(4)));
    if (!near) return std::nullopt;
    const auto newYear = [](int number) {
        return std::chrono::sys_days(std::chrono::year(number) / std::chrono::January / 1);
    };
    const std::chrono::days moved = newYear(year) - newYear(like);
    const auto whole = std::chrono::floor<seconds>(near->time_since_epoch());
    return instantFrom(static_cast<double>((whole + moved).count()), near->time_since_epoch() - whole);
}

}  // namespace platform::property_list
