#include "platform/text/number_formatter.h"

#include <gtest/gtest.h>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace platform {
namespace {

std::string written(double value, const char* locale) {
    return NumberFormatter(Locale{locale}).twoDecimals(value);
}

TEST(NumberFormatter, TiesGoToTheEvenDigitOfTheShortestDecimalText) {
    const NumberFormatter formatter(Locale{"en_US"});
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {8.345, "8.34"},       {2.675, "2.68"}, {0.125, "0.12"},   {0.135, "0.14"},
        {1.005, "1.00"},       {1.015, "1.02"}, {-8.345, "-8.34"}, {-2.675, "-2.68"},
        {999.995, "1,000.00"}, {0.005, "0.00"}, {0.0051, "0.01"},  {8.3450000001, "8.35"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(formatter.twoDecimals(value), text);
}

TEST(NumberFormatter, GroupsAsTheLocaleDoesAndWritesEverythingElseAlike) {
    const struct {
        const char* locale;
        double value;
        const char* text;
    } cases[] = {
        {"en_US", 1234567.891, "1,234,567.89"},
        {"en_IN", 1234567.891, "12,34,567.89"},
        {"hi_IN", 1234567.891, "12,34,567.89"},
        // Devanagari and Arabic digits, commas for points, four digits without a separator.
        {"mr_IN", 1234567.891, "12,34,567.89"},
        {"mr_IN@numbers=deva", 1234567.891, "12,34,567.89"},
        {"ar_EG", 1234567.891, "1,234,567.89"},
        {"de_DE", 1234567.891, "1,234,567.89"},
        {"es_ES", 1234.5, "1,234.50"},
        {"pl_PL", 1234.5, "1,234.50"},
        {"sv_SE", -12.5, "-12.50"},
        {"he_IL", -12.5, "-12.50"},
        {"fa_IR", -12.5, "-12.50"},
        // Nobody's language is written as it is where we come from.
        {"xx_YY", 1234567.891, "1,234,567.89"},
        {"", 1234567.891, "1,234,567.89"},
    };
    for (const auto& [locale, value, text] : cases) EXPECT_EQ(written(value, locale), text) << locale;
}

TEST(NumberFormatter, KeepsTheSignOfWhatRoundsToZeroFromBelow) {
    const NumberFormatter formatter(Locale{"en_IN"});
    EXPECT_EQ(formatter.twoDecimals(-0.0), "-0.00");
    EXPECT_EQ(formatter.twoDecimals(-0.001), "-0.00");
    EXPECT_EQ(formatter.twoDecimals(0.0), "0.00");
    EXPECT_EQ(formatter.twoDecimals(std::numeric_limits<double>::denorm_min()), "0.00");
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

TEST(ParseDecimal, TakesWholeDecimalNumbersOnly) {
    const struct {
        const char* text;
        double value;
    } numbers[] = {
        {"-12.5", -12.5},
        {"+5", 5.0},
        {"1e3", 1000.0},
        {"1E+3", 1000.0},
        {".5", 0.5},
        {"5.", 5.0},
        {"007", 7.0},
        {"2.5e-1", 0.25},
        {"1.7976931348623157e308", std::numeric_limits<double>::max()},
        {"4.9e-324", std::numeric_limits<double>::denorm_min()},
    };
    for (const auto& [text, expected] : numbers) {
        double value = -1.0;
        EXPECT_TRUE(parseDecimal(text, value)) << text;
        EXPECT_EQ(value, expected) << text;
    }

    for (const char* text : {"",         " 1",  "1 ",     "1\n", "1,000", "12a",   "0x10", "inf", "-inf",
                             "infinity", "nan", "nan(1)", "+-5", "-+5",   "++5",   "--5",  "+",   "-",
                             ".",        "e5",  "1e",     "1e+", "1.2.3", "1e5.5", "١٢"}) {
        double value = -1.0;
        EXPECT_FALSE(parseDecimal(text, value)) << text;
        EXPECT_EQ(value, -1.0) << text;
    }
}

TEST(ParseDecimal, OverflowIsNoNumberAndUnderflowIsZeroWithItsSign) {
    const std::string zeros(400, '0');
    for (const std::string& text :
         {std::string("1e400"), std::string("-1e400"), "1" + zeros, "1" + zeros + ".5",
          std::string("0.01e999"), std::string("1e9223372036854775807"),
          std::string("1e99999999999999999999")}) {
        double value = -1.0;
        EXPECT_FALSE(parseDecimal(text, value)) << text;
    }
    for (const std::string& text :
         {std::string("1e-400"), "0." + zeros + "1", "." + zeros + "7", std::string("1000e-999"),
          std::string("1e-99999999999999999999"), std::string("0.01e-9223372036854775808"),
          std::string("0e400"), std::string("0e99999999999999999999")}) {
        double value = -1.0;
        EXPECT_TRUE(parseDecimal(text, value)) << text;
        EXPECT_EQ(value, 0.0) << text;
        EXPECT_FALSE(std::signbit(value)) << text;
    }
    double value = 1.0;
    EXPECT_TRUE(parseDecimal("-1e-400", value));
    EXPECT_TRUE(std::signbit(value));
    EXPECT_TRUE(parseDecimal("-0", value));
    EXPECT_TRUE(std::signbit(value));
    // A long row of zeros before the point does not count.
    EXPECT_TRUE(parseDecimal(zeros + "1.5", value));
    EXPECT_EQ(value, 1.5);
}

}  // namespace
}  // namespace platform
