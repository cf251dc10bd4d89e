#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <variant>
#include <vector>
#include "extension/app/settings/store_keys.h"
#include "extension/theme/hex_codec.h"
#include "extension/widgets/news/views/news_cell_view.h"
#include "extension/widgets/news/views/news_widget_entry_view.h"
#include "tests/extension/shared_settings.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::Bytes;
using platform::EnvironmentValues;
using platform::View;
using platform::WidgetFamily;
using testing::ElementsAre;
using testing::SizeIs;
using tests::TestRuntime;
namespace node = platform::node;

constexpr const char* allNews =
    "brightledgerwidget://news/?isArticle=0&url=https://web.example/sports/All-News/news/";

NewsUIVM story(const std::string& headline, std::optional<StoryType> type = std::nullopt) {
    platform::IdSource ids(1);
    return makeNewsUIVM({.headline = headline, .storyID = headline, .storyType = type}, ids,
                        [](const platform::URL&) { return std::nullopt; });
}

std::vector<NewsUIVM> stories(int count) {
    std::vector<NewsUIVM> all;
    for (int i = 0; i < count; ++i) all.push_back(story(std::to_string(i)));
    return all;
}

View viewOf(const TestRuntime& runtime, std::vector<NewsUIVM> items, WidgetFamily family) {
    const NewsTimelineEntry entry(runtime, std::move(items), true);
    return NewsWidgetEntryView{.entry = entry, .moreNewsLink = allNews}.body(
        EnvironmentValues{.widgetFamily = family});
}

/// Every node of kind `Kind` in tree order.
template <typename Kind>
std::vector<Kind> nodes(const View& view) {
    std::vector<Kind> found;
    const std::function<void(const View&)> look = [&](const View& each) {
        if (const Kind* kind = std::get_if<Kind>(&each.kind())) found.push_back(*kind);
        for (const View& child : each.children()) look(child);
    };
    look(view);
    return found;
}

std::vector<std::string> imageNames(const View& view) {
    std::vector<std::string> names;
    for (const auto& image : nodes<node::Image>(view)) names.push_back(image.name);
    return names;
}

TEST(NewsViews, LargeShowsEveryStoryAndOtherFamiliesTwo) {
    const TestRuntime runtime;
    const struct {
        WidgetFamily family;
        int count;
        std::size_t shown;
    } cases[] = {{WidgetFamily::systemLarge, 5, 5},  {WidgetFamily::systemLarge, 0, 0},
                 {WidgetFamily::systemMedium, 5, 2}, {WidgetFamily::systemMedium, 2, 2},
                 {WidgetFamily::systemMedium, 1, 1}, {WidgetFamily::systemSmall, 3, 2},
                 {WidgetFamily::systemSmall, 0, 0}};
    for (const auto& [family, count, shown] : cases) {
        const auto links = nodes<node::Link>(viewOf(runtime, stories(count), family));
        ASSERT_THAT(links, SizeIs(1 + shown)) << count;
        EXPECT_EQ(links[0].url, allNews);
        for (std::size_t i = 0; i < shown; ++i) EXPECT_EQ(links[1 + i].url, stories(count)[i].deeplink);
    }
}

TEST(NewsViews, TheLastSeparatorKeepsItsPlaceUnseen) {
    const TestRuntime runtime;
    std::vector<double> opacities;
    for (const auto& opacity : nodes<node::Opacity>(viewOf(runtime, stories(3), WidgetFamily::systemLarge))) {
        opacities.push_back(opacity.value);
    }
    // The header's line comes first: its divider and the fill over it.
    EXPECT_THAT(opacities, ElementsAre(0.0, 0.5, 0.5, 0.5, 0.0));
}

