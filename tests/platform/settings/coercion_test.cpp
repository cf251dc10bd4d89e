#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>
#include "platform/settings/user_defaults.h"

namespace platform {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;

TEST(ACoercedInteger, IsTheLeadingNumberOfAText) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    const std::vector<std::pair<PropertyList, std::int64_t>> cases{
        {"123", 123},
        {"12abc", 12},
        {"abc", 0},
        {" \n7", 7},
        {"-3", -3},
        {"+3", 3},
        {"+-3", 0},
        {"-+3", 0},
        {"--3", 0},
        {"", 0},
        {"0x10", 0},
        {"2.9", 2},
        {2.67, 2},
        {-2.67, -2},
        {1e300, largest},
        {-1e300, smallest},
        {std::nan(""), 0},
        {true, 1},
        {false, 0},
        {Array{1}, 0},
        {Bytes("12"), 0},
        {Instant(), 0},
        {"99999999999999999999", largest},
        {"-99999999999999999999", smallest},
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(coercedInteger(cases[i].first), cases[i].second) << i;
    EXPECT_EQ(coercedInteger(std::nullopt), 0);
}

TEST(ACoercedBool, IsTrueForYesTrueAndNumbersOtherThanZero) {
    const std::vector<std::pair<PropertyList, bool>> cases{
        {"YES", true},     {"true", true},      {"yellow", true},      {" T", true},      {"1", true},
        {"+000009", true}, {"-1", true},        {"no", false},         {"-00000", false}, {"0t", false},
        {"+t", false},     {"++1", false},      {"", false},           {"0", false},      {1, true},
        {0, false},        {-1, true},          {0.5, true},           {0.0, false},      {true, true},
        {Array{1}, false}, {Bytes("1"), false}, {Dictionary{}, false},
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(coercedBool(cases[i].first), cases[i].second) << i;
    EXPECT_FALSE(coercedBool(std::nullopt));
}

TEST(AnArrayOfDictionaries, IsNothingWithOneElementOfAnotherType) {
    EXPECT_EQ(arrayOfDictionaries(Array{Dictionary{{"id", 1}}, Dictionary{}})->size(), 2U);
    EXPECT_EQ(arrayOfDictionaries(Array{})->size(), 0U);
    EXPECT_FALSE(arrayOfDictionaries(Array{Dictionary{}, "text"}));
    EXPECT_FALSE(arrayOfDictionaries(Dictionary{}));
    EXPECT_FALSE(arrayOfDictionaries(std::nullopt));
}

}  // namespace
}  // namespace platform
