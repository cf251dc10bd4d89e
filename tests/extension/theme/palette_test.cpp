#include "extension/theme/theme.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <string>
#include "extension/theme/hex_codec.h"
#include "tests/support/expected_text.h"

namespace extension {
namespace {

using platform::Bytes;
using platform::Color;
using platform::PropertyList;

const PaletteColor& named(std::string_view name) {
    for (const PaletteColor& color : palette()) {
        if (color.name == name) return color;
    }
    throw std::runtime_error("no colour " + std::string(name));
}

/// The contrast of two opaque colours by their relative luminance, from 1 to 21.
double contrast(const Color& a, const Color& b) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](const Color& color) {
        return 0.2126 * linear(color.red()) + 0.7152 * linear(color.green()) + 0.0722 * linear(color.blue());
    };
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

TEST(Palette, Has211ColoursThatAllHaveAValueInBothThemes) {
    EXPECT_EQ(palette().size(), 211U);
    std::set<std::string_view> names;
    for (const auto& [name, dark, light] : palette()) {
        EXPECT_TRUE(names.insert(name).second) << name;
        // A hex text with a slip would be gray, which has two components.
        EXPECT_EQ(dark.components().size(), 4U) << name;
        EXPECT_EQ(light.components().size(), 4U) << name;
    }
}

// The names are keys of the store, and the first six values are given.
TEST(Palette, BeginsWithTheNamesAndValuesThatOthersKnow) {
    const char* const beginnings[] = {
        "textColor #FFFFFF #000000",
        "secondaryTextColor #B4B4B4 #000000",
        "backgroundColor #1A1A22 #FFFFFF",
        "secondaryBackgroundColor #000000 #FAFAFA",
        "positiveDirectionColor #2DC300 #369614",
        "negativeDirectionColor #FF3100 #D13B47",
        "buttonBackgroundColor ",
        "secondaryButtonBackgroundColor ",
        "uiControlBackgroundColor ",
        "uiControlPrimaryBackgroundColor ",
        "uiControlUnselectedBackgroundColor ",
        "uiControlTextColor ",
    };
    auto color = palette().begin();
    for (const char* beginning : beginnings) {
        EXPECT_THAT(std::string(color->name) + " " + hexString(color->dark) + " " + hexString(color->light),
                    testing::StartsWith(beginning));
        ++color;
    }
}

TEST(Palette, TextsAreLegibleOnWhatTheyStandOn) {
    EXPECT_TRUE(tests::answersAsExpected("extension/legible_colors.txt", [](const std::string& pair) {
        const PaletteColor& text = named(pair.substr(0, pair.find(' ')));
        const PaletteColor& ground = named(pair.substr(pair.rfind(' ') + 1));
        const double least = std::min(contrast(text.dark, ground.dark), contrast(text.light, ground.light));
        return least >= 4.5 ? "legible" : "too faint";
    }));
}

TEST(ColorRecord, KeepsEveryBitAndTheNumberOfComponents) {
    for (const Color& color :
         {Color::rgb(0.212, 1.0 / 3.0, std::nextafter(0.5, 1.0), 0.1), Color::rgb(-0.0, 2.0, 1e-300),
          Color::gray(), Color::white(0.1, 0.7), Color()}) {
        const auto decoded = decodedColor(encodedColor(color));
        ASSERT_TRUE(decoded);
        EXPECT_EQ(*decoded, color);
        EXPECT_EQ(decoded->components().size(), color.components().size());
    }
}

TEST(ColorRecord, IsNothingWhenItIsNotARecord) {
    const std::string gray(encodedColor(Color::gray()).data()->view());
    const std::string notANumber(encodedColor(Color::white(std::nan(""), 1.0)).data()->view());
    const struct {
        const char* name;
        std::optional<PropertyList> value;
    } cases[] = {
        {"absent", std::nullopt},
        {"a text", PropertyList("#FFFFFF")},
        {"a number", PropertyList(0.5)},
        {"one component", PropertyList(Bytes(gray.substr(0, 8)))},
        {"three components", PropertyList(Bytes(gray + gray.substr(0, 8)))},
        {"six components", PropertyList(Bytes(gray + gray + gray))},
        {"a byte short", PropertyList(Bytes(gray.substr(1)))},
        {"not a number", PropertyList(Bytes(notANumber))},
    };
    for (const auto& [name, value] : cases) EXPECT_FALSE(decodedColor(value)) << name;
}

}  // namespace
}  // namespace extension
