#include "extension/widgets/news/views/news_widget_entry_view.h"

#include <algorithm>
#include <utility>
#include <vector>
#include "extension/ui/common/widget_item_texts.h"

namespace extension {

using namespace platform;

namespace {

constexpr std::size_t storiesWhenCompact = 2;

/// The words and their arrow.
View moreNewsLabel(const NewsTimelineEntry& entry) {
    return HStack({.spacing = 4}, Text("View More News", mediumFont(12)).foregroundColor(entry.textColor),
                  // Two points lower, which is the middle of the words.
                  Image(entry.arrowIcon, {.isResizable = true})
                      .frame({.width = 4.0, .height = 8.0})
                      .padding({.top = 2}));
}

/// One point high and filled; the divider's own line of one pixel would show through.
View headerLine(const Color& color) {
    return Divider().opacity(0.0).frame({.height = 1.0}).overlay(ColorFill(color).opacity(0.5));
}

constexpr const char* fallbackPicture = "Placeholder";

View picture(const NewsUIVM& story) {
    if (!story.thumbnailData) return Image(fallbackPicture, {.isResizable = true});
    return Image(*story.thumbnailData, fallbackPicture, {.isResizable = true});
}

}  // namespace

View NewsWidgetEntryView::body(const EnvironmentValues& environment) const {
    const bool isCompact = environment.widgetFamily != WidgetFamily::systemLarge;
    return VStack({}, NewsHeaderView{.entry = entry, .moreNewsLink = moreNewsLink, .isCompact = isCompact},
                  NewsWidgetView{.entry = entry, .isCompact = isCompact})
        .padding({.top = 20, .leading = 25, .bottom = 20, .trailing = 25});
}

View NewsHeaderView::body() const {
    const View logo = Image("AppLogo", {.isResizable = true})
                          .aspectRatio(std::nullopt, ContentMode::fit)
                          .frame({.height = isCompact ? 24.0 : 30.0});
    return VStack({.spacing = 0},
                  requiredLink(moreNewsLink, HStack({.spacing = 8}, logo, Spacer(), moreNewsLabel(entry))),
                  headerLine(entry.textColor))
        .padding({.top = 5, .bottom = 1.5});
}

View NewsWidgetView::body() const {
    const std::size_t count =
        isCompact ? std::min(storiesWhenCompact, entry.newsUIVM.size()) : entry.newsUIVM.size();
    std::vector<View> links;
    for (std::size_t i = 0; i < count; ++i) {
        const NewsUIVM& story = entry.newsUIVM[i];
        links.push_back(requiredLink(
            story.deeplink,
            NewsCellView{.story = story, .entry = entry, .isCompact = isCompact, .isLast = i + 1 == count}));
    }
    return Group(std::move(links));
}

View NewsCellView::body() const {
    // A live story is pulled up against the story above it.
    const double top = story.isLive ? -2.0 : 0.5;

    return VStack(
               {.spacing = 0},
               HStack({.alignment = VerticalAlignment::center, .spacing = 10},
                      ThumbnailView{.story = story, .isCompact = isCompact},
                      View(HeadlineTextView{.story = story, .entry = entry, .isCompact = isCompact})
                          // Short headlines begin where long ones do.
                          .frame({.maxWidth = infinity,
                                  .alignment = {.horizontal = HorizontalAlignment::leading}})),
               // Transparent under the last story rather than absent, so that it keeps its space.
               Divider().frame({.height = 0.5}).foregroundColor(entry.textColor).opacity(isLast ? 0.0 : 0.5))
        .padding({.top = top, .bottom = 5.5});
}

View ThumbnailView::body() const {
    const double width = isCompact ? 60.0 : 75.0;
    const View thumbnail = picture(story)
                               .frame({.width = width})
                               .frame({.minHeight = 0.0, .maxHeight = width / 1.5})
                               .clipShape(4, RoundedCornerStyle::continuous);
    return story.storyTypeIncon ? thumbnail.overlay(Image(*story.storyTypeIncon).padding(4)) : thumbnail;
}

View HeadlineTextView::body() const {
    const Font regular = regularFont(12);
    if (story.isLive) {
        const Text text = Text::image("Live") + Text(" Live", Font::system(12, FontWeight::bold)) +
                          Text(" | ", regular) + Text(story.headline, regular);
        return text.foregroundColor(entry.textColor);
    }
    return View(Text(story.headline, regular).foregroundColor(entry.textColor).lineLimit(isCompact ? 2 : 3))
        .fixedSize(false, true);
}

}  // namespace extension
