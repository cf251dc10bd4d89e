#include <gtest/gtest.h>

#include <string>
#include "platform/settings/property_list.h"
#include "platform/settings/user_defaults.h"
#include "tests/support/expected_text.h"

namespace platform {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;

TEST(CoercedValues, AreWhatThePlatformsTypedGettersGive) {
    EXPECT_TRUE(tests::answersAsExpected("platform/coercions.txt", [](const std::string& xml) {
        const auto value = parsePropertyList("<plist>" + xml + "</plist>");
        if (!value) return value.error().message;
        return std::to_string(coercedInteger(*value)) + ", " + (coercedBool(*value) ? "true" : "false");
    }));
    EXPECT_EQ(coercedInteger(std::nullopt), 0);
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
