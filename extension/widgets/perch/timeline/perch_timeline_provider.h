#pragma once

// Answers the widget host's questions about the Perch widget: the chosen assets and their quotes.

#include <functional>
#include <memory>
#include <string>
#include <vector>
#include "extension/app/prices/price_refresh_manager_native.h"
#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "extension/widgets/perch/timeline/perch_widget_view_model.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

namespace extension {

/// Every answer is one entry; whatever goes wrong, it is an entry without rows. Nothing is kept between
/// questions. Any thread; `runtime` outlives it and the answers under way, which do not need the provider.
class PerchTimelineProvider {
public:
    using Entry = PerchTimelineEntry;

    explicit PerchTimelineProvider(const platform::Runtime& runtime)
        : runtime_(runtime), prices_(runtime), viewModel_(runtime) {}

    /// Answers at once, without rows. Starts a request for quotes that nobody waits for.
    Entry placeholder(const platform::TimelineProviderContext& context);

    /// Calls `completion` once: before it returns when there is nothing to ask for, otherwise on the
    /// background queue of the shared session.
    void getSnapshot(const platform::TimelineProviderContext& context,
                     const std::function<void(Entry)>& completion);

    /// Like `getSnapshot`; to be asked again 30 seconds after this call.
    void getTimeline(const platform::TimelineProviderContext& context,
                     const std::function<void(platform::Timeline<Entry>)>& completion);

private:
    struct Selection {
        PerchWidgetViewModel::Assets assets;
        /// In list order, twice when chosen twice; not every asset has one.
        std::vector<std::string> priceIdentifiers;
    };

    Selection selection();

    const platform::Runtime& runtime_;
    PriceRefreshManagerNative prices_;
    PerchWidgetViewModel viewModel_;
};

}  // namespace extension
