// What frames, paddings and the other modifiers offer, answer and move; and views without children.

#include <gtest/gtest.h>
#include "tests/host/layout/frames.h"

namespace host {
namespace {

using namespace platform;

constexpr Alignment topLeading{HorizontalAlignment::leading, VerticalAlignment::top};
constexpr Alignment bottomTrailing{HorizontalAlignment::trailing, VerticalAlignment::bottom};

TEST(Root, IsOfferedTheWidgetAndCentredWhateverItAnswers) {
    EXPECT_EQ(rootFrame(color(), {158, 100}), "0,0 158x100");
    EXPECT_EQ(rootFrame(box(58, 20), {158, 100}), "50,40 58x20");
    EXPECT_EQ(rootFrame(box(258, 120), {158, 100}), "-50,-10 258x120");
    EXPECT_EQ(rootFrame(View(), {158, 100}), "0,0 0x0");
}

TEST(Frame, WithANumberAnswersItAndPlacesItsContentByGuides) {
    const std::vector<LayoutCase> cases{
        {"centred", words("ab").body().frame({.width = 50, .height = 40}), "\ntext 45,45 10x10\n"},
        {"aligned", words("ab").body().frame({.width = 50, .height = 40, .alignment = topLeading}),
         "\ntext 25,30 10x10\n"},
        {"by the baseline of the text",
         HStack({.alignment = VerticalAlignment::firstTextBaseline, .spacing = 0},
                words("ab").body().frame({.height = 30}), words("c")),
         "\ntext 42.5,45 10x10\ntext 52.5,45 5x10\n"},
        {"content may be larger and is not cut",
         box(60, 60).frame({.width = 20, .height = 20, .alignment = bottomTrailing}), "\ncolor 0,0 60x60\n"},
        {"one dimension passes the other through", color().frame({.width = 20}), "\ncolor 40,0 20x100\n"},
        {"a number that is no length is ignored", color().frame({.width = -5, .height = 20}),
         "\ncolor 0,40 100x20\n"},
        {"text breaks within it", words("aaaa bbbb").body().frame({.width = 30}), "\ntext 40,40 20x20\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Frame, WithLimitsClampsWhatItIsOffered) {
    const auto frameOf = [](const View& content, std::optional<double> minimum,
                            std::optional<double> maximum) {
        node::Frame size;
        size.minWidth = minimum;
        size.maxWidth = maximum;
        return rootFrame(content.frame(size));
    };
    EXPECT_EQ(frameOf(box(40, 10), {}, infinity), "0,45 100x10") << "only a maximum: grows to the offer";
    EXPECT_EQ(frameOf(box(40, 10), {}, 60), "20,45 60x10") << "but not beyond it";
    EXPECT_EQ(frameOf(box(140, 10), {}, infinity), "-20,45 140x10") << "nor below the content";
    EXPECT_EQ(frameOf(box(40, 10), 60, {}), "20,45 60x10") << "only a minimum";
    EXPECT_EQ(frameOf(box(140, 10), 60, {}), "0,45 100x10") << "larger content, up to the offer";
    EXPECT_EQ(frameOf(box(140, 10), 0, infinity), "0,45 100x10") << "both: the offer, clamped";
    EXPECT_EQ(frameOf(box(40, 10), 120, 150), "-10,45 120x10");
    EXPECT_EQ(frameOf(box(40, 10), 80, 50), "10,45 80x10") << "the minimum wins";
    EXPECT_EQ(frameOf(box(40, 10), infinity, {}), "30,45 40x10") << "an infinite minimum is none";
    EXPECT_EQ(frameOf(color(), {}, 30), "35,0 30x100") << "the content is offered the clamped size";

    node::Frame wide;
    wide.maxWidth = infinity;
    EXPECT_EQ(rootFrame(words("ab").body().frame(wide).fixedSize(true, true)), "45,45 10x10")
        << "nothing specified: the content's own size";
}

TEST(Padding, TakesFromTheOfferAndAddsToTheAnswer) {
    const std::vector<LayoutCase> cases{
        {"insets", color().padding({.top = 10, .leading = 20, .bottom = 30, .trailing = 5}),
         "\ncolor 20,10 75x60\n"},
        {"content is never offered less than nothing", color().padding(70), "\ncolor 50,50 0x0\n"},
        {"negative insets pull a view over its neighbour",
         VStack({.spacing = 0}, box(20, 20), box(20, 20).padding({.top = -5})),
         "\ncolor 40,32.5 20x20\ncolor 40,47.5 20x20\n"},
        {"and offer more", color().padding({.leading = -10, .trailing = -10}), "\ncolor -10,0 120x100\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Layer, IsOfferedTheSizeOfWhatItDecoratesAndChangesNothing) {
    const std::vector<LayoutCase> cases{
        {"a flexible layer has the same size", box(40, 20).overlay(color()),
         "\ncolor 30,40 40x20\ncolor 30,40 40x20\n"},
        {"another is centred", box(40, 20).background(box(60, 10)),
         "\ncolor 30,40 40x20\ncolor 20,45 60x10\n"},
        {"or aligned", box(40, 20).overlay(box(10, 10), bottomTrailing),
         "\ncolor 30,40 40x20\ncolor 60,50 10x10\n"},
        {"several are piled up", box(40, 20).overlay(Group({box(10, 10), box(20, 4)})),
         "\ncolor 30,40 40x20\ncolor 45,45 10x10\ncolor 40,48 20x4\n"},
        {"the container's background has the widget's size", box(40, 20).containerBackground(color()),
         "\ncolor 30,40 40x20\ncolor 0,0 100x100\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(AspectRatio, FitsIntoTheOfferOrCoversIt) {
    const View resizable = Image("Logo", {.isResizable = true});
    const std::vector<LayoutCase> cases{
        {"fit", color().aspectRatio(2.0, ContentMode::fit), "\ncolor 0,25 100x50\n"},
        {"fill", color().aspectRatio(2.0, ContentMode::fill), "\ncolor -50,0 200x100\n"},
        {"its own ratio", resizable.aspectRatio({}, ContentMode::fit), "\nimage 0,25 100x50\n"},
        {"another ratio stretches", resizable.aspectRatio(1.0, ContentMode::fit), "\nimage 0,0 100x100\n"},
        {"one dimension gives the other",
         resizable.aspectRatio({}, ContentMode::fit).frame({.height = 30}).fixedSize(true, false),
         "\nimage 20,35 60x30\n"},
        {"its natural size where nothing is specified",
         resizable.aspectRatio({}, ContentMode::fill).fixedSize(true, true), "\nimage 40,45 20x10\n"},
        {"a picture that is not resizable stays as it is", Image("Logo").aspectRatio(1.0, ContentMode::fill),
         "\nimage 40,45 20x10\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Leaf, AnswersWithItsNaturalSizeOrWithTheOffer) {
    const std::vector<LayoutCase> cases{
        {"a picture has its own size", Image("Logo"), "\nimage 40,45 20x10\n"},
        {"unless it is resizable", Image("Logo", {.isResizable = true}), "\nimage 0,0 100x100\n"},
        {"then too where nothing is specified", Image("Logo", {.isResizable = true}).fixedSize(true, false),
         "\nimage 40,0 20x100\n"},
        {"bytes are as large as their pixels", Image(Bytes("PIC"), "Icon"), "\nimage 30,35 40x30\n"},
        {"bytes that are no picture give way to the named asset", Image(Bytes("???"), "Icon"),
         "\nimage 44,44 12x12\n"},
        {"in the same place",
         Image(Bytes("???"), "Icon", {.isResizable = true}).frame({.width = 30, .height = 20}),
         "\nimage 35,40 30x20\n"},
        {"an asset that is missing takes no place", Image("Missing", {.isResizable = true}),
         "\nimage 50,50 0x0\n"},
        {"a colour is 10 where nothing is specified", color().fixedSize(true, true), "\ncolor 45,45 10x10\n"},
        {"a text breaks at blanks and answers its longest line", words("aaaa bbbbbb cccccccccc dddddddddd"),
         "\ntext 22.5,35 55x30\n"},
        {"and keeps as many lines as there is room for",
         words("aaaa bbbb cccc").body().frame({.width = 25, .height = 25}), "\ntext 40,40 20x20\n"},
        {"one at least", words("aaaa bbbb").body().frame({.width = 25, .height = 5}), "\ntext 40,45 20x10\n"},
        {"a limit cuts it", words("aaaa bbbb cccc").lineLimit(2).body().frame({.width = 25}),
         "\ntext 40,40 20x20\n"},
        {"in a fixed width it does not break",
         words("aaaaaaaaaa bbbbbbbbbb cc").body().fixedSize(true, false), "\ntext -10,45 120x10\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

}  // namespace
}  // namespace host
