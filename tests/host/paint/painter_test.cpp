#include "host/paint/painter.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <cmath>
#include <cstdlib>
#include "tests/host/paint/paint_samples.h"
#include "tests/support/expected_text.h"

namespace host {
namespace {

using platform::Color;
using testing::HasSubstr;
using testing::Not;

constexpr Color red = Color::rgb(1, 0, 0);
constexpr Color blue = Color::rgb(0, 0, 1);

class Paint : public testing::Test {
protected:
    Pixels draw(const DisplayList& list, int scale = 1) { return Pixels(painter->png(list, scale).value()); }

    std::unique_ptr<Painter> painter = makePainter();
};

/// By how much the picture differs at most, in any part of any pixel, from the one that is kept under `name`;
/// 255 when it has another size.
int differenceFrom(const std::string& name, const std::string& png) {
    const Pixels expected(tests::expectedText("paint/" + name + ".png"));
    const Pixels drawn(png);
    if (!expected.isRead() || drawn.width() != expected.width() || drawn.height() != expected.height())
        return 255;
    int largest = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x) {
            for (const int shift : {0, 8, 16}) {
                largest = std::max(largest, std::abs(Pixels::part(drawn.at(x, y), shift) -
                                                     Pixels::part(expected.at(x, y), shift)));
            }
        }
    }
    return largest;
}

/// What each rule of the painter looks like, one beside the other.
DisplayList ruleList() {
    using platform::RoundedCornerStyle::circular, platform::RoundedCornerStyle::continuous;
    DisplayList list = emptyList(120, 60);
    // Corners go to the nearest pixel, ties up; a line of one pixel at scale 3 is one whole pixel there.
    add(list, fill(red), {.x = 2.5, .y = 1.2, .width = 3, .height = 0.5});
    add(list, fill(blue), {.x = 0, .y = 4.26, .width = 12, .height = 1.0 / 3});
    // A group fades as a whole, an item only by its own opacity.
    add(list, GroupItem{.isBegin = true, .opacity = 0.5}, {});
    add(list, fill(red), {.x = 2, .y = 10, .width = 8, .height = 8}).opacity = 0.5;
    add(list, fill(blue), {.x = 6, .y = 14, .width = 8, .height = 8}).opacity = 0.5;
    add(list, GroupItem{.isBegin = false}, {});
    add(list, fill(red), {.x = 20, .y = 2, .width = 4, .height = 8}).ownOpacity = 0.25;
    add(list, fill(red), {.x = 26, .y = 2, .width = 4, .height = 8}).ownOpacity = 0.0;
    // Only what lies inside all clips is drawn.
    add(list, fill(red), {.x = 2, .y = 28, .width = 30, .height = 30}).clips = {
        {.frame = {.x = 4, .y = 30, .width = 26, .height = 26}, .cornerRadius = 6},
        {.frame = {.x = 2, .y = 28, .width = 30, .height = 15}}};
    // Strokes stand half outside their frame, and their corners are mitred.
    add(list, StrokeItem{.color = red, .lineWidth = 2}, {.x = 36, .y = 4, .width = 10, .height = 10});
    // Along a side the arc ends after its radius, the continuous corner after one and a half.
    add(list, fill(black, 8, circular), {.x = 52, .y = 4, .width = 30, .height = 52});
    add(list, fill(black, 8, continuous), {.x = 86, .y = 4, .width = 30, .height = 52});
    return list;
}

TEST_F(Paint, LooksLikeTheRecordedPictures) {
    const std::tuple<const char*, DisplayList, int> pictures[] = {
        {"sample_light_at_1", sampleList(*painter), 1},
        {"sample_light_at_2", sampleList(*painter), 2},
        {"sample_dark_at_3", sampleList(*painter, night), 3},
        {"rules_at_1", ruleList(), 1},
        {"rules_at_3", ruleList(), 3},
    };
    for (const auto& [name, list, scale] : pictures) {
        const std::string png = painter->png(list, scale).value();
        if (tests::isRecording())
            ADD_FAILURE() << tests::recorded("paint/" + std::string(name) + ".png", png).message();
        EXPECT_LE(differenceFrom(name, png), 1) << name;
    }
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
TEST(PaintDeathTest, DrawsTheSameInAnyEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
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
            std::exit(
                differenceFrom("sample_dark_at_3", painter->png(sampleList(*painter, night), 3).value()));
        },
        [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) <= 1; }, "");
}

TEST_F(Paint, AListWhoseGroupsDoNotMatchIsStillDrawn) {
    DisplayList list = emptyList(10, 10);
    add(list, GroupItem{.isBegin = false}, {});
    add(list, GroupItem{.isBegin = true, .opacity = 0.5}, {});
    add(list, fill(red), {.x = 0, .y = 0, .width = 10, .height = 10});
    EXPECT_EQ(draw(list).at(5, 5), 0xFFFF7F7FU);
    EXPECT_EQ(draw(list).at(5, 5), 0xFFFF7F7FU);
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
