#include "extension/widgets/perch/views/perch_widget_entry_view.h"

#include <vector>
#include "extension/app/settings/deep_links.h"
#include "extension/ui/common/widget_item_texts.h"
#include "extension/ui/common/widget_links.h"
#include "extension/widgets/perch/views/multi_asset_view.h"

namespace extension {

using namespace platform;

namespace {

constexpr double sideMargin = 14.0;

View rowsView(const PerchTimelineEntry& entry, WidgetFamily family, const EnvironmentValues& environment) {
    const bool isCompact = family != WidgetFamily::systemLarge;
    std::vector<View> rows;
    for (const PerchMultiAssetsVM& row : *entry.multiAssetDataListItem) {
        const View view = family == WidgetFamily::systemSmall
                              ? MultiAssetViewCompact{.row = row, .entry = entry}.body(environment)
                              : MultiAssetView{.row = row, .entry = entry, .isCompact = isCompact}.body();
        // The line is part of the row below it, so that none is left over where the rows are cut off.
        rows.push_back(
            rows.empty() ? view
                         : VStack({.spacing = 0},
                                  WidgetDivider{.color = entry.dateTimeColor, .isCompact = isCompact}, view));
    }
    return VStack({.spacing = 0}, std::move(rows))
        .frame({.maxWidth = infinity,
                .minHeight = 0,
                .maxHeight = infinity,
                .alignment = {.vertical = VerticalAlignment::top}})
        .clippedAtChildEdge()
        .padding({.top = 6, .leading = sideMargin, .trailing = sideMargin});
}

View noRowsView() {
    return View(AddNoAssetsView{})
        .padding({.leading = sideMargin, .trailing = sideMargin})
        .frame({.maxWidth = infinity, .minHeight = 0, .maxHeight = infinity});
}

}  // namespace

View PerchWidgetEntryView::body(const EnvironmentValues& environment) const {
    return PerchWidgetView{.entry = entry, .family = environment.widgetFamily}.body(environment);
}

View PerchWidgetView::body(const EnvironmentValues& environment) const {
    const bool isLarge = family == WidgetFamily::systemLarge;
    const bool hasRows = entry.multiAssetDataListItem && !entry.multiAssetDataListItem->empty();

    std::vector<View> parts;
    if (isLarge) parts.push_back(Image("AppLogo").padding({.top = 10}));
    parts.push_back(hasRows ? rowsView(entry, family, environment) : noRowsView());
    parts.push_back(PerchWidgetSettingView{.isCompact = !isLarge}.body(environment));
    return VStack({.spacing = 0}, std::move(parts));
}

View AddNoAssetsView::body() const {
    return Text("Add stock or index of your choice by clicking the perch widget.", Font::system(14))
        .multilineTextAlignment(HorizontalAlignment::center);
}

View PerchWidgetSettingView::body(const EnvironmentValues& environment) const {
    const PerchWidgetSetting label{.isCompact = isCompact};
    // Before version 17 a small widget only has one link, for the whole of it.
    if (isCompact && environment.osVersion < 17) return requiredWidgetURL(configureWidgetLink, label);
    return requiredLink(configureWidgetLink, label);
}

View PerchWidgetSetting::body() const {
    // The frame makes the whole strip a target for the finger, not just what is drawn on it.
    if (isCompact)
        return HStack({.spacing = 0}, Image("Setting"), Spacer(), Image("logo"))
            .padding({.leading = 14, .trailing = 14})
            .frame({.height = 26});
    return HStack({.spacing = 6}, Image("Setting"), Text("Perch Widget", Font::system(15)).lineLimit(1))
        .frame({.maxWidth = infinity})
        .frame({.height = 30});
}

}  // namespace extension
