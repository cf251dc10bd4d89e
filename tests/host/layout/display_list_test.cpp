// What a laid out tree paints, in which colours, how it is cut, and where it can be tapped.

#include "host/layout/display_list.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include "tests/host/layout/frames.h"

namespace host {
namespace {

using namespace platform;
using testing::ElementsAre;
using testing::HasSubstr;

const Color red = Color::rgb(1, 0, 0);
const Color black = Color::rgb(0, 0, 0);
const Color white = Color::rgb(1, 1, 1);
const Color navy = Color::rgb(0.1, 0.1, 0.13);

LayoutOptions options(const std::string& family = "systemMedium", int osVersion = 18) {
    return {.size = {100.0, 100.0}, .osVersion = osVersion, .kind = "NewsWidget", .family = family};
}

DisplayList listOf(const View& root, const LayoutOptions& with = options()) {
    return makeDisplayList(root, with, PlainMeasurer());
}

std::vector<std::string> lines(const DisplayList& list) {
    std::vector<std::string> all;
    for (const DisplayItem& item : list.items) all.push_back(displayItemText(item));
    return all;
}

std::vector<std::string> links(const DisplayList& list) {
    std::vector<std::string> all;
    for (const LinkArea& link : list.links) all.push_back(link.url + " " + rectText(link.frame));
    return all;
}

/// A square of 10 x 10 in the middle, from 45,45.
View square(const Color& color) { return ColorFill(color).frame({.width = 10, .height = 10}); }

TEST(DisplayList, PaintsBackgroundsBeforeAndOverlaysAfterWhatTheyDecorate) {
    const View root = ZStack({}, square(black).overlay(square(red)).background(square(white)), words("ab"));
    EXPECT_THAT(lines(listOf(root)),
                ElementsAre("fill #FFFFFF 45,45 10x10", "fill #000000 45,45 10x10",
                            "fill #FF0000 45,45 10x10", R"(text "ab" 45,45 10x10 system 10 #000000)"));
}

TEST(DisplayList, GivesTextShapesAndDividersTheForegroundColourUnlessTheyHaveTheirOwn) {
    const View root =
        VStack({.spacing = 0}, words("a") + words("b").foregroundColor(navy),
               RoundedRectangle({}).frame({.height = 5}),
               RoundedRectangle({.fill = white, .stroke = node::Stroke{.color = navy}}).frame({.height = 5}),
               Divider().frame({.height = 1}), words("c").body().foregroundColor(white))
            .frame({.width = 20})
            .foregroundColor(red);
    EXPECT_THAT(lines(listOf(root)),
                ElementsAre(R"(text "a" 45,34.5 10x10 system 10 #FF0000 + "b" system 10 #1A1A21)",
                            "fill #FF0000 40,44.5 20x5", "fill #FFFFFF 40,49.5 20x5",
                            "stroke #1A1A21 40,49.5 20x5 width 1", "fill #FF0000 40,54.83 20x0.33",
                            R"(text "c" 47.5,55.5 5x10 system 10 #FFFFFF)"));
}

TEST(DisplayList, ChoosesThePrimaryColourByWhatTheWidgetStandsOn) {
    const View content = VStack({.spacing = 0}, words("a"), Divider());
    struct GroundCase {
        const char* rule;
        View root;
        std::string text;
        std::string divider;
    };
    const std::string onLight = "#3C3C43@0.29", onDark = "#545458@0.6";
    const View everything = ZStack({}, ColorFill(Color()), content);
    const std::vector<GroundCase> cases{
        {"nothing is light", content, "#000000", onLight},
        {"a dark container", content.containerBackground(ColorFill(navy)), "#FFFFFF", onDark},
        {"a light container", content.containerBackground(ColorFill(Color::rgb(0.9, 0.9, 0.2))), "#000000",
         onLight},
        {"one that ignores the safe area", content.containerBackground(ColorFill(navy).ignoresSafeArea()),
         "#FFFFFF", onDark},
        {"a dark picture in the container",
         content.containerBackground(ZStack({}, ColorFill(navy), Image("Icon"))), "#FFFFFF", onDark},
        {"a plain background of the whole widget", everything.background(ColorFill(navy)), "#FFFFFF", onDark},
        {"a smaller one says nothing", content.background(ColorFill(navy)), "#000000", onLight},
        {"a faint one hardly anything", everything.background(ColorFill(navy).opacity(0.2)), "#000000",
         onLight},
    };
    for (const GroundCase& ground : cases) {
        const DisplayList list = listOf(ground.root);
        const std::string text = displayListText(list);
        EXPECT_THAT(text, HasSubstr("system 10 " + ground.text + "\n")) << ground.rule;
        EXPECT_THAT(text, HasSubstr("\nfill " + ground.divider + " ")) << ground.rule;
    }
}

TEST(DisplayList, TakesAContainersColourForItsBackgroundAndDrawsAnythingElseAtTheBottom) {
    const DisplayList plain = listOf(square(red).containerBackground(ColorFill(navy)));
    EXPECT_EQ(plain.background, navy);
    EXPECT_THAT(lines(plain), ElementsAre("fill #FF0000 45,45 10x10"));

    const DisplayList shaped =
        listOf(ZStack({}, square(white), square(red).containerBackground(RoundedRectangle({.fill = navy}))));
    EXPECT_EQ(shaped.background, Color());
    EXPECT_THAT(lines(shaped), ElementsAre("fill #1A1A21 0,0 100x100", "fill #FFFFFF 45,45 10x10",
                                           "fill #FF0000 45,45 10x10"));
}

TEST(DisplayList, InsetsTheContentOfAWidgetThatWantsMarginsFromVersion17On) {
    const View root = ColorFill(red).containerBackground(RoundedRectangle({.fill = navy}));
    for (const int osVersion : {16, 17}) {
        LayoutOptions margins = options("systemMedium", osVersion);
        margins.contentMarginsDisabled = false;
        EXPECT_THAT(lines(listOf(root, margins)),
                    ElementsAre("fill #1A1A21 0,0 100x100",
                                osVersion < 17 ? "fill #FF0000 0,0 100x100" : "fill #FF0000 16,16 68x68"));
    }
}

TEST(DisplayList, FadesOneItemItselfAndSeveralAsAWhole) {
    const View pair = ZStack({}, square(red), square(navy));
    EXPECT_THAT(lines(listOf(square(red).opacity(0.5).opacity(0.5))),
                ElementsAre("fill #FF0000 45,45 10x10 own 0.25 opacity 0.25"));
    EXPECT_THAT(lines(listOf(pair.opacity(0.5))),
                ElementsAre("begin 0.5", "fill #FF0000 45,45 10x10 opacity 0.5",
                            "fill #1A1A21 45,45 10x10 opacity 0.5", "end 0.5"));
    EXPECT_THAT(lines(listOf(ZStack({}, square(red).opacity(0.5), square(navy)).opacity(0.5))),
                ElementsAre("begin 0.5", "fill #FF0000 45,45 10x10 own 0.5 opacity 0.25",
                            "fill #1A1A21 45,45 10x10 opacity 0.5", "end 0.5"));
    EXPECT_THAT(lines(listOf(square(red).opacity(0))),
                ElementsAre("fill #FF0000 45,45 10x10 own 0 opacity 0"))
        << "what cannot be seen is listed all the same";
    EXPECT_THAT(lines(listOf(ZStack({}, View()).opacity(0.5))), ElementsAre());
    EXPECT_THAT(lines(listOf(square(red).opacity(7))), ElementsAre("fill #FF0000 45,45 10x10"));
}

TEST(DisplayList, CutsWhatOverflowsAndRoundsWhatFits) {
    const View picture = Image("Logo", {.isResizable = true});
    EXPECT_THAT(lines(listOf(
                    picture.frame({.width = 30, .height = 20}).clipShape(4, RoundedCornerStyle::continuous))),
                ElementsAre(R"(image "Logo" 35,40 30x20 radius 4 continuous)"));
    EXPECT_THAT(lines(listOf(picture.aspectRatio({}, ContentMode::fill)
                                 .frame({.width = 20, .height = 20})
                                 .clipShape(4, RoundedCornerStyle::circular))),
                ElementsAre(R"(image "Logo" 30,40 40x20 within 40,40 20x20 radius 4)"));
    EXPECT_THAT(lines(listOf(words("abcd").body().fixedSize(true, true).frame({.width = 10}).clipped())),
                ElementsAre(R"(text "abcd" 40,45 20x10 system 10 #000000 within 45,45 10x10)"));
    EXPECT_THAT(lines(listOf(square(red).padding(5).clipped())), ElementsAre("fill #FF0000 45,45 10x10"))
        << "a cut around the whole of it changes nothing";
}

TEST(DisplayList, CutsAColumnAtTheFootOfItsLastWholeChild) {
    const auto cutFoot = [](double height, std::vector<View> children) {
        node::Frame size;
        size.minHeight = 0.0;
        size.maxHeight = height;
        size.alignment = {HorizontalAlignment::center, VerticalAlignment::top};
        const View rows = VStack({.spacing = 5}, std::move(children)).padding({.top = 3}).frame(size);
        const DisplayList list = listOf(rows.clippedAtChildEdge().frame(
            {.height = 100, .alignment = {HorizontalAlignment::center, VerticalAlignment::top}}));
        const std::vector<Clip>& clips = list.items.back().clips;
        return clips.empty() ? -1.0 : clips.back().frame.height;
    };
    const View row = words("row");
    EXPECT_DOUBLE_EQ(cutFoot(40, {row, row, row, row}), 28) << "3 + 10 + 5 + 10";
    EXPECT_DOUBLE_EQ(cutFoot(40, {Group({row, row}), row}), 28);
    EXPECT_DOUBLE_EQ(cutFoot(8, {row, row}), 8) << "where no child fits, the cut stays";
    EXPECT_DOUBLE_EQ(cutFoot(40, {row, row}), 40) << "and where all fit";
}

TEST(DisplayList, ListsLinksByTheirLabelsFramesWithinAllCuts) {
    const View label = square(red).padding(5);
    EXPECT_THAT(links(listOf(Link("a://1", label))), ElementsAre("a://1 40,40 20x20"));
    EXPECT_THAT(links(listOf(Link("a://1", box(300, 10)))), ElementsAre("a://1 0,45 100x10"));
    EXPECT_THAT(links(listOf(Link("a://1", label).frame({.width = 10}).clipped())),
                ElementsAre("a://1 45,40 10x20"));
    EXPECT_THAT(links(listOf(HStack({.spacing = 0}, Link("a://1", box(10, 10)), Link("a://2", box(10, 10)))
                                 .frame({.width = 10, .alignment = {HorizontalAlignment::leading, {}}})
                                 .clipped())),
                ElementsAre("a://1 45,45 10x10", "a://2 55,45 0x0"))
        << "nothing of the second is to be seen";
    EXPECT_THAT(links(listOf(Link("a://outer", square(red).overlay(Link("a://inner", square(navy)))))),
                ElementsAre("a://outer 45,45 10x10", "a://inner 45,45 10x10"))
        << "the one on top comes later";
}

TEST(DisplayList, HonoursLinksInTheSmallFamilyFromVersion17On) {
    const View root = Link("a://part", square(red))
                          .widgetURL("a://first")
                          .overlay(words("x").body().widgetURL("a://last"))
                          .widgetURL("a://outer");
    struct FamilyCase {
        std::string family;
        int osVersion;
        std::size_t links;
    };
    for (const FamilyCase& with : {FamilyCase{"systemSmall", 16, 0}, FamilyCase{"systemSmall", 17, 1},
                                   FamilyCase{"systemMedium", 16, 1}, FamilyCase{"systemLarge", 18, 1}}) {
        const DisplayList list = listOf(root, options(with.family, with.osVersion));
        EXPECT_EQ(list.links.size(), with.links) << with.family << " " << with.osVersion;
        EXPECT_EQ(list.widgetURL, "a://last") << "the last in the tree wins";
    }
    EXPECT_EQ(listOf(square(red)).widgetURL, std::nullopt);
}

}  // namespace
}  // namespace host
