#include "extension/widgets/perch/views/multi_asset_view.h"

#include "extension/theme/hex_codec.h"
#include "extension/ui/common/widget_item_texts.h"
#include "extension/widgets/perch/views/widget_links.h"

namespace extension {
namespace {

using platform::Font;
using platform::HorizontalAlignment;
using platform::Text;
using platform::View;
using platform::VStack;

/// The row's price pair.
struct PriceView {
    const PerchMultiAssetsVM& row;
    const PerchTimelineEntry& entry;
    bool isCompact = false;

    View body() const {
        return VStack(
            {.alignment = HorizontalAlignment::trailing, .spacing = 1},
            Text(row.currentPrice, Font::custom("SFCompactDisplay-Medium", isCompact ? 13 : 15))
                .foregroundColor(entry.textColor)
                .lineLimit(1),
            Text(row.changeWithPercent, Font::custom("SFCompactDisplay-Regular", isCompact ? 10 : 12))
                .foregroundColor(changeColor(row, entry))
                .lineLimit(1));
    }
};

struct NameView {
    const PerchMultiAssetsVM& row;
    const PerchTimelineEntry& entry;
    bool isCompact = false;

    View body() const {
        return VStack({.alignment = HorizontalAlignment::leading, .spacing = 1},
                      Text(row.title, Font::custom("SFCompactDisplay-Medium", isCompact ? 13 : 15))
                          .foregroundColor(entry.textColor)
                          .lineLimit(1),
                      WidgetItemSubTitle{
                          .value = row.exchgWithTime, .color = entry.dateTimeColor, .isCompact = isCompact});
    }
};

}  // namespace

View MultiAssetView::body() const {
    const double margin = isCompact ? 4.5 : 6.0;
    const View cell =
        platform::HStack(
            {.spacing = 8},
            View(NameView{.row = row, .entry = entry, .isCompact = isCompact})
                .frame({.maxWidth = platform::infinity,
                        .alignment = {.horizontal = HorizontalAlignment::leading}}),
            // A long title gives way to the price.
            View(PriceView{.row = row, .entry = entry, .isCompact = isCompact}).layoutPriority(1))
            .padding({.top = margin, .bottom = margin});
    return isAddress(row.deeplinkURL) ? platform::Link(row.deeplinkURL, cell) : cell;
}

platform::Color changeColor(const PerchMultiAssetsVM& row, const PerchTimelineEntry& entry) {
    if (!row.isProfit) return entry.textColor;
    return colorFromHexString(*row.isProfit ? "#097100" : "#C40A10");
}

}  // namespace extension
