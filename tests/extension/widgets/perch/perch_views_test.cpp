#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>
#include "extension/widgets/perch/views/perch_widget_entry_view.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

using nlohmann::ordered_json;
using platform::WidgetFamily;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string configure = "brightledgerwidget://configureWidget";
const platform::Color ink = platform::Color::rgb(0.25, 0.25, 0.25);
const platform::Color faint = platform::Color::rgb(0.5, 0.5, 0.5);

PerchMultiAssetsVM rowOf(const std::string& title, std::optional<bool> isProfit = true) {
    PerchMultiAssetsVM row;
    row.title = title;
    row.currentPrice = title + " price";
    row.changeWithPercent = title + " change";
    row.exchgWithTime = title + " time";
    row.deeplinkURL = "brightledgerwidget://" + title;
    row.isProfit = isProfit;
    return row;
}

PerchTimelineEntry entryOf(std::optional<std::vector<PerchMultiAssetsVM>> rows) {
    PerchTimelineEntry entry;
    entry.multiAssetDataListItem = std::move(rows);
    entry.textColor = ink;
    entry.dateTimeColor = faint;
    return entry;
}

ordered_json treeOf(const PerchTimelineEntry& entry, WidgetFamily family, int osVersion = 18) {
    return platform::viewJson(
        PerchWidgetEntryView{entry}.body({.widgetFamily = family, .osVersion = osVersion}));
}

void collect(const ordered_json& node, const std::string& type, std::vector<ordered_json>& found) {
    if (node.at("type") == type) found.push_back(node);
    for (const auto& child : node.value("children", ordered_json::array())) collect(child, type, found);
    if (node.contains("content")) collect(node.at("content"), type, found);
    if (node.contains("layer")) collect(node.at("layer"), type, found);
}

std::vector<ordered_json> nodesOf(const ordered_json& tree, const std::string& type) {
    std::vector<ordered_json> found;
    collect(tree, type, found);
    return found;
}

std::vector<std::string> membersOf(const ordered_json& tree, const std::string& type,
                                   const std::string& member) {
    std::vector<std::string> members;
    for (const auto& node : nodesOf(tree, type)) members.push_back(node.at(member));
    return members;
}

std::vector<std::string> textsOf(const ordered_json& tree) {
    std::vector<std::string> texts;
    for (const auto& node : nodesOf(tree, "text")) texts.push_back(node.at("runs").at(0).at("text"));
    return texts;
}

ordered_json runOf(const ordered_json& tree, const std::string& text) {
    for (const auto& node : nodesOf(tree, "text")) {
        if (node.at("runs").at(0).at("text") == text) return node.at("runs").at(0);
    }
    return nullptr;
}

TEST(PerchViews, StackLogoRowsAndStripFromTopToBottom) {
    const auto entry = entryOf({{rowOf("a"), rowOf("b")}});

    const auto large = treeOf(entry, WidgetFamily::systemLarge);
    EXPECT_EQ(large.at("type"), "vstack");
    EXPECT_EQ(large.at("alignment"), "center");
    EXPECT_EQ(large.at("spacing"), 0);
    ASSERT_EQ(large.at("children").size(), 3U);
    const auto& logo = large.at("children").at(0);
    EXPECT_EQ(logo.at("type"), "padding");
    EXPECT_EQ(logo.at("top"), 10);
    EXPECT_EQ(logo.at("content").at("name"), "AppLogo");
    EXPECT_THAT(textsOf(large), ElementsAre("a", "a time", "a price", "a change", "b", "b time", "b price",
                                            "b change", "Perch Widget"));
    EXPECT_THAT(membersOf(large, "image", "name"), ElementsAre("AppLogo", "Setting"));

    const auto medium = treeOf(entry, WidgetFamily::systemMedium);
    EXPECT_EQ(medium.at("children").size(), 2U);
    EXPECT_THAT(textsOf(medium),
                ElementsAre("a", "a time", "a price", "a change", "b", "b time", "b price", "b change"));
    EXPECT_THAT(membersOf(medium, "image", "name"), ElementsAre("Setting", "logo"));

    const auto small = treeOf(entry, WidgetFamily::systemSmall);
    EXPECT_EQ(small.at("children").size(), 2U);
    EXPECT_THAT(textsOf(small), ElementsAre("a", "a price", "a change", "b", "b price", "b change"));
    EXPECT_THAT(membersOf(small, "image", "name"), ElementsAre("Setting", "logo"));
}

TEST(PerchViews, EveryRowStaysInTheTreeAndIsCutOffAtARowsEdgeAboveTheStrip) {
    std::vector<PerchMultiAssetsVM> rows;
    for (int place = 0; place < 40; ++place) rows.push_back(rowOf("r" + std::to_string(place)));
    for (const WidgetFamily family : platform::allWidgetFamilies) {
        const auto tree = treeOf(entryOf(rows), family);
        const auto clipped = nodesOf(tree, "clipped");
        ASSERT_EQ(clipped.size(), 1U);
        EXPECT_EQ(nodesOf(clipped[0], "vstack").front().at("children").size(), 40U);
        EXPECT_THAT(membersOf(clipped[0], "image", "name"), IsEmpty()) << "logo and strip are not cut";
        EXPECT_EQ(nodesOf(clipped[0], "divider").size(), 39U);
    }
}

