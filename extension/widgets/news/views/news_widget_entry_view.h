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

}  // namespace extension
