#pragma once

// One story of the News widget.

#include "extension/widgets/news/model/news_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

/// Picture, headline, and the line between it and the next story.
struct NewsCellView {
    const NewsUIVM& story;
    const NewsTimelineEntry& entry;
    bool isCompact = false;
    bool isLast = false;

    platform::View body() const;
};

/// The story's picture, or the asset "Placeholder" at the same size, with the badge of its type. Its width
/// is fixed; its height is 3:2 or the room there is.
struct ThumbnailView {
    const NewsUIVM& story;
    bool isCompact = false;

    platform::View body() const;
};

/// Two lines compact, three full, which are never dropped, however little room there is. A live story's text
/// has no limit and is cut to the room there is.
struct HeadlineTextView {
    const NewsUIVM& story;
    const NewsTimelineEntry& entry;
    bool isCompact = false;

    platform::View body() const;
};

}  // namespace extension
