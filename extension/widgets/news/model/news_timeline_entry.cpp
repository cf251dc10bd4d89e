#include "extension/widgets/news/model/news_timeline_entry.h"

#include <nlohmann/json.hpp>
#include <utility>
#include "extension/theme/theme_type.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

using nlohmann::ordered_json;

ordered_json storyJson(const NewsUIVM& story) {
    ordered_json json{{"id", story.id.text()},
                      {"thumbnailUrl", story.thumbnailUrl},
                      {"headline", story.headline},
                      {"deeplink", story.deeplink}};
    if (story.storyTypeIncon) json["storyTypeIncon"] = *story.storyTypeIncon;
    if (story.thumbnailData) json["thumbnailData"] = platform::base64Encoded(story.thumbnailData->view());
    json["isLive"] = story.isLive;
    return json;
}

}  // namespace

NewsTimelineEntry::NewsTimelineEntry(const platform::Runtime& runtime, std::vector<NewsUIVM> stories,
                                     bool isSuccessful)
    : date(runtime.now()), newsUIVM(std::move(stories)), isSuccess(isSuccessful) {
    const EntryColors colors = entryColors(runtime);
    backgroundColor = colors.background;
    textColor = colors.text;
    arrowIcon = colors.isDark ? "ArrowDark" : "ArrowLight";
}

ordered_json entryJson(const NewsTimelineEntry& entry) {
    ordered_json stories = ordered_json::array();
    for (const NewsUIVM& story : entry.newsUIVM) stories.push_back(storyJson(story));
    return {{"date", platform::formatInstant(entry.date)},
            {"newsUIVM", std::move(stories)},
            {"isSuccess", entry.isSuccess},
            {"backgroundColor", platform::colorJson(entry.backgroundColor)},
            {"textColor", platform::colorJson(entry.textColor)},
            {"arrowIcon", entry.arrowIcon}};
}

}  // namespace extension
