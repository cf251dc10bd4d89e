#include "platform/base/clock.h"

#include <array>
#include <cstdio>

namespace platform {
namespace {

using std::chrono::floor;
using std::chrono::milliseconds;

/// Reads exactly `count` decimal digits at `position` and moves past them; -1 when they are not there.
int readDigits(std::string_view text, std::size_t& position, std::size_t count) {
    int value = 0;
    for (std::size_t end = position + count; position < end; ++position) {
        if (position >= text.size() || text[position] < '0' || text[position] > '9') return -1;
        value = value * 10 + (text[position] - '0');
    }
    return value;
}

bool readSign(std::string_view text, std::size_t& position, char sign) {
    if (position >= text.size() || text[position] != sign) return false;
    ++position;
    return true;
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
    std::size_t at = 0;
    const int year = readDigits(text, at, 4);
    if (year < 0 || !readSign(text, at, '-')) return std::nullopt;
    const int month = readDigits(text, at, 2);
    if (month < 0 || !readSign(text, at, '-')) return std::nullopt;
    const int day = readDigits(text, at, 2);
    if (day < 0 || !readSign(text, at, 'T')) return std::nullopt;
    const int hour = readDigits(text, at, 2);
    if (hour < 0 || hour > 23 || !readSign(text, at, ':')) return std::nullopt;
    const int minute = readDigits(text, at, 2);
    if (minute < 0 || minute > 59 || !readSign(text, at, ':')) return std::nullopt;
    const int second = readDigits(text, at, 2);
    if (second < 0 || second > 59) return std::nullopt;

    std::chrono::nanoseconds fraction{0};
    if (readSign(text, at, '.')) {
        const std::size_t first = at;
        std::int64_t unit = 100'000'000;
        for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, unit /= 10) {
            fraction += std::chrono::nanoseconds((text[at] - '0') * unit);
        }
        if (at == first) return std::nullopt;
    }

    std::chrono::minutes offset{0};
    if (!readSign(text, at, 'Z')) {
        const bool isEast = readSign(text, at, '+');
        if (!isEast && !readSign(text, at, '-')) return std::nullopt;
        const int hours = readDigits(text, at, 2);
        if (hours < 0 || hours > 23 || !readSign(text, at, ':')) return std::nullopt;
        const int minutes = readDigits(text, at, 2);
        if (minutes < 0 || minutes > 59) return std::nullopt;
        offset = std::chrono::minutes((isEast ? 1 : -1) * (hours * 60 + minutes));
    }
    if (at != text.size()) return std::nullopt;

    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    // The clock counts nanoseconds in 64 bits: from the year 1677 to 2262.
    if (!date.ok() || year < 1700 || year > 2200) return std::nullopt;
    return Instant(std::chrono::sys_days(date).time_since_epoch() + std::chrono::hours(hour) +
                   std::chrono::minutes(minute) + std::chrono::seconds(second) + fraction - offset);
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