TEST(PerchViews, WithoutRowsSayHowToGetSome) {
    const std::vector<std::optional<std::vector<PerchMultiAssetsVM>>> none{std::nullopt,
                                                                           std::vector<PerchMultiAssetsVM>()};
    const std::string hint = "Add stock or index of your choice by clicking the perch widget.";
    for (const auto& rows : none) {
        const auto large = treeOf(entryOf(rows), WidgetFamily::systemLarge);
        EXPECT_THAT(membersOf(large, "image", "name"), ElementsAre("AppLogo", "Setting"));
        EXPECT_THAT(textsOf(large), ElementsAre(hint, "Perch Widget"));
        EXPECT_THAT(membersOf(large, "link", "url"), ElementsAre(configure));

        const auto small = treeOf(entryOf(rows), WidgetFamily::systemSmall);
        EXPECT_THAT(textsOf(small), ElementsAre(hint));
        EXPECT_EQ(runOf(small, hint).at("font").dump(), R"({"name":"system","size":14,"weight":"regular"})");
        EXPECT_FALSE(runOf(small, hint).contains("color"));
        EXPECT_FALSE(nodesOf(small, "text")[0].contains("lineLimit"));
    }
}

TEST(PerchViews, ATapOpensTheAssetOrTheChoiceAsTheVersionAllows) {
    const auto entry = entryOf({{rowOf("a"), rowOf("b")}});
    const std::string a = "brightledgerwidget://a";
    const std::string b = "brightledgerwidget://b";
    const struct {
        WidgetFamily family;
        int osVersion;
        std::vector<std::string> links, widgetURLs;
    } cases[] = {
        {WidgetFamily::systemSmall, 17, {a, b, configure}, {}},
        {WidgetFamily::systemSmall, 16, {}, {a, b, configure}},
        {WidgetFamily::systemMedium, 17, {a, b, configure}, {}},
        {WidgetFamily::systemMedium, 16, {a, b}, {configure}},
        {WidgetFamily::systemLarge, 17, {a, b, configure}, {}},
        {WidgetFamily::systemLarge, 16, {a, b, configure}, {}},
    };
    for (const auto& each : cases) {
        const auto tree = treeOf(entry, each.family, each.osVersion);
        EXPECT_EQ(membersOf(tree, "link", "url"), each.links) << description(each.family) << each.osVersion;
        EXPECT_EQ(membersOf(tree, "widgetURL", "url"), each.widgetURLs)
            << description(each.family) << each.osVersion;
    }
}

TEST(PerchViews, ARowWhoseLinkIsNoAddressHasNoneWhereItMay) {
    auto row = rowOf("a");
    row.deeplinkURL = "brightledgerwidget://stock/?id=a b";
    const auto entry = entryOf({{row}});
    EXPECT_THAT(membersOf(treeOf(entry, WidgetFamily::systemMedium), "link", "url"), ElementsAre(configure));
    EXPECT_THAT(membersOf(treeOf(entry, WidgetFamily::systemLarge), "link", "url"), ElementsAre(configure));
    EXPECT_THAT(membersOf(treeOf(entry, WidgetFamily::systemSmall, 16), "widgetURL", "url"),
                ElementsAre(configure));
    EXPECT_THAT(textsOf(treeOf(entry, WidgetFamily::systemMedium)), testing::Contains("a price"));
}

TEST(PerchViewsDeathTest, ACompactRowWhoseLinkIsNoAddressIsFatalFromVersion17On) {
    auto row = rowOf("a");
    row.deeplinkURL = "brightledgerwidget://stock/?id=a b";
    const auto entry = entryOf({{row}});
    EXPECT_DEATH(treeOf(entry, WidgetFamily::systemSmall, 17), "fatal error: .*no address");
}

TEST(PerchViews, TheChangeIsGreenOrRedOrLikeTheRest) {
    const std::pair<std::optional<bool>, std::string> colours[] = {
        {true, R"({"hex":"#097100","alpha":1})"},
        {false, R"({"hex":"#C40A10","alpha":1})"},
        {std::nullopt, platform::colorJson(ink).dump()},
    };
    for (const WidgetFamily family : platform::allWidgetFamilies) {
        for (const auto& [isProfit, colour] : colours) {
            const auto tree = treeOf(entryOf({{rowOf("a", isProfit)}}), family);
            EXPECT_EQ(runOf(tree, "a change").at("color").dump(), colour);
            EXPECT_EQ(runOf(tree, "a price").at("color"), platform::colorJson(ink));
            EXPECT_EQ(runOf(tree, "a").at("color"), platform::colorJson(ink));
        }
    }
}

TEST(PerchViews, TheTimeIsInTheEntrysOwnColourForIt) {
    const auto entry = entryOf({{rowOf("a")}});
    for (const WidgetFamily family : {WidgetFamily::systemMedium, WidgetFamily::systemLarge})
        EXPECT_EQ(runOf(treeOf(entry, family), "a time").at("color"), platform::colorJson(faint));
}

TEST(PerchViews, RowTextsAreOneLineAndSmallerInTheCompactForm) {
    const auto entry = entryOf({{rowOf("a")}});
    for (const WidgetFamily family : platform::allWidgetFamilies) {
        for (const auto& text : nodesOf(treeOf(entry, family), "text")) EXPECT_EQ(text.at("lineLimit"), 1);
    }
    for (const std::string text : {"a", "a time", "a price", "a change"}) {
        EXPECT_LT(runOf(treeOf(entry, WidgetFamily::systemMedium), text).at("font").at("size"),
                  runOf(treeOf(entry, WidgetFamily::systemLarge), text).at("font").at("size"))
            << text;
    }
}

}  // namespace
}  // namespace extension
