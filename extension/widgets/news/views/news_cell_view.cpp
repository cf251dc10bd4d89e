#include "extension/widgets/news/views/news_cell_view.h"

namespace extension {

using platform::Divider;
using platform::Font;
using platform::FontWeight;
using platform::HStack;
using platform::Image;
using platform::Text;
using platform::View;
using platform::VStack;

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
               HStack({.alignment = platform::VerticalAlignment::center, .spacing = 10},
                      ThumbnailView{.story = story, .isCompact = isCompact},
                      View(HeadlineTextView{.story = story, .entry = entry, .isCompact = isCompact})
                          // Short headlines stand in line with long ones.
                          .frame({.maxWidth = platform::infinity,
                                  .alignment = {.horizontal = platform::HorizontalAlignment::leading}})),
               // Transparent under the last story rather than absent, so that it keeps its space.
               Divider().frame({.height = 0.5}).foregroundColor(entry.textColor).opacity(isLast ? 0.0 : 0.5))
        .padding({.top = top, .bottom = 5.5});
}

View ThumbnailView::body() const {
    const double width = isCompact ? 60.0 : 75.0;
    const View thumbnail = picture(story)
                               .frame({.width = width})
                               .frame({.minHeight = 0.0, .maxHeight = width / 1.5})
                               .clipShape(4, platform::RoundedCornerStyle::continuous);
    return story.storyTypeIncon ? thumbnail.overlay(Image(*story.storyTypeIncon).padding(4)) : thumbnail;
}

View HeadlineTextView::body() const {
    const Font regular = Font::custom("SFCompactDisplay-Regular", 12);
    if (story.isLive) {
        const Text text = Text::image("Live") + Text(" Live", Font::system(12, FontWeight::bold)) +
                          Text(" | ", regular) + Text(story.headline, regular);
        return text.foregroundColor(entry.textColor);
    }
    return View(Text(story.headline, regular).foregroundColor(entry.textColor).lineLimit(isCompact ? 2 : 3))
        .fixedSize(false, true);
}

}  // namespace extension
