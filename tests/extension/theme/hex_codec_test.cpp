#include "extension/theme/hex_codec.h"

#include <gtest/gtest.h>

namespace extension {
namespace {

using platform::Color;

TEST(HexCodec, ReadsSixDigitsAndTakesEverythingElseForGray) {
    const Color green = Color::rgb(0x2d / 255.0, 0xc3 / 255.0, 0.0);
    const struct {
        const char* text;
        Color color;
    } cases[] = {
        {"#2dc300", green},
        {"2DC300", green},
        {"  #2dc300\n", green},
        {"\u00A0#2dc300\u2028 ", green},
        {"\t2dC300 \r\n", green},
        {"#FFF", Color::gray()},
        {"#FF9D00AA", Color::gray()},
        {"", Color::gray()},
        {"#", Color::gray()},
        {"# 2dc30", Color::rgb(0.0, 0.0, 0.0)},
        // Only one sign is taken away.
        {"##2dc300", Color::gray()},
        {"##2dc30", Color::rgb(0.0, 0.0, 0.0)},
        // Digits count up to the first character that is not one.
        {"12G456", Color::rgb(0.0, 0.0, 0x12 / 255.0)},
        {"G12456", Color::rgb(0.0, 0.0, 0.0)},
        {"-12345", Color::rgb(0.0, 0.0, 0.0)},
        {"0x1234", Color::rgb(0.0, 0.0, 0.0)},
        {"1234é6", Color::rgb(0.0, 0x12 / 255.0, 0x34 / 255.0)},
        // In upper case these are six characters, and seven.
        {"1234ß", Color::rgb(0.0, 0x12 / 255.0, 0x34 / 255.0)},
        {"12345ß", Color::gray()},
    };
    for (const auto& [text, color] : cases) EXPECT_EQ(colorFromHexString(text), color) << text;
    EXPECT_EQ(colorFromHexString(std::nullopt), Color::gray());
}

TEST(HexCodec, TheAlphaIsTheCallersAndGrayStaysOpaque) {
    EXPECT_EQ(colorFromHexStringAndOpacity("#FF0000", 0.25), Color::rgb(1.0, 0.0, 0.0, 0.25));
    EXPECT_EQ(colorFromHexStringAndOpacity("#FF00", 0.25), Color::gray());
    EXPECT_EQ(colorFromHexStringAndOpacity(std::nullopt, 0.25), Color::gray());
}

TEST(HexCodec, WritesRoundedUpperCaseDigitsWithoutAlpha) {
    EXPECT_EQ(hexString(Color::rgb(0.5, 0.0, 1.0)), "#8000FF");
    EXPECT_EQ(hexString(Color::rgb(0.212, 0.59, 0.08, 0.1)), "#369614");
    EXPECT_EQ(hexString(Color::rgb(1.0, 1.0, 1.0)), "#FFFFFF");
    // A colour without components is told apart by its letters.
    EXPECT_EQ(hexString(Color()), "#ffffff");
    // A wide colour does not fit into two digits.
    EXPECT_EQ(hexString(Color::rgb(2.0, 0.0, 0.0)), "#1FE0000");
}

TEST(HexCodec, EveryColourOfEightBitsSurvivesBothWays) {
    for (int step = 0; step < 256; ++step) {
        const Color color = Color::rgb(step / 255.0, (255 - step) / 255.0, (step ^ 0x5A) / 255.0);
        EXPECT_EQ(colorFromHexString(hexString(color)), color) << step;
    }
}

TEST(HexCodecDeathTest, AGrayScaleColourHasNoHexText) {
    EXPECT_DEATH(hexString(Color::gray()), "fatal error: ");
}

}  // namespace
}  // namespace extension
