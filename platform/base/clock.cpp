#include "platform/base/clock.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include "platform/base/ascii.h"

namespace platform {
namespace {

using std::chrono::floor;
using std::chrono::milliseconds;

/// Whether `text` looks like `shape`, where "0" stands for any decimal digit.
bool hasShape(std::string_view text, std::string_view shape) {
    return std::ranges::equal(text, shape, [](char character, char expected) {
        return expected == '0' ? character >= '0' && character <= '9' : character == expected;
    });
}

}  // namespace

std::string formatInstant(Instant instant) {
    const auto moment = floor<milliseconds>(instant);
    const auto day = floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(moment - day);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                  static_cast<int>(time.subseconds().count()));
    return text.data();
}

std::optional<Instant> parseInstant(std::string_view text) {
    if (!hasShape(text.substr(0, 19), "0000-00-00T00:00:00")) return std::nullopt;
    const auto number = [](std::string_view digits) { return *parsedNumber<int>(digits); };
    std::string_view rest = text.substr(19);

    std::string nanoseconds(9, '0');
    if (rest.starts_with('.')) {
        const std::string_view fraction = rest.substr(1, rest.find_first_not_of("0123456789", 1) - 1);
        if (fraction.empty()) return std::nullopt;
        fraction.copy(nanoseconds.data(), nanoseconds.size());
        rest.remove_prefix(1 + fraction.size());
    }

    std::chrono::minutes offset{0};
    if (rest != "Z") {
        if (!hasShape(rest, "+00:00") && !hasShape(rest, "-00:00")) return std::nullopt;
        const int hours = number(rest.substr(1, 2));
        const int minutes = number(rest.substr(4));
        if (hours > 23 || minutes > 59) return std::nullopt;
        offset = std::chrono::minutes((rest[0] == '-' ? -1 : 1) * (hours * 60 + minutes));
    }

    const int year = number(text.substr(0, 4));
    const std::chrono::year_month_day date{
        std::chrono::year(year), std::chrono::month(static_cast<unsigned>(number(text.substr(5, 2)))),
        std::chrono::day(static_cast<unsigned>(number(text.substr(8, 2))))};
    const int hour = number(text.substr(11, 2));
    const int minute = number(text.substr(14, 2));
    const int second = number(text.substr(17, 2));
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    // The clock counts nanoseconds in 64 bits: from the year 1677 to 2262.
    if (year < 1700 || year > 2200) return std::nullopt;
    return Instant(std::chrono::sys_days(date).time_since_epoch() + std::chrono::hours(hour) +
                   std::chrono::minutes(minute) + std::chrono::seconds(second) +
                   std::chrono::nanoseconds(number(nanoseconds)) - offset);
}

Instant Clock::now() const {
    const std::lock_guard lock(mutex_);
    if (!setting_) return std::chrono::system_clock::now();
    const std::chrono::duration<double, std::nano> passed =
        std::chrono::steady_clock::now() - setting_->since;
    return setting_->instant +
           std::chrono::nanoseconds(static_cast<std::int64_t>(passed.count() * setting_->rate));
}

void Clock::set(Instant instant, double rate) {
    const std::lock_guard lock(mutex_);
    setting_ = Setting{instant, std::chrono::steady_clock::now(), rate};
}

void Clock::followSystem() {
    const std::lock_guard lock(mutex_);
    setting_.reset();
}

}  // namespace platform
