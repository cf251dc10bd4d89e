// What the views do with entries that the gallery does not show; tests/expected/widgets/ holds the others.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>
#include "extension/widgets/portfolio/views/portfolio_view.h"
#include "platform/view/view_json.h"
#include "tests/support/test_runtime.h"

namespace {

using namespace extension;
using platform::WidgetFamily;

std::string treeOf(const PWTimelineEntry& entry, WidgetFamily family) {
    return platform::viewJson(PortfolioWidgetEntryView{entry}.body({.widgetFamily = family})).dump();
}

TEST(PortfolioViews, AfterAFailureAskForASignIn) {
    const tests::TestRuntime runtime;
    const PWTimelineEntry failed(runtime, runtime.now(), {}, PWAPIError::failed);
    const PWTimelineEntry signedOut(runtime, runtime.now(), {}, PWAPIError::nonLogin);
    for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium})
        EXPECT_EQ(treeOf(failed, family), treeOf(signedOut, family));
}

TEST(PortfolioViews, ShowARupeeSignBeforeAnEmptyAmountToo) {
    const tests::TestRuntime runtime;
    const PWTimelineEntry entry(runtime, runtime.now(), makeRows({}, runtime.ids()), PWAPIError::success);
    for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
        const std::string tree = treeOf(entry, family);
        int signs = 0;
        for (std::size_t place = 0; (place = tree.find("₹", place)) != std::string::npos; ++place) ++signs;
        EXPECT_EQ(signs, 4);
    }
}

}  // namespace
