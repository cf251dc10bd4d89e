#pragma once

// What the Portfolio widget shows for an entry.

#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

/// Picks the content by the entry's state; a failure looks like being signed out.
struct PortfolioWidgetView {
    const PWTimelineEntry& pwTimelineEntry;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

struct PortfolioWidgetEntryView {
    const PWTimelineEntry& portfolioTimelineEntry;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

}  // namespace extension
