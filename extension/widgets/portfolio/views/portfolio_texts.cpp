#include "extension/widgets/portfolio/views/portfolio_texts.h"

#include "extension/theme/hex_codec.h"
#include "extension/ui/common/widget_item_texts.h"

namespace extension {

using namespace platform;

View PWidgetRegularText::body() const {
    return oneLine(value, Font::system(isCompact ? font - 2.0 : font), color);
}

View PWidgetItemTitle::body() const {
    const Font face =
        isCompact ? Font::system(font - 2.0, FontWeight::regular) : Font::system(font, FontWeight::bold);
    return Text(value, face).foregroundColor(color).multilineTextAlignment(HorizontalAlignment::center);
}

View PWidgetItemValue::body() const {
    const Font face =
        isCompact ? Font::system(12.0, FontWeight::regular) : Font::system(14.0, FontWeight::bold);
    return oneLine(value, face, color);
}

View PWDivider::body() const {
    return Divider()
        .foregroundColor(color)
        .opacity(0.5)
        .frame({.height = isCompact ? 1.0 : 2.0})
        .frame({.height = isCompact ? 2.0 : 4.0});
}

View RupeeSymbol::body() const {
    // The amount is shortened before the sign is.
    return Text("₹", regularFont(isCompact ? 10.0 : 12.0)).body().fixedSize(true, true);
}

View outlined(const View& label) {
    return label.overlay(RoundedRectangle(
        {.cornerRadius = 6.0,
         .style = RoundedCornerStyle::continuous,
         .fill = {},
         .stroke =
             node::Stroke{.color = colorFromHexString("#28659D"), .lineWidth = 1.0, .miterLimit = 10.0}}));
}

}  // namespace extension
