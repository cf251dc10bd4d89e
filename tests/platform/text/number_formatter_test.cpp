#include "platform/text/number_formatter.h"

#include <gtest/gtest.h>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <thread>
#include <vector>
#include "tests/support/expected_text.h"

namespace platform {
namespace {

TEST(NumberFormatter, GroupsAsTheLocaleDoesAndRoundsTheShortestTextWithTiesToEven) {
    EXPECT_TRUE(tests::answersAsExpected("platform/two_decimals.txt", [](const std::string& input) {
        const std::size_t blank = input.find(' ');
        return NumberFormatter(Locale{input.substr(0, blank)}).twoDecimals(std::stod(input.substr(blank)));
    }));
}

TEST(NumberFormatter, WritesTheLargestNumberWholeAndNothingForWhatIsNotFinite) {
    const NumberFormatter formatter(Locale{"en_IN"});
    const std::string largest = formatter.twoDecimals(std::numeric_limits<double>::max());
    // The Indian grouping: three digits, then by twos.
    EXPECT_EQ(largest.size(), 309U + 153U + 3U);
    EXPECT_EQ(largest.substr(0, 12), "17,97,69,31,");
    EXPECT_EQ(formatter.twoDecimals(std::numeric_limits<double>::infinity()), "");
    EXPECT_EQ(formatter.twoDecimals(std::nan("")), "");
}

TEST(NumberFormatter, OneFormatterServesSeveralThreads) {
    const NumberFormatter formatter(Locale{"en_IN"});
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&formatter] {
            for (int i = 0; i < 2000; ++i) ASSERT_EQ(formatter.twoDecimals(1234567.891), "12,34,567.89");
        });
    }
    for (std::thread& thread : threads) thread.join();
}

/// So that two numbers have the same text only when they are the same.
std::string formattedExactly(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

TEST(ParseDecimal, TakesWholeDecimalNumbersOnly) {
    const auto answer = [](const std::string& text) {
        double value = -1.0;
        if (parseDecimal(text, value)) return formattedExactly(value);
        EXPECT_EQ(value, -1.0) << text;
        return std::string("not a number");
    };
    EXPECT_TRUE(tests::answersAsExpected("platform/decimals.txt", answer));
    const std::string zeros(400, '0');
    for (const auto& [text, value] : {std::pair<std::string, std::string>{"1" + zeros, "not a number"},
                                      {"1" + zeros + ".5", "not a number"},
                                      {"0." + zeros + "1", "0"},
                                      {"." + zeros + "7", "0"},
                                      {zeros + "1.5", "1.5"},
                                      {"1\n", "not a number"}})
        EXPECT_EQ(answer(text), value) << text;
}

}  // namespace
}  // namespace platform
