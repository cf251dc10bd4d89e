#include "extension/widgets/news/model/news_ui_vm.h"

#include "extension/app/settings/deep_links.h"

namespace extension {
namespace {

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

}  // namespace extension
