#include "extension/widgets/perch/views/multi_asset_view_compact.h"

#include "extension/widgets/perch/views/multi_asset_view.h"
#include "extension/widgets/perch/views/widget_links.h"

namespace extension {

using platform::Font;
using platform::HorizontalAlignment;
using platform::HStack;
using platform::Text;
using platform::View;
using platform::VStack;

View MultiAssetViewCompact::body(const platform::EnvironmentValues& environment) const {
    const View cell = MultiAssetViewCompactViewCell{.row = row, .entry = entry};
    if (environment.osVersion >= 17) return requiredLink(row.deeplinkURL, cell);
    return isAddress(row.deeplinkURL) ? cell.widgetURL(row.deeplinkURL) : cell;
}

View MultiAssetViewCompactViewCell::body() const {
    return VStack({.alignment = HorizontalAlignment::trailing, .spacing = 1},
                  HStack({.spacing = 6},
                         View(Text(row.title, Font::custom("SFCompactDisplay-Medium", 11))
                                  .foregroundColor(entry.textColor)
                                  .lineLimit(1))
                             .frame({.maxWidth = platform::infinity,
                                     .alignment = {.horizontal = HorizontalAlignment::leading}}),
                         // A long title gives way to the price.
                         View(Text(row.currentPrice, Font::custom("SFCompactDisplay-Regular", 11))
                                  .foregroundColor(entry.textColor)
                                  .lineLimit(1))
                             .layoutPriority(1)),
                  Text(row.changeWithPercent, Font::custom("SFCompactDisplay-Regular", 10))
                      .foregroundColor(changeColor(row, entry))
                      .lineLimit(1))
        .padding({.top = 6, .bottom = 6});
}

}  // namespace extension
