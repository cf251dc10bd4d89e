#include "extension/widgets/news/views/news_cell_view.h"

#include "extension/ui/common/widget_item_texts.h"

namespace extension {

using namespace platform;

namespace {

constexpr const char* fallbackPicture = "Placeholder";

View picture(const NewsUIVM& story) {
    if (!story.thumbnailData) return Image(fallbackPicture, {.isResizable = true});
    return Image(*story.thumbnailData, fallbackPicture, {.isResizable = true});
}

}  // namespace

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
