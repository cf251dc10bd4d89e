#include "extension/ui/common/widget_item_texts.h"

#include <utility>

namespace extension {

using namespace platform;

View oneLine(const std::string& value, Font font, const Color& color) {
    return Text(value, std::move(font)).foregroundColor(color).lineLimit(1);
}

View WidgetItemTitle::body() const {
    return oneLine(value, isCompact ? Font::system(12) : Font::system(14, FontWeight::bold), color);
}

View WidgetItemSubTitle::body() const { return oneLine(value, Font::system(isCompact ? 10 : 12), color); }

View WidgetItemSmallTitle::body() const { return oneLine(value, Font::system(isCompact ? 8 : 10), color); }

View WidgetDivider::body() const {
    return Divider()
        .foregroundColor(color)
        .opacity(0.5)
        .frame({.height = isCompact ? 2.0 : 10.0})
        .frame({.height = isCompact ? 4.0 : 10.0});
}

}  // namespace extension
