#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <cmath>
#include <limits>
#include "host/paint/system_font.h"
#include "tests/host/paint/paint_samples.h"

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

TEST_F(PaintText, ALineHasThePlatformsHeightRoundedUpToAPixel) {
    struct Case {
        double size, heightAt3, heightAt2, baseline;
    };
    for (const Case& expected : std::vector<Case>{{8, 29 / 3.0, 10, 7.6172},
                                                  {9, 11, 11, 8.5693},
                                                  {10, 12, 12, 9.5215},
                                                  {11, 40 / 3.0, 13.5, 10.4736},
                                                  {12, 43 / 3.0, 14.5, 11.4258},
                                                  {13, 47 / 3.0, 16, 12.3779},
                                                  {14, 17, 17, 13.3301},
                                                  {15, 18, 18, 14.2822},
                                                  {16, 58 / 3.0, 19.5, 15.2344},
                                                  {17, 61 / 3.0, 20.5, 16.1865}}) {
        for (const Font& font : {Font::system(expected.size), Font::system(expected.size, FontWeight::bold),
                                 Font::custom("SFCompactDisplay-Medium", expected.size)}) {
            const TextMeasure at3 = measure({run("Nifty", font)});
            EXPECT_NEAR(at3.size.height, expected.heightAt3, 1e-6) << expected.size;
            EXPECT_NEAR(at3.firstBaseline, expected.baseline, 1e-4) << expected.size;
            EXPECT_NEAR(measure({run("Nifty", font)}, {}, {}, {}, 2).size.height, expected.heightAt2, 1e-6);
        }
    }
}

TEST_F(PaintText, LettersHaveThePlatformsSpacing) {
    struct Case {
        Font font;
        double thousandths;
    };
    for (const Case& expected : std::vector<Case>{{Font::system(8), 26},
                                                  {Font::system(12), 0},
                                                  {Font::system(12.5), -3},
                                                  {Font::system(14), -11},
                                                  {Font::system(14, FontWeight::medium), -11},
                                                  {Font::system(14, FontWeight::bold), 9},
                                                  {Font::system(17), -26},
                                                  {Font::system(40), -26},
                                                  {Font::system(4), 26},
                                                  {Font::custom("No such font", 14), -11},
                                                  {Font::custom("SFCompactDisplay-Regular", 14), 0},
                                                  {Font::custom("SFCompactDisplay-Medium", 8), 0}}) {
        EXPECT_NEAR(tracking(expected.font), expected.thousandths / 1000 * expected.font.size, 1e-9)
            << expected.font.name << " " << expected.font.size;
    }
    // 20 letters at 8 points, each followed by 0.208 points more.
    const std::string text(20, 'n');
    EXPECT_NEAR(measure({run(text, Font::system(8))}).size.width -
                    measure({run(text, Font::custom("SFCompactDisplay-Regular", 8))}).size.width,
                20 * 0.208, 0.4);
}

TEST_F(PaintText, WeightsAndNamesChooseTheFace) {
    const auto width = [&](const Font& font) {
        return measure({run("Widths of words differ", font)}).size.width;
    };
    const double regular = width(Font::custom("SFCompactDisplay-Regular", 12));
    const double medium = width(Font::custom("SFCompactDisplay-Medium", 12));
    EXPECT_EQ(width(Font::system(12)), regular);
    EXPECT_EQ(width(Font::system(12, FontWeight::medium)), medium);
    EXPECT_EQ(width(Font::custom("No such font", 12)), regular);
    EXPECT_LT(regular, medium);
    EXPECT_LT(medium, width(Font::system(12, FontWeight::bold)));
}

