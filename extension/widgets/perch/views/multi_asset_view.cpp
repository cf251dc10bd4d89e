#include "extension/widgets/perch/views/multi_asset_view.h"

#include "extension/theme/hex_codec.h"
#include "extension/ui/common/widget_item_texts.h"
#include "extension/ui/common/widget_links.h"

namespace extension {

using namespace platform;

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
