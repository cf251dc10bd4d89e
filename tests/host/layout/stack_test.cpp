// How rows, columns and piles share out their space and line up their children.

#include <gtest/gtest.h>
#include "tests/host/layout/frames.h"

namespace host {
namespace {

using namespace platform;

View flexible(double minWidth, double maxWidth) {
    node::Frame size;
    size.minWidth = minWidth;
    size.maxWidth = maxWidth;
    size.minHeight = 10.0;
    size.maxHeight = 10.0;
    return color().frame(size);
}

TEST(Stack, SharesItsLengthAmongItsChildrenAndPlacesThemInOrder) {
    const std::vector<LayoutCase> cases{
        {"equal shares for equally flexible children", HStack({.spacing = 10}, color(), color(), color()),
         "\ncolor 0,0 26.667x100\ncolor 36.667,0 26.667x100\ncolor 73.333,0 26.667x100\n"},
        {"what an inflexible child leaves goes to the others, wherever it stands",
         HStack({.spacing = 0}, color(), words("abcd"), color()),
         "\ncolor 0,0 40x100\ntext 40,45 20x10\ncolor 60,0 40x100\n"},
        {"the less flexible child chooses first",
         HStack({.spacing = 0}, flexible(0, infinity), flexible(20, 30)),
         "\ncolor 0,45 70x10\ncolor 70,45 30x10\n"},
        {"a child that takes more leaves less",
         HStack({.spacing = 0}, flexible(0, infinity), flexible(80, 90)),
         "\ncolor 0,45 20x10\ncolor 20,45 80x10\n"},
        {"equally flexible children choose in their order",
         HStack({.spacing = 0}, words("aaaa bbbb cccc"), words("dddd eeee ffff")),
         "\ntext 5,40 45x20\ntext 50,40 45x20\n"},
        {"a higher priority takes all but the others' least length",
         HStack({.spacing = 0}, words("aaaa bbbb cccc"), words("dddd eeee ffff").body().layoutPriority(1)),
         "\ntext 5,35 20x30\ntext 25,45 70x10\n"},
        {"lower priorities share what is left",
         HStack({.spacing = 0}, color().layoutPriority(-1), color(), color()),
         "\ncolor 0,0 0x100\ncolor 0,0 50x100\ncolor 50,0 50x100\n"},
        {"a stack neither stretches nor clips", HStack({.spacing = 0}, box(80, 10), box(80, 10)),
         "\ncolor -30,45 80x10\ncolor 50,45 80x10\n"},
        {"a column is a row with its axes swapped", VStack({.spacing = 10}, color(), box(20, 30), color()),
         "\ncolor 0,0 100x25\ncolor 40,35 20x30\ncolor 0,75 100x25\n"},
        {"negative spacing lets neighbours overlap", HStack({.spacing = -5}, box(20, 10), box(20, 10)),
         "\ncolor 32.5,45 20x10\ncolor 47.5,45 20x10\n"},
        {"nothing is specified inside of a fixed size, and nothing stretches",
         HStack({.spacing = 0}, color(), Spacer(), words("ab cd")).fixedSize(true, true),
         "\ncolor 28.5,45 10x10\nspacer 38.5,50 8x0\ntext 46.5,45 25x10\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Stack, LinesUpItsChildrenAcrossItsAxis) {
    const auto row = [](VerticalAlignment alignment) {
        const View small = Text("abcd", Font::system(10));
        const View tall = Text("a", Font::system(20));
        return HStack({.alignment = alignment, .spacing = 0}, small, tall, box(10, 30));
    };
    const auto column = [](HorizontalAlignment alignment) {
        return VStack({.alignment = alignment, .spacing = 0}, box(20, 10), box(60, 10));
    };
    const std::vector<LayoutCase> cases{
        {"top", row(VerticalAlignment::top), "\ntext 30,35 20x10\ntext 50,35 10x20\ncolor 60,35 10x30\n"},
        {"center", row(VerticalAlignment::center),
         "\ntext 30,45 20x10\ntext 50,40 10x20\ncolor 60,35 10x30\n"},
        {"bottom", row(VerticalAlignment::bottom),
         "\ntext 30,55 20x10\ntext 50,45 10x20\ncolor 60,35 10x30\n"},
        // Without a text, the foot stands on the baseline; the tall text hangs 4 below it.
        {"firstTextBaseline", row(VerticalAlignment::firstTextBaseline),
         "\ntext 30,55 20x10\ntext 50,47 10x20\ncolor 60,33 10x30\n"},
        {"leading", column(HorizontalAlignment::leading), "\ncolor 20,40 20x10\ncolor 20,50 60x10\n"},
        {"center", column(HorizontalAlignment::center), "\ncolor 40,40 20x10\ncolor 20,50 60x10\n"},
        {"trailing", column(HorizontalAlignment::trailing), "\ncolor 60,40 20x10\ncolor 20,50 60x10\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Stack, StandsOnTheFirstAndTheLastBaselineOfTheTextsInIt) {
    const View lines = VStack({.spacing = 0}, words("ab").body().padding({.top = 5}), words("cd"));
    const auto besides = [&](VerticalAlignment alignment) {
        return HStack({.alignment = alignment, .spacing = 0}, lines, words("x"));
    };
    EXPECT_EQ(leaves(besides(VerticalAlignment::firstTextBaseline)),
              "\ntext 42.5,42.5 10x10\ntext 42.5,52.5 10x10\ntext 52.5,42.5 5x10\n");
    EXPECT_EQ(leaves(besides(VerticalAlignment::lastTextBaseline)),
              "\ntext 42.5,42.5 10x10\ntext 42.5,52.5 10x10\ntext 52.5,52.5 5x10\n");
}

TEST(Stack, GivesASpacerWhatTheOthersLeaveButNeverLessThanItsMinimum) {
    const std::vector<LayoutCase> cases{
        {"all that is left", HStack({.spacing = 0}, box(20, 10), Spacer(), box(30, 10)),
         "\ncolor 0,45 20x10\nspacer 20,50 50x0\ncolor 70,45 30x10\n"},
        {"two share it", VStack({.spacing = 0}, Spacer(), box(20, 10), Spacer()),
         "\nspacer 50,0 0x45\ncolor 40,45 20x10\nspacer 50,55 0x45\n"},
        {"8 at least", HStack({.spacing = 0}, box(50, 10), Spacer(), box(50, 10)),
         "\ncolor -4,45 50x10\nspacer 46,50 8x0\ncolor 54,45 50x10\n"},
        {"or its own minimum", HStack({.spacing = 0}, box(50, 10), Spacer(20), box(50, 10)),
         "\ncolor -10,45 50x10\nspacer 40,50 20x0\ncolor 60,45 50x10\n"},
        {"text keeps its line before a spacer grows",
         HStack({.spacing = 0}, words("aaaa bbbb cccc"), Spacer(0)),
         "\ntext 0,45 70x10\nspacer 70,50 30x0\n"},
        {"through a modifier too", HStack({.spacing = 0}, box(20, 10), Spacer().opacity(0.5)),
         "\ncolor 0,45 20x10\nspacer 20,50 80x0\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Stack, TakesAGroupsChildrenForItsOwnAndGivesNoPlaceToNothing) {
    const View nothing;
    const std::vector<LayoutCase> cases{
        {"children of groups within groups",
         HStack({.spacing = 10}, Group({box(10, 10), Group({box(10, 10), box(10, 10)})})),
         "\ncolor 25,45 10x10\ncolor 45,45 10x10\ncolor 65,45 10x10\n"},
        {"no gap around nothing, padded or not",
         HStack({.spacing = 10}, box(10, 10), nothing, nothing.padding(7), Group({nothing}), box(10, 10)),
         "\ncolor 35,45 10x10\ncolor 55,45 10x10\n"},
        {"a spacer in a group is the stack's", HStack({.spacing = 0}, Group({Spacer(), box(10, 10)})),
         "\nspacer 0,50 90x0\ncolor 90,45 10x10\n"},
        {"several views without a stack stand in a column", Group({box(20, 10), box(10, 10)}),
         "\ncolor 40,36 20x10\ncolor 45,54 10x10\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;

    const auto json =
        laidOut(HStack({.spacing = 10}, Group({box(10, 10), box(10, 20)}), color()), {100, 100});
    EXPECT_EQ(frameText(json["children"][0]["frame"]), "0,40 30x20")
        << "a group's frame surrounds its children";
}

TEST(Stack, PilesItsChildrenAroundOneGuide) {
    const auto pile = [](Alignment alignment) { return ZStack(alignment, box(40, 20), box(20, 40)); };
    const std::vector<LayoutCase> cases{
        {"center", pile({}), "\ncolor 30,40 40x20\ncolor 40,30 20x40\n"},
        {"bottomTrailing", pile({HorizontalAlignment::trailing, VerticalAlignment::bottom}),
         "\ncolor 30,50 40x20\ncolor 50,30 20x40\n"},
        {"every child is offered everything", ZStack({}, color(), words("ab")),
         "\ncolor 0,0 100x100\ntext 45,45 10x10\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Divider, IsOnePixelThickAndLiesAcrossItsStack) {
    const std::vector<LayoutCase> cases{
        {"in a row it stands", HStack({.spacing = 0}, box(10, 10), Divider()),
         "\ncolor 44.833,45 10x10\ndivider 54.833,0 0.33333x100\n"},
        {"in a column it lies", VStack({.spacing = 0}, box(10, 10), Divider()),
         "\ncolor 45,44.833 10x10\ndivider 0,54.833 100x0.33333\n"},
        {"without a stack it lies", Divider(), "\ndivider 0,49.833 100x0.33333\n"},
        {"in a pile it lies, even in a row", HStack({.spacing = 0}, ZStack({}, Divider())),
         "\ndivider 0,49.833 100x0.33333\n"},
        {"its background fills the height that a frame reserves",
         VStack({.spacing = 0}, Divider().frame({.height = 1}).background(color())),
         "\ndivider 0,49.833 100x0.33333\ncolor 0,49.5 100x1\n"},
        {"10 long where nothing is specified", VStack({.spacing = 0}, Divider()).fixedSize(true, false),
         "\ndivider 45,49.833 10x0.33333\n"},
    };
    for (const LayoutCase& layout : cases) EXPECT_EQ(leaves(layout.root), layout.expected) << layout.rule;
}

TEST(Stack, KeepsTheGapsThatItsChildrenPrefer) {
    const View text = words("ab");
    const View image = Image("Icon");
    struct GapCase {
        const char* rule;
        View first;
        View second;
        double inColumn;
        double inRow;
    };
    // At 10 points: descent 2, a tenth of the line 1, and 7 of capitals.
    const std::vector<GapCase> cases{
        {"text and text", text, text, 0, 8},
        {"a picture over text", image, text, 3, 8},
        {"text over a picture", text, image, 4, 8},
        {"a shape over text", RoundedRectangle({}), text, 3, 8},
        {"a divider over text", Divider(), text, 3, 8},
        {"plain and plain", image, image, 8, 8},
        {"text in a frame of fixed height is plain", text.frame({.height = 20}), text, 3, 8},
        {"a fixed width leaves the vertical edges alone", text.frame({.width = 30}), text, 0, 8},
        {"a padded edge is plain", text.padding({.bottom = 1}), text, 3, 8},
        {"the other edges are not", text.padding({.top = 1}), text, 0, 8},
        {"a column passes on its last child", VStack({}, image, text), text, 0, 8},
        {"a row passes on the strongest of all", HStack({}, image, text), text, 3, 8},
        {"a pile too", text, ZStack({}, image, text), 4, 8},
        {"modifiers pass on what is in them", text.opacity(0.5).foregroundColor(Color::gray()), text, 0, 8},
        {"nothing stands off from a spacer", image, Spacer(5), 0, 0},
        {"nor from a stack that begins with one", image, VStack({}, Spacer(5), text), 0, 8},
        {"an empty stack knows no preference", VStack({}, std::vector<View>{}), text, 8, 8},
    };
    const auto gapIn = [](const View& stack, const char* position, const char* length) {
        const auto children = laidOut(stack, {200, 200})["children"];
        const auto before = children[0]["frame"];
        return children[1]["frame"][position].get<double>() - before[position].get<double>() -
               before[length].get<double>();
    };
    for (const GapCase& gap : cases) {
        EXPECT_NEAR(gapIn(VStack({}, gap.first, gap.second), "y", "height"), gap.inColumn, 1e-9) << gap.rule;
        EXPECT_NEAR(gapIn(HStack({}, gap.first, gap.second), "x", "width"), gap.inRow, 1e-9) << gap.rule;
    }
}

}  // namespace
}  // namespace host
