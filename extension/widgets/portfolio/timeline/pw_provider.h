#pragma once

// The Portfolio widget's timelines: fetched while the market is open, the saved rows at other times.

#include <functional>
#include <memory>
#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "extension/widgets/portfolio/timeline/pw_view_model.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

namespace extension {

class PWProvider {
public:
    using Entry = PWTimelineEntry;

    /// `runtime` must outlive the provider and its fetches.
    explicit PWProvider(const platform::Runtime& runtime)
        : pwViewModel(std::make_shared<PWViewModel>(runtime)) {}

    /// Never waits: `nonLogin` when nobody is signed in, `failed` otherwise; the answer of the
    /// request that it starts is not used.
    PWTimelineEntry placeholder(const platform::TimelineProviderContext& context);

    /// Asks at any hour.
    void getSnapshot(const platform::TimelineProviderContext& context,
                     std::function<void(PWTimelineEntry)> completion);

    /// From 09:00:00 to 16:00:00 of the user's calendar, both included, it asks and wants to be asked
    /// again in 30 seconds. At other hours it answers with the saved rows, however old, before it returns,
    /// and asks when there are none. Calls `completion` exactly once.
    void getTimeline(const platform::TimelineProviderContext& context,
                     std::function<void(platform::Timeline<PWTimelineEntry>)> completion);

    std::shared_ptr<PWViewModel> pwViewModel;
};

}  // namespace extension
