#pragma once

// What the Perch widget shows for an entry, and one asset in each family.

#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

struct PerchWidgetEntryView {
    const PerchTimelineEntry& entry;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

/// From top to bottom: the app's logo (large family), the rows or what to do when there are none, and
/// the settings strip. Logo and strip are always whole; rows that do not fit between them are cut off at
/// the foot of the last one that does.
struct PerchWidgetView {
    const PerchTimelineEntry& entry;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

/// The empty state.
struct AddNoAssetsView {
    platform::View body() const;
};

/// The strip at the widget's foot, which opens the choice of assets in the phone app.
struct PerchWidgetSettingView {
    bool isCompact = false;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

/// The strip's label: a gear, and beside it the app's mark (compact) or the widget's name.
struct PerchWidgetSetting {
    bool isCompact = false;

    platform::View body() const;
};

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
