#include "extension/ui/common/widget_links.h"

#include "platform/base/fatal.h"
#include "platform/url/url.h"

namespace extension {
namespace {

std::string required(std::string_view address) {
    std::string text(address);
    if (!isAddress(text)) platform::fatalError("the link of a view is not an address: " + text);
    return text;
}

}  // namespace

bool isAddress(std::string_view text) { return platform::URL::parse(text).has_value(); }

platform::View requiredLink(std::string_view address, const platform::View& label) {
    return platform::Link(required(address), label);
}

platform::View requiredWidgetURL(std::string_view address, const platform::View& label) {
    return label.widgetURL(required(address));
}

}  // namespace extension
