#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>
#include "extension/ui/common/dynamic_stack.h"
#include "extension/ui/common/widget_divider.h"
#include "extension/ui/common/widget_item_texts.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

using nlohmann::ordered_json;

const platform::Color ink = platform::Color::rgb(0.2, 0.4, 0.6);

ordered_json stackOf(bool isCompact, std::optional<double> spacing) {
    const platform::View view = DynamicStack{
        .horizontalAlignment = platform::HorizontalAlignment::leading,
        .verticalAlignment = platform::VerticalAlignment::top,
        .spacing = spacing,
        .isCompact = isCompact,
        .content = [] {
            return std::vector<platform::View>{platform::Divider(), platform::Spacer()};
        }}.body();
    const ordered_json group = platform::viewJson(view);
    EXPECT_EQ(group.at("type"), "group");
    EXPECT_EQ(group.at("children").size(), 1U) << "one view, whichever way it turns";
    return group.at("children").at(0);
}

TEST(DynamicStack, IsARowWhenCompactAndAColumnWhenFullWithTheSameSpacing) {
    const ordered_json row = stackOf(true, 3.0);
    EXPECT_EQ(row.at("type"), "hstack");
    EXPECT_EQ(row.at("alignment"), "top");
    EXPECT_EQ(row.at("spacing"), 3);
    EXPECT_EQ(row.at("children").at(0).at("type"), "divider");
    EXPECT_EQ(row.at("children").at(1).at("type"), "spacer");

    const ordered_json column = stackOf(false, 3.0);
    EXPECT_EQ(column.at("type"), "vstack");
    EXPECT_EQ(column.at("alignment"), "leading");
    EXPECT_EQ(column.at("spacing"), 3);
}

TEST(DynamicStack, LeavesAnAbsentSpacingToThePlatformBothWays) {
    EXPECT_FALSE(stackOf(true, std::nullopt).contains("spacing"));
    EXPECT_FALSE(stackOf(false, std::nullopt).contains("spacing"));
}

TEST(ItemTexts, HaveTheirSizesAndOnlyTheFullTitleIsBold) {
    struct Case {
        platform::View view;
        double size;
        std::string weight;
    };
    const Case cases[] = {
        {WidgetItemTitle{"a", ink, true}, 12, "regular"},
        {WidgetItemTitle{"a", ink, false}, 14, "bold"},
        {WidgetItemSubTitle{"a", ink, true}, 10, "regular"},
        {WidgetItemSubTitle{"a", ink, false}, 12, "regular"},
        {WidgetItemSmallTitle{"a", ink, true}, 8, "regular"},
        {WidgetItemSmallTitle{"a", ink, false}, 10, "regular"},
    };
    for (const Case& each : cases) {
        const ordered_json run = platform::viewJson(each.view).at("runs").at(0);
        EXPECT_EQ(run.at("font"),
                  (ordered_json{{"name", "system"}, {"size", each.size}, {"weight", each.weight}}));
        EXPECT_EQ(run.at("color"), platform::colorJson(ink));
        EXPECT_EQ(run.at("text"), "a");
    }
}

TEST(WidgetDivider, StaysThinInTheRoomThatItReserves) {
    for (const auto& [isCompact, inner, outer] :
         {std::tuple{true, 2.0, 4.0}, std::tuple{false, 10.0, 10.0}}) {
        const ordered_json frame = platform::viewJson(WidgetDivider{ink, isCompact}.body());
        EXPECT_EQ(frame.at("height"), outer);
        EXPECT_EQ(frame.at("alignment"), "center");
        EXPECT_EQ(frame.at("content").at("height"), inner);

        const ordered_json tint = frame.at("content").at("content");
        EXPECT_EQ(tint.at("value"), 0.5);
        EXPECT_EQ(tint.at("content").at("color"), platform::colorJson(ink));
        EXPECT_EQ(tint.at("content").at("content").at("type"), "divider");
    }
}

}  // namespace
}  // namespace extension
