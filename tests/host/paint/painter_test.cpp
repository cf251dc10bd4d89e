#include "host/paint/painter.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include "tests/host/paint/paint_samples.h"
#include "tests/support/expected_text.h"

namespace host {
namespace {

using platform::Color;
using testing::HasSubstr;
using testing::Not;

constexpr Color red = Color::rgb(1, 0, 0);
constexpr Color blue = Color::rgb(0, 0, 1);

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class Paint : public testing::Test {
protected:
    Pixels draw(const DisplayList& list, int scale = 1) { return Pixels(painter->png(list, scale).value()); }

    std::unique_ptr<Painter> painter = makePainter();
};

/// Compares with the picture that is kept under `name`.
void expectPicture(const std::string& name, const std::string& png) {
    const std::string file = "paint/" + name + ".png";
    if (tests::isRecording()) FAIL() << tests::recorded(file, png).message();
    const Pixels expected(tests::expectedText(file));
    const Pixels drawn(png);
    ASSERT_TRUE(expected.isRead()) << file;
    ASSERT_EQ(drawn.width(), expected.width());
    ASSERT_EQ(drawn.height(), expected.height());
    int largest = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x) {
            for (const int shift : {0, 8, 16}) {
                largest = std::max(largest, std::abs(Pixels::part(drawn.at(x, y), shift) -
                                                     Pixels::part(expected.at(x, y), shift)));
            }
        }
    }
    EXPECT_LE(largest, 1) << name;
}

TEST_F(Paint, LooksLikeTheRecordedPictures) {
    expectPicture("sample_light_at_2", painter->png(sampleList(*painter), 2).value());
    expectPicture("sample_dark_at_3", painter->png(sampleList(*painter, night), 3).value());
    expectPicture("sample_light_at_1", painter->png(sampleList(*painter), 1).value());
}

TEST_F(Paint, GivesTheSameBytesWhateverWasDrawnBefore) {
    const DisplayList list = sampleList(*painter);
    const std::string png = painter->png(list, 3).value();
    const std::string svg = painter->svg(list).value();
    painter->png(sampleList(*painter, night), 3).value();
    EXPECT_EQ(painter->png(list, 3), png);
    EXPECT_EQ(painter->svg(list), svg);
    const std::unique_ptr<Painter> other = makePainter();
    EXPECT_EQ(other->png(list, 3), png);
    EXPECT_EQ(other->svg(list), svg);
}

// In a separate process, since the font libraries read their variables only once.
TEST(PaintDeathTest, GivesTheSameBytesInAnyEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr const char* variable = "BRIGHTLEDGER_TEST_PICTURE";
    if (std::getenv(variable) == nullptr) {
        std::string folder = testing::TempDir() + "paint-XXXXXX";
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        setenv(variable, folder.c_str(), 1);
    }
    const std::filesystem::path folder = std::getenv(variable);
    EXPECT_EXIT(
        {
            for (const auto& [name, value] : {std::pair{"FONTCONFIG_FILE", "/nonexistent"},
                                              {"FONTCONFIG_PATH", "/nonexistent"},
                                              {"FONTCONFIG_SYSROOT", "/tmp"},
                                              {"FC_LANG", "hi"},
                                              {"LC_ALL", "hi_IN.UTF-8"},
                                              {"LANG", "ar"},
                                              {"HOME", "/nonexistent"},
                                              {"XDG_CACHE_HOME", "/nonexistent"},
                                              {"PANGO_LANGUAGE", "mr:ja"},
                                              {"PANGOCAIRO_BACKEND", "none"},
                                              {"HB_SHAPER_LIST", "fallback"},
                                              {"FREETYPE_PROPERTIES", "cff:no-stem-darkening=0"},
                                              {"GDK_SCALE", "2"}}) {
                setenv(name, value, 1);
            }
            std::filesystem::current_path("/");
            const std::unique_ptr<Painter> painter = makePainter();
            std::ofstream(folder / "picture.png", std::ios::binary)
                << painter->png(sampleList(*painter), 3).value();
            std::ofstream(folder / "picture.svg", std::ios::binary)
                << painter->svg(sampleList(*painter)).value();
            _exit(0);
        },
        testing::ExitedWithCode(0), "");
    const std::unique_ptr<Painter> painter = makePainter();
    EXPECT_TRUE(painter->png(sampleList(*painter), 3).value() == contentOf(folder / "picture.png"));
    EXPECT_TRUE(painter->svg(sampleList(*painter)).value() == contentOf(folder / "picture.svg"));
    std::filesystem::remove_all(folder);
    unsetenv(variable);
}

