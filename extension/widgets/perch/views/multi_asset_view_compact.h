#pragma once

// One asset in the small family.

#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

/// A tap opens the asset. From version 17 on a link that is no address is fatal; before, the row is then
/// drawn without one.
struct MultiAssetViewCompact {
    const PerchMultiAssetsVM& row;
    const PerchTimelineEntry& entry;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

/// Title and price on one line, the change below the price.
struct MultiAssetViewCompactViewCell {
    const PerchMultiAssetsVM& row;
    const PerchTimelineEntry& entry;

    platform::View body() const;
};

}  // namespace extension
