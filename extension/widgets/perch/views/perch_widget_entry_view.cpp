#include "extension/widgets/perch/views/perch_widget_entry_view.h"

#include <vector>
#include "extension/ui/common/widget_divider.h"
#include "extension/widgets/perch/views/multi_asset_view.h"
#include "extension/widgets/perch/views/multi_asset_view_compact.h"
#include "extension/widgets/perch/views/perch_widget_setting_view.h"

namespace extension {
namespace {

using platform::EnvironmentValues;
using platform::View;
using platform::WidgetFamily;

constexpr double sideMargin = 14.0;

View rowView(const PerchMultiAssetsVM& row, const PerchTimelineEntry& entry, WidgetFamily family,
             const EnvironmentValues& environment) {
    switch (family) {
        case WidgetFamily::systemSmall:
            return MultiAssetViewCompact{.row = row, .entry = entry}.body(environment);
        case WidgetFamily::systemMedium: return MultiAssetView{.row = row, .entry = entry, .isCompact = true};
        case WidgetFamily::systemLarge: break;
    }
    return MultiAssetView{.row = row, .entry = entry, .isCompact = false};
}

View rowsView(const PerchTimelineEntry& entry, WidgetFamily family, const EnvironmentValues& environment) {
    const bool isCompact = family != WidgetFamily::systemLarge;
    std::vector<View> rows;
    for (const PerchMultiAssetsVM& row : *entry.multiAssetDataListItem) {
        const View view = rowView(row, entry, family, environment);
        // The line is part of the row below it, so that none is left over where the rows are cut off.
        rows.push_back(rows.empty()
                           ? view
                           : platform::VStack(
                                 {.spacing = 0},
                                 WidgetDivider{.color = entry.dateTimeColor, .isCompact = isCompact}, view));
    }
    return platform::VStack({.spacing = 0}, std::move(rows))
        .frame({.maxWidth = platform::infinity,
                .minHeight = 0,
                .maxHeight = platform::infinity,
                .alignment = {.vertical = platform::VerticalAlignment::top}})
        .clippedAtChildEdge()
        .padding({.top = 6, .leading = sideMargin, .trailing = sideMargin});
}

View noRowsView() {
    return View(AddNoAssetsView{})
        .padding({.leading = sideMargin, .trailing = sideMargin})
        .frame({.maxWidth = platform::infinity, .minHeight = 0, .maxHeight = platform::infinity});
}

}  // namespace

View PerchWidgetEntryView::body(const EnvironmentValues& environment) const {
    return PerchWidgetView{.entry = entry, .family = environment.widgetFamily}.body(environment);
}

View PerchWidgetView::body(const EnvironmentValues& environment) const {
    const bool isLarge = family == WidgetFamily::systemLarge;
    const bool hasRows = entry.multiAssetDataListItem && !entry.multiAssetDataListItem->empty();

    std::vector<View> parts;
    if (isLarge) parts.push_back(platform::Image("AppLogo").padding({.top = 10}));
    parts.push_back(hasRows ? rowsView(entry, family, environment) : noRowsView());
    parts.push_back(PerchWidgetSettingView{.isCompact = !isLarge}.body(environment));
    return platform::VStack({.spacing = 0}, std::move(parts));
}

View AddNoAssetsView::body() const {
    return platform::Text("Add stock or index of your choice by clicking the perch widget.",
                          platform::Font::system(14))
        .multilineTextAlignment(platform::HorizontalAlignment::center);
}

}  // namespace extension
