#pragma once

// One asset, in each family.

#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

/// In the medium (compact) and the large family: title over exchange and time on the left, price over change
/// on the right. A tap opens the asset; a row whose link is not an address has no link.
struct MultiAssetView {
    const PerchMultiAssetsVM& row;
    const PerchTimelineEntry& entry;
    bool isCompact = false;

    platform::View body() const;
};

/// In the small family. A tap opens the asset. A link that is not an address is fatal from version 17 on;
/// before that the row is drawn without a link.
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

/// The colour of a row's change: green for a profit, red for a loss, the same two in every theme;
/// otherwise the entry's text colour.
platform::Color changeColor(const PerchMultiAssetsVM& row, const PerchTimelineEntry& entry);

}  // namespace extension
