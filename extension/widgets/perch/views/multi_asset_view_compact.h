#pragma once

// One asset in the small family.

#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

/// A tap opens the asset. A link that is not an address is fatal from version 17 on; before that the row is
/// drawn without a link.
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