TEST_F(Paint, FillsWholePixelsAndSnapsCornersToTheNearest) {
    DisplayList list = emptyList(12, 8);
    add(list, fill(red), {.x = 2.5, .y = 1.2, .width = 3, .height = 0.5});
    add(list, fill(blue), {.x = 0, .y = 4.26, .width = 12, .height = 1.0 / 3});
    const Pixels pixels = draw(list);
    // 2.5 rounds up to 3, 5.5 to 6; 1.2 down to 1, 1.7 up to 2.
    for (int x = 0; x < 12; ++x) EXPECT_EQ(pixels.at(x, 1), x >= 3 && x < 6 ? 0xFFFF0000U : 0xFFFFFFFFU) << x;
    EXPECT_EQ(pixels.at(4, 0), 0xFFFFFFFFU);
    EXPECT_EQ(pixels.at(4, 2), 0xFFFFFFFFU);
    // A line of one pixel at scale 3 is one whole pixel there.
    const Pixels sharp = draw(list, 3);
    EXPECT_EQ(sharp.at(5, 12), 0xFFFFFFFFU);
    EXPECT_EQ(sharp.at(5, 13), 0xFF0000FFU);
    EXPECT_EQ(sharp.at(5, 14), 0xFFFFFFFFU);
}

TEST_F(Paint, AGroupFadesAsAWholeAndAnItemOnlyByItsOwnOpacity) {
    DisplayList list = emptyList(30, 10);
    add(list, GroupItem{.isBegin = true, .opacity = 0.5}, {});
    for (const double x : {0.0, 4.0}) {
        add(list, fill(x == 0.0 ? red : blue), {.x = x, .y = 0, .width = 8, .height = 10}).opacity = 0.5;
    }
    add(list, GroupItem{.isBegin = false}, {});
    add(list, fill(red), {.x = 20, .y = 0, .width = 4, .height = 10}).ownOpacity = 0.25;
    add(list, fill(red), {.x = 26, .y = 0, .width = 4, .height = 10}).ownOpacity = 0.0;
    const Pixels pixels = draw(list);
    EXPECT_EQ(pixels.at(2, 5), 0xFFFF7F7FU);
    // The red does not show through the blue.
    EXPECT_EQ(pixels.at(6, 5), 0xFF7F7FFFU);
    EXPECT_NEAR(Pixels::part(pixels.at(22, 5), 8), 191, 1);
    EXPECT_EQ(pixels.at(28, 5), 0xFFFFFFFFU);
}

TEST_F(Paint, AListWhoseGroupsDoNotMatchIsStillDrawn) {
    DisplayList list = emptyList(10, 10);
    add(list, GroupItem{.isBegin = false}, {});
    add(list, GroupItem{.isBegin = true, .opacity = 0.5}, {});
    add(list, fill(red), {.x = 0, .y = 0, .width = 10, .height = 10});
    EXPECT_EQ(draw(list).at(5, 5), 0xFFFF7F7FU);
    EXPECT_EQ(draw(list).at(5, 5), 0xFFFF7F7FU);
}

TEST_F(Paint, OnlyWhatLiesInsideAllClipsIsDrawn) {
    DisplayList list = emptyList(20, 20);
    add(list, fill(red), {.x = 0, .y = 0, .width = 20, .height = 20}).clips = {
        {.frame = {.x = 2, .y = 2, .width = 16, .height = 16}, .cornerRadius = 6},
        {.frame = {.x = 0, .y = 0, .width = 20, .height = 10}}};
    const Pixels pixels = draw(list);
    EXPECT_EQ(pixels.at(10, 9), 0xFFFF0000U);
    EXPECT_EQ(pixels.at(10, 10), 0xFFFFFFFFU);
    EXPECT_EQ(pixels.at(1, 8), 0xFFFFFFFFU);
    EXPECT_EQ(pixels.at(2, 2), 0xFFFFFFFFU);
}

