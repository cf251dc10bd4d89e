#include "extension/ui/common/widget_item_texts.h"

namespace extension {
namespace {

using platform::Font;

platform::View oneLine(const std::string& value, const platform::Color& color, Font font) {
    return platform::Text(value, std::move(font)).foregroundColor(color).lineLimit(1);
}

}  // namespace

platform::View WidgetItemTitle::body() const {
    return oneLine(value, color, isCompact ? Font::system(12) : Font::system(14, platform::FontWeight::bold));
}

platform::View WidgetItemSubTitle::body() const {
    return oneLine(value, color, Font::system(isCompact ? 10 : 12));
}

platform::View WidgetItemSmallTitle::body() const {
    return oneLine(value, color, Font::system(isCompact ? 8 : 10));
}

}  // namespace extension
