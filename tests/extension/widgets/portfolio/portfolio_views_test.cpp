#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/widgets/portfolio/views/portfolio_widget_entry_view.h"
#include "platform/view/view_json.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/test_runtime.h"

namespace {

using namespace extension;
using nlohmann::ordered_json;
using platform::WidgetFamily;
using testing::Contains;
using testing::Not;

/// Adds the `member` of every node of the type, and of every run of a text, outermost first.
void collect(const ordered_json& tree, const std::string& type, const std::string& member,
             std::vector<std::string>& found) {
    if (tree.is_object() && tree.value("type", "") == type) {
        if (tree.contains(member)) found.push_back(tree[member]);
        if (type == "text") {
            for (const auto& run : tree["runs"]) found.push_back(run[member]);
        }
    }
    for (const auto& child : tree) {
        if (child.is_structured()) collect(child, type, member, found);
    }
}

std::vector<std::string> all(const ordered_json& tree, const std::string& type, const std::string& member) {
    std::vector<std::string> found;
    collect(tree, type, member, found);
    return found;
}

ordered_json treeOf(const PWTimelineEntry& entry, WidgetFamily family) {
    return platform::viewJson(PortfolioWidgetEntryView{entry}.body({.widgetFamily = family}));
}

std::vector<PortfolioWidgetVM> rows(platform::IdSource& ids) {
    NetworthDetails details;
    details.networth = "12,50,000";
    details.overDirection = "1";
    details.direction = "-1";
    return makeRows(details, ids);
}

TEST(PortfolioViews, ShowARupeeSignBeforeEveryAmountAnEmptyOneToo) {
    const tests::TestRuntime runtime;
    const PWTimelineEntry entry(runtime, runtime.now(), rows(runtime.ids()), PWAPIError::success);
    for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
        const ordered_json tree = treeOf(entry, family);
        const auto texts = all(tree, "text", "text");
        EXPECT_EQ(std::count(texts.begin(), texts.end(), "₹"), 4);
        EXPECT_THAT(texts, Contains("12,50,000"));
        EXPECT_EQ(all(tree, "widgetURL", "url"),
                  std::vector<std::string>{"brightledgerwidget://openPortfolio"});
        EXPECT_THAT(all(tree, "image", "name"), Contains("logo"));
    }
    EXPECT_THAT(all(treeOf(entry, WidgetFamily::systemMedium), "text", "text"), Contains("Portfolio"));
    EXPECT_THAT(all(treeOf(entry, WidgetFamily::systemSmall), "text", "text"), Not(Contains("Portfolio")));
}

TEST(PortfolioViews, ColourGainsAndLossesByTheThemeOfTheEntry) {
    for (const auto& [themeType, gain] : {std::pair{0, "#31D300"}, std::pair{1, "#097100"}}) {
        const tests::TestRuntime runtime;
        store(runtime, keys::themeType, themeType);
        const PWTimelineEntry entry(runtime, runtime.now(), rows(runtime.ids()), PWAPIError::success);
        const std::string tree = treeOf(entry, WidgetFamily::systemMedium).dump();
        EXPECT_THAT(tree, testing::HasSubstr(gain));
        EXPECT_THAT(tree, testing::HasSubstr("#FF3606"));
    }
}

TEST(PortfolioViews, PartTheLinesOfTheMediumFamilyByALineOfHalfTheTextsStrength) {
    const tests::TestRuntime runtime;
    const PWTimelineEntry entry(runtime, runtime.now(), rows(runtime.ids()), PWAPIError::success);
    const std::string tree = treeOf(entry, WidgetFamily::systemMedium).dump();
    EXPECT_THAT(tree, testing::HasSubstr(R"("type":"opacity","value":0.5)"));
    const std::size_t first = tree.find(R"("type":"opacity")");
    EXPECT_EQ(tree.find(R"("type":"opacity")", first + 1), std::string::npos) << "nothing weakens it further";
}

TEST(PortfolioViews, LeadWhereTheStateAsksTo) {
    struct Case {
        PWAPIError state;
        const char* text;
        const char* link;
    };
    const std::vector<Case> cases{
        {PWAPIError::failed, "Please login to check your portfolio", "brightledgerwidget://login"},
        {PWAPIError::nonLogin, "Please login to check your portfolio", "brightledgerwidget://login"},
        {PWAPIError::noPortfolio, "Add Stocks to your Portfolio", "brightledgerwidget://addPortfolio"}};
    const tests::TestRuntime runtime;
    for (const Case& example : cases) {
        const PWTimelineEntry entry(runtime, runtime.now(), {}, example.state);
        for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
            const ordered_json tree = treeOf(entry, family);
            EXPECT_EQ(all(tree, "link", "url"), std::vector<std::string>{example.link});
            EXPECT_THAT(all(tree, "text", "text"), Contains(example.text));
        }
    }
}

}  // namespace
