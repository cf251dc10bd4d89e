#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>
#include "extension/widgets/news/views/news_widget_entry_view.h"
#include "tests/host/layout/frames.h"
#include "tests/support/test_runtime.h"

namespace extension {
namespace {

using platform::Bytes;
using tests::TestRuntime;

// The measurer's lines are as high as their font, 12 points, and hold 33 characters beside a thumbnail.
const std::string oneLine = "Short";
const std::string threeLines(99, 'x');
const std::string eightLines(264, 'x');

NewsUIVM anyStory(const std::string& headline, bool isLive = false) {
    NewsUIVM item;
    item.headline = headline;
    item.deeplink = "brightledgerwidget://news/";
    item.isLive = isLive;
    return item;
}

void appendFrames(const std::string& type, const nlohmann::ordered_json& node,
                  std::vector<std::string>& frames) {
    if (node.at("type") == type) frames.push_back(host::frameText(node.at("frame")));
    for (const char* member : {"content", "layer"}) {
        if (node.contains(member)) appendFrames(type, node[member], frames);
    }
    if (!node.contains("children")) return;
    for (const auto& child : node["children"]) appendFrames(type, child, frames);
}

/// The frames of all nodes of that type in the large family, in tree order: "110,66 198x36".
std::vector<std::string> framesOf(const std::string& type, std::vector<NewsUIVM> stories, double height) {
    const TestRuntime runtime;
    const NewsTimelineEntry entry(runtime, std::move(stories), true);
    const platform::View view =
        NewsWidgetEntryView{.entry = entry, .moreNewsLink = "brightledgerwidget://news/"}.body(
            {.widgetFamily = platform::WidgetFamily::systemLarge});
    std::vector<std::string> frames;
    appendFrames(type, host::laidOut(view, {338.0, height}), frames);
    return frames;
}

TEST(NewsLayout, AThumbnailIsThreeToTwoWhereThereIsRoom) {
    const auto thumbnails = framesOf("clipShape", {anyStory(oneLine)}, 354);
    ASSERT_EQ(thumbnails.size(), 1U);
    EXPECT_TRUE(thumbnails[0].starts_with("25,")) << thumbnails[0];
    EXPECT_TRUE(thumbnails[0].ends_with(" 75x50")) << thumbnails[0];
}

TEST(NewsLayout, ThumbnailsGiveWayInHeightAndAPlaceholderExactlyAsAPicture) {
    // 314 points less the header's 37.5, five gaps of 8 and 6.5 around each row.
    const std::vector<std::string> expected{"25,66 75x40.8", "25,121.3 75x40.8", "25,176.6 75x40.8",
                                            "25,231.9 75x40.8", "25,287.2 75x40.8"};
    std::vector<NewsUIVM> stories(5, anyStory(oneLine));
    EXPECT_EQ(framesOf("clipShape", stories, 354), expected);
    for (NewsUIVM& each : stories) each.thumbnailData = Bytes("PICTURE");
    EXPECT_EQ(framesOf("clipShape", stories, 354), expected);
}

TEST(NewsLayout, NoHeadlineIsCutAndWhatIsTooMuchGoesEvenlyIntoTheMargins) {
    const std::vector<NewsUIVM> stories(5, anyStory(threeLines));
    for (const double height : {330.0, 320.0, 310.0}) {
        const auto texts = framesOf("text", stories, height);
        ASSERT_EQ(texts.size(), 6U);
        for (std::size_t i = 1; i < 6; ++i) EXPECT_TRUE(texts[i].ends_with(" 198x36")) << texts[i];
    }
    // All stands within 290 points: the first line under the header's 38.5 and a gap of 8 is where ten
    // points less of height move it up by five.
    EXPECT_EQ(framesOf("text", stories, 330).at(1), "110,66 198x36");
    EXPECT_EQ(framesOf("text", stories, 320).at(1), "110,61 198x36");
}

TEST(NewsLayout, ALiveHeadlineIsShortenedToTheRoomThatFiveStoriesLeave) {
    std::vector<NewsUIVM> stories(5, anyStory(threeLines));
    stories[1] = anyStory(eightLines, true);
    const auto texts = framesOf("text", stories, 330);
    EXPECT_TRUE(texts.at(2).ends_with("x36")) << texts[2];
    EXPECT_EQ(texts.at(1), "110,66 198x36") << "nothing is pushed out of the widget";

    // Alone it shows all that it has to say.
    EXPECT_TRUE(framesOf("text", {anyStory(eightLines, true)}, 354).at(1).ends_with("x108"));
}

}  // namespace
}  // namespace extension
