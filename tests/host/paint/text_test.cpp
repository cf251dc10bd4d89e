#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include "tests/host/paint/paint_samples.h"
#include "tests/support/expected_text.h"

namespace host {
namespace {

using platform::Font;
using platform::FontWeight;
using platform::TextRun;

class PaintText : public testing::Test {
protected:
    TextMeasure measure(const std::vector<TextRun>& runs, std::optional<int> lineLimit = std::nullopt,
                        std::optional<double> width = std::nullopt,
                        std::optional<double> height = std::nullopt, int scale = 3) {
        return painter->measurer(scale).text(runs, lineLimit, width, height);
    }
    double widthOf(const std::string& text) { return measure({run(text)}).size.width; }

    std::unique_ptr<Painter> painter = makePainter();
};

/// "49.3x14.3 baselines 11.43,11.43 lines 1", to a hundredth of a point.
std::string measureText(const TextMeasure& measure) {
    std::array<char, 100> text{};
    std::snprintf(text.data(), text.size(), "%.2fx%.2f baselines %.2f,%.2f lines %d", measure.size.width,
                  measure.size.height, measure.firstBaseline, measure.lastBaseline, measure.lines);
    return text.data();
}

// Among the expected: a line is as high as the platform's, rounded up to a pixel, once for all lines and not
// line by line (12 points: 14.32, twice 28.64); letters of the system font are spaced by its size, those of
// named fonts are not.
TEST_F(PaintText, HasTheExpectedMeasures) {
    std::string text;
    for (const double size : {4.0, 8.0, 9.0, 10.0, 11.0, 12.0, 12.5, 13.0, 14.0, 15.0, 16.0, 17.0, 40.0}) {
        for (const Font& font :
             {Font::system(size), Font::system(size, FontWeight::medium),
              Font::system(size, FontWeight::bold), Font::custom("SFCompactDisplay-Regular", size),
              Font::custom("SFCompactDisplay-Medium", size), Font::custom("No such font", size)}) {
            const std::vector runs{run("Nifty minimum", font)};
            text += font.name + " " + testing::PrintToString(size) + " " +
                    testing::PrintToString(static_cast<int>(font.weight)) + ": " +
                    measureText(measure(runs)) + "; at scale 2 " + measureText(measure(runs, {}, {}, {}, 2)) +
                    "\n";
        }
    }
    const std::vector<TextRun> texts[] = {
        {run("one two three four five six seven eight nine ten eleven twelve")},
        {run("Supercalifragilistic")},
        {run("12", Font::system(17)), run(" small\nand smaller", Font::system(9))},
        {inlineImage("Live"), run("Live")},
        {inlineImage("AppLogo"), run("Live")},
        {inlineImage("NoSuchAsset"), run("Live")},
        {run("a\r\nb\rc\n\nd\u2028e\u2029f\n")},
        {run("")},
        {run("\n")},
        {},
    };
    struct Room {
        const char* name;
        std::optional<int> limit;
        std::optional<double> width, height;
    };
    for (const auto& runs : texts) {
        text += "\n" + (runs.empty() ? "" : testing::PrintToString(runs.back().text)) + "\n";
        for (const auto& [name, limit, width, height] : {Room{"free", {}, {}, {}},
                                                         {"width infinite", {}, platform::infinity, {}},
                                                         {"width 70", {}, 70, {}},
                                                         {"width 70, limit 0", 0, 70, {}},
                                                         {"width 70, limit 2", 2, 70, {}},
                                                         {"width 70, limit 100", 100, 70, {}},
                                                         {"width 70, height 0", {}, 70, 0},
                                                         {"width 70, height 28.5", {}, 70, 28.5},
                                                         {"width 70, height 28.65", {}, 70, 28.65},
                                                         {"width 70, height 43, limit 2", 2, 70, 43},
                                                         {"width 70, height 43, limit 4", 4, 70, 43},
                                                         {"width 70, height 1000", {}, 70, 1000}})
            text += std::string(name) + ": " + measureText(measure(runs, limit, width, height)) + "\n";
    }
    EXPECT_TRUE(tests::isAsExpected("paint/texts.txt", text));
}

TEST_F(PaintText, TheBoxThatHoldsATextRoundedToPixelsHoldsItAgain) {
    for (const double size : {8.0, 11.0, 12.0, 13.0, 16.0}) {
        const std::vector sized{run("one two three four five six seven eight nine ten", Font::system(size))};
        const TextMeasure whole = measure(sized, std::nullopt, 70);
        EXPECT_EQ(measure(sized, std::nullopt, 70, whole.size.height).lines, whole.lines) << size;
    }
}

TEST_F(PaintText, AWordThatIsTooLongIsBrokenInsideWithoutAHyphen) {
    const std::string word = "Supercalifragilistic";
    const double width = widthOf(word) * 0.6;
    const TextMeasure broken = measure({run(word)}, std::nullopt, width);
    EXPECT_EQ(broken.lines, 2);
    DisplayList withBreak = emptyList(120, 40);
    addText(withBreak, *painter, {run(word)}, 0, 0, std::nullopt, width);
    // The same with the break written out shows whether anything was added at it.
    bool isSame = false;
    for (std::size_t place = 1; place < word.size(); ++place) {
        DisplayList written = emptyList(120, 40);
        addText(written, *painter, {run(word.substr(0, place) + "\n" + word.substr(place))}, 0, 0);
        isSame = isSame || painter->png(withBreak, 2) == painter->png(written, 2);
    }
    EXPECT_TRUE(isSame);
}

TEST_F(PaintText, ATextThatIsCutEndsInAnEllipsis) {
    const auto picture = [&](const std::string& text, std::optional<int> limit, std::optional<double> width) {
        DisplayList list = emptyList(140, 50);
        addText(list, *painter, {run(text)}, 0, 0, limit, width);
        return painter->png(list, 2).value();
    };
    // The cut is where the next letter would not fit, within a word or after one.
    EXPECT_EQ(picture("alpha beta gamma", 1, widthOf("alpha be\u2026") + 1),
              picture("alpha be\u2026", 1, std::nullopt));
    EXPECT_EQ(picture("cut\nhere", 1, std::nullopt), picture("cut\u2026", 1, std::nullopt));
    EXPECT_EQ(picture("a\nb\nc", 2, std::nullopt), picture("a\nb\u2026", std::nullopt, std::nullopt));
    EXPECT_EQ(picture("whole", 1, std::nullopt), picture("whole", std::nullopt, std::nullopt));
    EXPECT_NE(picture("whole", 1, std::nullopt), picture("whole\u2026", 1, std::nullopt));
}

// A text is drawn in the box that was measured for it, so breaking it there must give the same lines.
TEST_F(PaintText, ATextSetInItsOwnBoxHasTheSameLines) {
    const std::vector text{
        run("\u20B9", Font::custom("SFCompactDisplay-Regular", 12)),
        run("12,34,567.89 crore of shares changed hands ", Font::system(14, FontWeight::bold)),
        run("supercalifragilistic day \U0001F600 \u0928\u092F\u093E \u0936\u093F\u0916\u0930")};
    for (const int scale : {1, 2, 3}) {
        for (int step = 0; step < 120; ++step) {
            const double width = 20 + 3.37 * step;
            for (const std::optional<int> limit : {std::optional<int>{}, std::optional<int>{2}}) {
                const TextMeasure first = measure(text, limit, width, std::nullopt, scale);
                const TextMeasure again = measure(text, first.lines, first.size.width, std::nullopt, scale);
                EXPECT_EQ(again.size, first.size) << width << " at " << scale;
                EXPECT_EQ(again.lines, first.lines) << width << " at " << scale;
            }
        }
    }
}

TEST_F(PaintText, EmojiAreInColourAndAsLargeAsTheLettersBesideThem) {
    const double width = widthOf("\U0001F600");
    EXPECT_GT(width, 10);
    EXPECT_LT(width, 18);
    DisplayList list = emptyList(24, 20);
    addText(list, *painter, {run("\U0001F600")}, 2, 2);
    const Pixels pixels(painter->png(list, 3).value());
    int yellow = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            const std::uint32_t pixel = pixels.at(x, y);
            if (Pixels::part(pixel, 16) > 200 && Pixels::part(pixel, 8) > 150 && Pixels::part(pixel, 0) < 120)
                ++yellow;
        }
    }
    EXPECT_GT(yellow, 300);
}