TEST_F(PaintText, LinesEndAtWordsAndTheBoxIsAsWideAsTheLongest) {
    const double longest = widthOf("beta gamma");
    const TextMeasure lines = measure({run("alpha beta gamma delta")}, std::nullopt, longest + 10);
    EXPECT_EQ(lines.lines, 2);
    EXPECT_NEAR(lines.size.width, widthOf("gamma delta"), 0.4);
    EXPECT_LE(lines.size.width, longest + 10);
    // Rounded up once, not line by line: 28.6406 and not 2 x 14.3333.
    EXPECT_NEAR(lines.size.height, 86 / 3.0, 1e-6);
    EXPECT_NEAR(lines.lastBaseline - lines.firstBaseline, 14.3203, 1e-4);
    EXPECT_EQ(measure({run("alpha beta gamma delta")}).lines, 1);
    EXPECT_EQ(measure({run("alpha beta gamma delta")}, std::nullopt, platform::infinity).lines, 1);
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

TEST_F(PaintText, LimitAndHeightLeaveWholeLinesAndAtLeastOne) {
    const std::vector text{run("one two three four five six seven eight nine ten eleven twelve")};
    const double width = 70;
    const int all = measure(text, std::nullopt, width).lines;
    ASSERT_GE(all, 5);
    struct Case {
        std::optional<int> limit;
        std::optional<double> height;
        int lines;
    };
    for (const Case& expected : std::vector<Case>{{2, std::nullopt, 2},
                                                  {100, std::nullopt, all},
                                                  {0, std::nullopt, 1},
                                                  {std::nullopt, 0, 1},
                                                  {std::nullopt, 14.33, 1},
                                                  {std::nullopt, 28.5, 1},
                                                  {std::nullopt, 28.65, 2},
                                                  {std::nullopt, 43, 3},
                                                  {2, 43, 2},
                                                  {4, 43, 3},
                                                  {std::nullopt, 1000, all}}) {
        EXPECT_EQ(measure(text, expected.limit, width, expected.height).lines, expected.lines)
            << expected.limit.value_or(-1) << " " << expected.height.value_or(-1);
    }
    // The box that holds a text, rounded to pixels, holds it again.
    for (const double size : {8.0, 11.0, 12.0, 13.0, 16.0}) {
        const std::vector sized{run(text[0].text, Font::system(size))};
        const TextMeasure whole = measure(sized, std::nullopt, width);
        EXPECT_EQ(measure(sized, std::nullopt, width, whole.size.height).lines, whole.lines) << size;
    }
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

TEST_F(PaintText, LineBreaksAreKeptInOneText) {
    struct Case {
        std::string text;
        int lines;
    };
    for (const auto& [text, lines] : std::vector<Case>{{"a\nb", 2},
                                                       {"a\r\nb", 2},
                                                       {"a\rb", 2},
                                                       {"a\n\nb", 3},
                                                       {"a\n", 2},
                                                       {"a\u2028b\u2029c", 3},
                                                       {"", 1},
                                                       {"\n", 2}}) {
        const TextMeasure measured = measure({run(text)});
        EXPECT_EQ(measured.lines, lines) << testing::PrintToString(text);
        EXPECT_NEAR(measured.size.height, std::ceil(lines * 12 * 2444 / 2048.0 * 3) / 3, 1e-6);
    }
    EXPECT_EQ(widthOf(""), 0.0);
    EXPECT_EQ(measure({}).size, platform::Size{});
}

TEST_F(PaintText, ALineIsAsHighAsItsTallestRun) {
    const TextMeasure mixed =
        measure({run("12", Font::system(17)), run(" small\nand smaller", Font::system(9))});
    EXPECT_NEAR(mixed.firstBaseline, 16.1865, 1e-4);
    EXPECT_NEAR(mixed.lastBaseline, 20.2871 + 8.5693, 1e-4);
    EXPECT_NEAR(
        painter->measurer(3).metrics({run("a", Font::system(9)), run("b", Font::system(17))}).capHeight,
        11.9780, 1e-4);
}

TEST_F(PaintText, PicturesInATextStandOnItsBaseline) {
    const platform::Size live = painter->measurer(3).asset("Live").value();
    EXPECT_NEAR(measure({inlineImage("Live"), run("Live")}).size.width, live.width + widthOf("Live"), 0.4);
    EXPECT_EQ(measure({inlineImage("Live"), run("Live")}).size.height, measure({run("Live")}).size.height);
    // AppLogo is 30 points high: its line is that, and the descent below.
    const TextMeasure tall = measure({inlineImage("AppLogo"), run("Live")});
    EXPECT_NEAR(tall.firstBaseline, 30, 1e-6);
    EXPECT_NEAR(tall.size.height, std::ceil((30 + 2.8945) * 3) / 3, 1e-6);
    EXPECT_EQ(measure({inlineImage("NoSuchAsset"), run("Live")}).size, measure({run("Live")}).size);
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
