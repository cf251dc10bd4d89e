#pragma once

// The News widget's timelines: always from the network, one entry each.

#include <functional>
#include "extension/widgets/news/model/news_timeline_entry.h"
#include "extension/widgets/news/timeline/news_view_model.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

namespace extension {

class NewsProvider {
public:
    using Entry = NewsTimelineEntry;

    /// `runtime` must outlive the provider and its fetches.
    explicit NewsProvider(const platform::Runtime& runtime) : newsViewModel(runtime), runtime_(runtime) {}

    /// Always the empty entry, at once; the answer of the request that it starts is not used.
    NewsTimelineEntry placeholder(const platform::TimelineProviderContext& context);

    void getSnapshot(const platform::TimelineProviderContext& context,
                     std::function<void(NewsTimelineEntry)> completion);

    /// Wants to be asked again 30 seconds after the call, whatever the answer. Fatal when the calendar cannot
    /// give that moment.
    void getTimeline(const platform::TimelineProviderContext& context,
                     std::function<void(platform::Timeline<NewsTimelineEntry>)> completion);

    NewsViewModel newsViewModel;

private:
    const platform::Runtime& runtime_;
};

}  // namespace extension
