#include "extension/widgets/perch/views/perch_widget_entry_view.h"

#include <vector>
#include "extension/app/settings/widget_names.h"
#include "extension/theme/hex_codec.h"
#include "extension/ui/common/widget_item_texts.h"

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

View MultiAssetView::body() const {
    const Font large = mediumFont(isCompact ? 13 : 15);
    const View name = VStack(
        {.alignment = HorizontalAlignment::leading, .spacing = 1}, oneLine(row.title, large, entry.textColor),
        WidgetItemSubTitle{.value = row.exchgWithTime, .color = entry.dateTimeColor, .isCompact = isCompact});
    const View price =
        VStack({.alignment = HorizontalAlignment::trailing, .spacing = 1},
               oneLine(row.currentPrice, large, entry.textColor),
               oneLine(row.changeWithPercent, regularFont(isCompact ? 10 : 12), changeColor(row, entry)));

    const double margin = isCompact ? 4.5 : 6.0;
    const View cell =
        HStack({.spacing = 8},
               name.frame({.maxWidth = infinity, .alignment = {.horizontal = HorizontalAlignment::leading}}),
               // A long title gives way to the price.
               price.layoutPriority(1))
            .padding({.top = margin, .bottom = margin});
    return isAddress(row.deeplinkURL) ? Link(row.deeplinkURL, cell) : cell;
}

View MultiAssetViewCompact::body(const EnvironmentValues& environment) const {
    const View cell = MultiAssetViewCompactViewCell{.row = row, .entry = entry};
    if (environment.osVersion >= 17) return requiredLink(row.deeplinkURL, cell);
    return isAddress(row.deeplinkURL) ? cell.widgetURL(row.deeplinkURL) : cell;
}

View MultiAssetViewCompactViewCell::body() const {
    const View title = oneLine(row.title, mediumFont(11), entry.textColor);
    const View price = oneLine(row.currentPrice, regularFont(11), entry.textColor);
    return VStack({.alignment = HorizontalAlignment::trailing, .spacing = 1},
                  HStack({.spacing = 6},
                         title.frame({.maxWidth = infinity,
                                      .alignment = {.horizontal = HorizontalAlignment::leading}}),
                         // A long title gives way to the price.
                         price.layoutPriority(1)),
                  oneLine(row.changeWithPercent, regularFont(10), changeColor(row, entry)))
        .padding({.top = 6, .bottom = 6});
}

Color changeColor(const PerchMultiAssetsVM& row, const PerchTimelineEntry& entry) {
    if (!row.isProfit) return entry.textColor;
    return colorFromHexString(*row.isProfit ? "#097100" : "#C40A10");
}

}  // namespace extension
