// What the views do with entries and families that the gallery does not show; tests/expected/widgets/ holds
// the others.

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include "extension/widgets/news/views/news_widget_entry_view.h"
#include "host/layout/display_list.h"
#include "tests/host/layout/plain_measurer.h"
#include "tests/support/expected_text.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::WidgetFamily;
using tests::TestRuntime;

NewsUIVM storyWith(const std::string& headline) {
    NewsUIVM story;
    story.headline = headline;
    story.deeplink = "brightledgerwidget://news/?url=" + headline.substr(0, 1);
    return story;
}

/// Every asset is as large as a thumbnail, and no bytes are a picture.
class Measurer final : public host::PlainMeasurer {
    std::optional<platform::Size> asset(const std::string&) const override { return platform::Size{90, 60}; }
};

std::string textOf(std::vector<NewsUIVM> stories, WidgetFamily family) {
    const TestRuntime runtime;
    const NewsTimelineEntry entry(runtime, std::move(stories), true);
    const platform::View view =
        NewsWidgetEntryView{.entry = entry, .moreNewsLink = "brightledgerwidget://news/"}.body(
            {.widgetFamily = family});
    return host::displayListText(host::makeDisplayList(view,
                                                       {.size = platform::Screen().widgetSize(family),
                                                        .kind = "NewsWidget",
                                                        .family = std::string(description(family))},
                                                       Measurer()));
}

TEST(NewsViews, ShowTwoStoriesInTheOtherFamilies) {
    std::vector<NewsUIVM> stories{storyWith(std::string(99, 'a')), storyWith("b"), storyWith("c")};
    stories[0].thumbnailData = platform::Bytes("not a picture");
    stories[0].storyTypeIncon = "Video";
    stories[1].isLive = true;
    EXPECT_TRUE(tests::isAsExpected("widgets/NewsWidgetCompact.txt",
                                    textOf(stories, WidgetFamily::systemMedium) + "\n" +
                                        textOf({stories[2]}, WidgetFamily::systemSmall)));
}

TEST(NewsViewsDeathTest, AStoryLinkThatIsNotAnAddressEndsTheProcessWhereTheStoryIsShown) {
    std::vector<NewsUIVM> stories{storyWith("a"), storyWith("b"), storyWith("c")};
    stories[2].deeplink = "brightledgerwidget://news/?url=https://web/a b&isArticle=1";
    EXPECT_NE(textOf(stories, WidgetFamily::systemMedium), "");
    EXPECT_DEATH(textOf(stories, WidgetFamily::systemLarge), "fatal error: .*address");
}

}  // namespace
}  // namespace extension
