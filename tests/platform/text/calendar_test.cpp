#include "platform/text/calendar.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>
#include "tests/support/expected_text.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

Instant instant(std::string_view text) { return parseInstant(text).value(); }

std::string shown(const std::optional<Instant>& moment) {
    return moment ? formatInstant(*moment) : "nothing";
}

TEST(Calendar, FindsATimeOfTheLocalDay) {
    EXPECT_TRUE(tests::answersAsExpected("platform/times_of_day.txt", [](const std::string& input) {
        const auto words = tests::parts(input, ' ');
        return shown(Calendar(TimeZone{words[0]})
                         .timeOnDay(instant(words[1]), std::chrono::minutes(std::stoi(words[2]))));
    }));
}

TEST(Calendar, FindsTheMidnightAtTheStartOfADate) {
    const auto midnight = [](const char* zone, const char* date) {
        const auto day = parseDay(date);
        return shown(day ? Calendar(TimeZone{zone}).midnight(*day) : std::nullopt);
    };
    EXPECT_EQ(midnight("Asia/Kolkata", "2026-11-22"), "2026-11-21T18:30:00.000Z");
    EXPECT_EQ(midnight("Africa/Cairo", "2026-04-24"), "2026-04-23T22:00:00.000Z");
    // Samoa went from the 29th to the 31st.
    EXPECT_EQ(midnight("Pacific/Apia", "2011-12-30"), "nothing");
    EXPECT_EQ(midnight("Pacific/Apia", "2011-12-31"), "2011-12-30T10:00:00.000Z");
    // Far away is still later than now, and long ago earlier.
    EXPECT_GT(Calendar(TimeZone{"UTC"}).midnight(*parseDay("9999-12-31")), instant("2200-01-01T00:00:00Z"));
    EXPECT_LT(Calendar(TimeZone{"UTC"}).midnight(*parseDay("0001-01-01")), instant("1800-01-01T00:00:00Z"));
}

TEST(Calendar, KnowsNothingOfAZoneThatDoesNotExist) {
    for (const char* zone : {"Mars/Olympus", "", "IST", "../../etc/passwd"}) {
        const Calendar calendar(TimeZone{zone});
        const Instant now = instant("2026-11-22T03:30:00Z");
        EXPECT_FALSE(calendar.startOfDay(now)) << zone;
        EXPECT_FALSE(calendar.timeOnDay(now, 9h)) << zone;
        EXPECT_FALSE(calendar.midnight(*parseDay("2026-11-22"))) << zone;
    }
}

TEST(Calendar, AddsElapsedSecondsAndAnswersNothingBeyondTheEndOfTime) {
    const Calendar calendar(TimeZone{"America/New_York"});
    const Instant beforeTheChange = instant("2026-03-08T06:59:45.5Z");
    EXPECT_EQ(calendar.dateByAddingSeconds(30, beforeTheChange), beforeTheChange + 30s);
    EXPECT_EQ(calendar.dateByAddingSeconds(-30, beforeTheChange), beforeTheChange - 30s);
    EXPECT_FALSE(calendar.dateByAddingSeconds(30, Instant::max()));
    EXPECT_FALSE(calendar.dateByAddingSeconds(std::numeric_limits<std::int64_t>::max(), beforeTheChange));
    EXPECT_FALSE(calendar.dateByAddingSeconds(-1, Instant::min()));
}

TEST(Calendar, SeveralThreadsMayBeTheFirstToAskForAZone) {
    std::vector<std::thread> threads;
    for (const char* zone : {"Europe/Lisbon", "Europe/Lisbon", "Asia/Tokyo", "Europe/Lisbon"}) {
        threads.emplace_back(
            [zone] { EXPECT_TRUE(Calendar(TimeZone{zone}).startOfDay(instant("2026-11-22T03:30:00Z"))); });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(TimeZones, AnAbbreviationStandsForOneZone) {
    EXPECT_EQ(timeZoneForAbbreviation("IST"), TimeZone{"Asia/Kolkata"});
    EXPECT_EQ(timeZoneForAbbreviation("UTC"), TimeZone{"UTC"});
    EXPECT_EQ(timeZoneForAbbreviation("ist"), std::nullopt);
    EXPECT_EQ(timeZoneForAbbreviation(""), std::nullopt);
}

TEST(ParseDay, TakesARealDayAndNothingAroundIt) {
    EXPECT_TRUE(tests::answersAsExpected("platform/days.txt", [](const std::string& text) {
        const auto day = parseDay(text);
        return day ? shown(Calendar(TimeZone{"UTC"}).midnight(*day)).substr(0, 10) : "nothing";
    }));
}

}  // namespace
}  // namespace platform
