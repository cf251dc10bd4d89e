#pragma once

// One asset in the medium (compact) and the large family.

#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

/// Title over exchange and time on the left, price over change on the right. A tap opens the asset;
/// a row whose link is not an address has no link.
struct MultiAssetView {
    const PerchMultiAssetsVM& row;
    const PerchTimelineEntry& entry;
    bool isCompact = false;

    platform::View body() const;
};

/// The colour of a row's change: green for a profit, red for a loss, the same two in every theme;
/// otherwise the entry's text colour.
platform::Color changeColor(const PerchMultiAssetsVM& row, const PerchTimelineEntry& entry);

}  // namespace extension
