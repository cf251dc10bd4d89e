#pragma once

// What the News widget shows for an entry: a header, and below it one story after another.

#include <string>
#include "extension/widgets/news/model/news_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

/// The large family shows every story, any other family two of them in a smaller form. Fatal when a link
/// is not an address.
struct NewsWidgetEntryView {
    const NewsTimelineEntry& entry;
    /// To all news, for the header.
    std::string moreNewsLink;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

/// The brand and the way to more news, with a line below.
struct NewsHeaderView {
    const NewsTimelineEntry& entry;
    std::string moreNewsLink;
    bool isCompact = false;

    platform::View body() const;
};

/// The stories, each a link into the phone app, as rows of the stack around them.
struct NewsWidgetView {
    const NewsTimelineEntry& entry;
    bool isCompact = false;

    platform::View body() const;
};

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