TEST_F(PaintText, RupeeSignAndDevanagariHaveGlyphs) {
    const auto ink = [&](const std::string& text) {
        DisplayList list = emptyList(30, 20);
        addText(list, *painter, {run(text)}, 2, 2);
        return painter->png(list, 2).value();
    };
    // A character that none of our fonts has is drawn as a box with its number, such as U+0B95.
    EXPECT_NE(ink("\u20B9"), ink("\u0B95"));
    EXPECT_LT(widthOf("\u20B9"), 9);
    EXPECT_GT(widthOf("\u0B95"), 9);
    // Joined letters take less room than the same ones kept apart.
    EXPECT_LT(widthOf("\u0915\u094D\u0937"), widthOf("\u0915\u094D\u200C\u0937"));
    EXPECT_LT(widthOf("\u0928\u092F\u093E"), 3 * 12);
}

TEST_F(PaintText, TakesAnyTextAndAnyNumber) {
    const double nothing = std::numeric_limits<double>::quiet_NaN();
    for (const std::string& text :
         {std::string("a\0b", 3), std::string("\xFF\xFE\xC3"), std::string(1'000'000, 'x'),
          std::string("\t\v\f\x1B\u202E\u200F"), std::string(5000, '\n')}) {
        for (const double size : {12.0, 0.0, -5.0, 1e300, nothing, platform::infinity}) {
            for (const std::optional<double> width :
                 {std::optional<double>{}, std::optional<double>{0}, std::optional<double>{-3},
                  std::optional<double>{1e300}, std::optional<double>{nothing}}) {
                const TextMeasure answer = measure({run(text, Font::system(size))}, 2, width, nothing);
                EXPECT_TRUE(std::isfinite(answer.size.width) && std::isfinite(answer.size.height));
                EXPECT_GE(answer.lines, 1);
                EXPECT_LE(answer.lines, 2);
            }
        }
    }
}

}  // namespace
}  // namespace host
