#include "extension/theme/hex_codec.h"

#include <gtest/gtest.h>
#include <string>
#include "tests/support/expected_text.h"

namespace extension {
namespace {

using platform::Color;

TEST(HexCodec, ReadsSixDigitsAndTakesEverythingElseForGray) {
    const auto answer = [](const std::string& text) {
        const Color color = colorFromHexString(text);
        return color == Color::gray() ? "gray" : hexString(color);
    };
    EXPECT_TRUE(tests::answersAsExpected("extension/hex_texts.txt", answer));
    EXPECT_EQ(answer("\t2dC300 \r\n"), "#2DC300");
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
