#include "extension/ui/common/widget_divider.h"

namespace extension {

using namespace platform;

View WidgetDivider::body() const {
    return Divider()
        .foregroundColor(color)
        .opacity(0.5)
        .frame({.height = isCompact ? 2.0 : 10.0})
        .frame({.height = isCompact ? 4.0 : 10.0});
}

}  // namespace extension
