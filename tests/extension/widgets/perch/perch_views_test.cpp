// What the views do with entries that the gallery does not show; tests/expected/widgets/ holds the others.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include "extension/widgets/perch/views/perch_widget_entry_view.h"
#include "platform/view/view_json.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::WidgetFamily;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using Rows = std::optional<std::vector<PerchMultiAssetsVM>>;

std::string treeOf(const Rows& rows, WidgetFamily family, int osVersion = 18) {
    const PerchTimelineEntry entry(tests::TestRuntime(), rows);
    return platform::viewJson(
               PerchWidgetEntryView{entry}.body({.widgetFamily = family, .osVersion = osVersion}))
        .dump();
}

Rows rowLinkedTo(const std::string& address) {
    PerchMultiAssetsVM row;
    row.title = "SENSEX";
    row.deeplinkURL = address;
    return {{row}};
}

const std::string notAnAddress = "brightledgerwidget://stock/?id=a b";

TEST(PerchViews, WithoutAListShowTheSameAsWithAnEmptyOne) {
    for (const WidgetFamily family : platform::allWidgetFamilies)
        EXPECT_EQ(treeOf(std::nullopt, family), treeOf(Rows::value_type(), family));
}

// The display list of version 16 does not tell: only the last such link of a widget counts, and that is the
// strip's.
TEST(PerchViews, ACompactRowHasTheWholeWidgetsLinkBeforeVersion17) {
    for (const auto& [osVersion, type] : {std::pair{16, "widgetURL"}, {17, "link"}})
        EXPECT_THAT(treeOf(rowLinkedTo("x://row"), WidgetFamily::systemSmall, osVersion),
                    HasSubstr(std::string(R"({"type":")") + type + R"(","url":"x://row")"));
}

TEST(PerchViews, ARowWhoseLinkIsNotAnAddressIsDrawnWithoutALinkWhereItMay) {
    for (const auto& [family, osVersion] : {std::pair{WidgetFamily::systemMedium, 18},
                                            {WidgetFamily::systemLarge, 18},
                                            {WidgetFamily::systemSmall, 16}})
        EXPECT_THAT(treeOf(rowLinkedTo(notAnAddress), family, osVersion),
                    AllOf(HasSubstr("SENSEX"), Not(HasSubstr("id=a b"))));
}

TEST(PerchViewsDeathTest, ACompactRowWhoseLinkIsNotAnAddressIsFatalFromVersion17On) {
    EXPECT_DEATH(treeOf(rowLinkedTo(notAnAddress), WidgetFamily::systemSmall, 17), "fatal error: .*address");
}

}  // namespace
}  // namespace extension