TEST_F(Paint, CornersBeginWhereTheirStyleSays) {
    constexpr double radius = 20;
    const auto coverage = [&](platform::RoundedCornerStyle style, int x, int y) {
        DisplayList list = emptyList(100, 100);
        add(list, fill(black, radius, style), {.x = 0, .y = 0, .width = 100, .height = 100});
        return 255 - Pixels::part(draw(list).at(x, y), 0);
    };
    using platform::RoundedCornerStyle::circular, platform::RoundedCornerStyle::continuous;
    // On the diagonal both are 0.29 radii from the corner.
    for (const auto style : {circular, continuous}) {
        EXPECT_EQ(coverage(style, 4, 4), 0);
        EXPECT_EQ(coverage(style, 7, 7), 255);
    }
    // Along the side the arc has ended after 20 points, the continuous corner after 30.
    EXPECT_EQ(coverage(circular, 22, 0), 255);
    EXPECT_LT(coverage(continuous, 22, 0), 250);
    EXPECT_EQ(coverage(continuous, 31, 0), 255);
}

TEST_F(Paint, StrokesStandHalfOutsideTheirFrame) {
    DisplayList list = emptyList(20, 20);
    add(list, StrokeItem{.color = red, .lineWidth = 2}, {.x = 5, .y = 5, .width = 10, .height = 10});
    const Pixels pixels = draw(list);
    for (const auto& [x, isRed] :
         {std::pair{3, false}, {4, true}, {5, true}, {6, false}, {14, true}, {15, true}, {16, false}}) {
        EXPECT_EQ(pixels.at(x, 10), isRed ? 0xFFFF0000U : 0xFFFFFFFFU) << x;
    }
    EXPECT_EQ(pixels.at(4, 4), 0xFFFF0000U) << "mitred corner";
}

TEST_F(Paint, APngHasAlphaOnlyWhenItsBackgroundIsNotOpaque) {
    EXPECT_FALSE(draw(emptyList(4, 4)).hasAlpha());
    DisplayList list = emptyList(9, 5, Color::rgb(1, 0, 0, 0.0));
    add(list, fill(Color::rgb(0, 1, 0, 0.5)), {.x = 0, .y = 0, .width = 3, .height = 5});
    add(list, fill(blue), {.x = 3, .y = 0, .width = 3, .height = 5});
    const Pixels pixels = draw(list);
    ASSERT_TRUE(pixels.hasAlpha());
    EXPECT_EQ(pixels.at(1, 2), 0x80008000U);
    EXPECT_EQ(pixels.at(4, 2), 0xFF0000FFU);
    EXPECT_EQ(pixels.at(7, 2), 0U);
}

TEST_F(Paint, AnSvgHasItsTextAsOutlinesAndItsSizeInPoints) {
    const std::string svg = painter->svg(sampleList(*painter)).value();
    EXPECT_THAT(svg, HasSubstr("viewBox=\"0 0 160 96\""));
    EXPECT_THAT(svg, HasSubstr("width=\"160px\""));
    EXPECT_THAT(svg, Not(HasSubstr("<text")));
    EXPECT_THAT(svg, Not(HasSubstr("font")));
}

TEST_F(Paint, FailsForImpossibleSizesAndMissingAssets) {
    for (const auto& [width, height] : {std::pair{0.0, 10.0},
                                        {-4.0, 10.0},
                                        {1e9, 1.0},
                                        {9000.0, 9000.0},
                                        {platform::infinity, 4.0},
                                        {std::nan(""), 4.0}}) {
        EXPECT_EQ(painter->png(emptyList(width, height), 1).error().domain, "PaintError") << width;
        EXPECT_EQ(painter->svg(emptyList(width, height)).error().domain, "PaintError") << width;
    }
    EXPECT_THAT(Painter::make("/nonexistent").error().message, HasSubstr("/nonexistent/assets"));
}

TEST_F(Paint, AcceptsFramesOfAnySize) {
    for (const double extent : {-50.0, 1e-9, 1e9, 1e300, platform::infinity, std::nan("")}) {
        DisplayList list = emptyList(10, 10);
        const Rect frame{.x = -extent / 2, .y = 1, .width = extent, .height = extent};
        add(list, asset("Placeholder"), frame);
        add(list, fill(red, extent, platform::RoundedCornerStyle::continuous), frame);
        add(list, StrokeItem{.color = red, .lineWidth = extent}, frame);
        add(list, TextItem{.runs = {run("text")}, .lineLimit = std::nullopt}, frame).ownOpacity = 0.5;
        EXPECT_TRUE(painter->png(list, 3)) << extent;
        EXPECT_TRUE(painter->svg(list)) << extent;
        EXPECT_EQ(draw(emptyList(10, 10), 3).at(15, 15), 0xFFFFFFFFU) << extent;
    }
}

}  // namespace
}  // namespace host