TEST(NewsViews, AHeadlineHasTwoOrThreeLinesAndALiveOneNoLimit) {
    const TestRuntime runtime;
    const NewsTimelineEntry entry(runtime, {}, true);
    const auto textOf = [&](const NewsUIVM& item, bool isCompact) {
        return nodes<node::Text>(HeadlineTextView{.story = item, .entry = entry, .isCompact = isCompact})
            .at(0);
    };
    EXPECT_EQ(textOf(story("Headline"), false).lineLimit, 3);
    EXPECT_EQ(textOf(story("Headline"), true).lineLimit, 2);

    const node::Text live = textOf(story("Headline", StoryType::liveblog), false);
    EXPECT_EQ(live.lineLimit, std::nullopt);
    ASSERT_THAT(live.runs, SizeIs(4));
    EXPECT_EQ(live.runs[0].image, "Live");
    EXPECT_EQ(live.runs[1].text, " Live");
    EXPECT_EQ(live.runs[1].font, platform::Font::system(12, platform::FontWeight::bold));
    EXPECT_EQ(live.runs[2].text, " | ");
    EXPECT_EQ(live.runs[3].text, "Headline");
    EXPECT_EQ(live.runs[3].font, platform::Font::custom("SFCompactDisplay-Regular", 12));
    for (std::size_t i = 1; i < 4; ++i) EXPECT_EQ(live.runs[i].color, entry.textColor);
}

TEST(NewsViews, APictureTheWantOfOneAndABadgeStandInTheSameFrame) {
    NewsUIVM item = story("Headline", StoryType::videos);
    const auto frames = [&](bool isCompact) {
        return nodes<node::Frame>(ThumbnailView{.story = item, .isCompact = isCompact});
    };
    EXPECT_THAT(imageNames(ThumbnailView{.story = item}), ElementsAre("Placeholder", "Video"));
    EXPECT_EQ(frames(false).at(0).maxHeight, 50.0);
    EXPECT_EQ(frames(false).at(1).width, 75.0);
    EXPECT_EQ(frames(true).at(0).maxHeight, 40.0);
    EXPECT_EQ(frames(true).at(1).width, 60.0);

    item.thumbnailData = Bytes("no picture");
    item.storyTypeIncon.reset();
    const auto images = nodes<node::Image>(ThumbnailView{.story = item});
    ASSERT_THAT(images, SizeIs(1));
    EXPECT_EQ(images[0].bytes, Bytes("no picture"));
    EXPECT_EQ(images[0].name, "Placeholder") << "drawn when the bytes are no picture";
    EXPECT_EQ(frames(false).at(1).width, 75.0);
}

TEST(NewsViews, ALiveStoryIsPulledUp) {
    const TestRuntime runtime;
    const NewsTimelineEntry entry(runtime, {}, true);
    for (const auto& [type, top] : {std::pair{StoryType::liveblog, -2.0}, std::pair{StoryType::news, 0.5}}) {
        const NewsUIVM item = story("Headline", type);
        const auto paddings = nodes<node::Padding>(NewsCellView{.story = item, .entry = entry});
        EXPECT_EQ(paddings.at(0).insets, (platform::EdgeInsets{.top = top, .bottom = 5.5}));
    }
}

TEST(NewsViews, TheHeaderFollowsTheTheme) {
    const TestRuntime runtime;
    for (const bool isDark : {true, false}) {
        store(runtime, keys::themeType, isDark ? 0 : 1);
        const View view = viewOf(runtime, {}, WidgetFamily::systemLarge);
        EXPECT_THAT(imageNames(view), ElementsAre("AppLogo", isDark ? "ArrowDark" : "ArrowLight"));
        const auto texts = nodes<node::Text>(view);
        ASSERT_THAT(texts, SizeIs(1));
        EXPECT_EQ(texts[0].runs.at(0).text, "View More News");
        EXPECT_EQ(texts[0].runs[0].color, colorFromHexString(isDark ? "#ffffff" : "#000000"));
    }
}

TEST(NewsViewsDeathTest, AStoryLinkThatIsNoAddressEndsTheProcess) {
    const TestRuntime runtime;
    std::vector<NewsUIVM> items = stories(2);
    items[1].deeplink = "brightledgerwidget://news/?url=https://web/a b&isArticle=1";
    EXPECT_DEATH(viewOf(runtime, items, WidgetFamily::systemLarge), "fatal error: .*no address");
    items.push_back(items[0]);
    std::swap(items[1], items[2]);
    EXPECT_THAT(nodes<node::Link>(viewOf(runtime, items, WidgetFamily::systemMedium)), SizeIs(3))
        << "a story that is not shown does no harm";
}

}  // namespace
}  // namespace extension
