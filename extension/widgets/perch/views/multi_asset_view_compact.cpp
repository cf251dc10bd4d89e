#include "extension/widgets/perch/views/multi_asset_view_compact.h"

#include "extension/ui/common/widget_item_texts.h"
#include "extension/ui/common/widget_links.h"
#include "extension/widgets/perch/views/multi_asset_view.h"

namespace extension {

using namespace platform;

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

}  // namespace extension
