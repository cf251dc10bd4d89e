#include "extension/widgets/news/model/news_timeline_entry.h"

#include <nlohmann/json.hpp>
#include <utility>
#include "extension/app/settings/widget_names.h"
#include "extension/theme/theme_type.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

using nlohmann::ordered_json;

std::optional<std::string> badge(std::optional<StoryType> type) {
    if (type == StoryType::podcast) return "Podcast";
    if (type == StoryType::videos) return "Video";
    if (type == StoryType::photogallery) return "PhotoGallery";
    return std::nullopt;
}

/// "brightledgerwidget://news/?url=...&articleType=...&storyId=...&isArticle=1".
std::string storyLink(const NewsDetails& story) {
    std::string link(widgetScheme);
    // Nothing is encoded on the way: the app takes the share URL as the service wrote it.
    link.append("news/?url=").append(story.shareUrl.value_or(""));
    link.append("&articleType=").append(story.storyType ? rawValue(*story.storyType) : "");
    link.append("&storyId=").append(story.storyID.value_or(""));
    link.append("&isArticle=1");
    return link;
}

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

NewsUIVM makeNewsUIVM(const NewsDetails& story, platform::IdSource& ids,
                      const ThumbnailReader& readThumbnail) {
    NewsUIVM item{.id = ids.next(),
                  .thumbnailUrl = story.thumbnail.value_or(""),
                  .headline = story.headline.value_or(""),
                  .deeplink = storyLink(story),
                  .storyTypeIncon = badge(story.storyType),
                  .thumbnailData = std::nullopt,
                  .isLive = story.storyType == StoryType::liveblog};
    if (const auto url = platform::URL::parse(item.thumbnailUrl)) item.thumbnailData = readThumbnail(*url);
    return item;
}

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
