#include "extension/ui/common/widget_item_texts.h"

#include <utility>
#include "platform/base/diagnostics.h"
#include "platform/url/url.h"

namespace extension {

using namespace platform;

namespace {

std::string required(std::string_view address) {
    std::string text(address);
    if (!isAddress(text)) platform::fatalError("the link of a view is not an address: " + text);
    return text;
}

}  // namespace

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

bool isAddress(std::string_view text) { return platform::URL::parse(text).has_value(); }

platform::View requiredLink(std::string_view address, const platform::View& label) {
    return platform::Link(required(address), label);
}

platform::View requiredWidgetURL(std::string_view address, const platform::View& label) {
    return label.widgetURL(required(address));
}

}  // namespace extension
