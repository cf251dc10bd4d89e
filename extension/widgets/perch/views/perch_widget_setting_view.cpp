#include "extension/widgets/perch/views/perch_widget_setting_view.h"

#include "extension/app/settings/deep_links.h"
#include "extension/ui/common/widget_links.h"

namespace extension {

using namespace platform;

View PerchWidgetSettingView::body(const EnvironmentValues& environment) const {
    const PerchWidgetSetting label{.isCompact = isCompact};
    // Before version 17 a small widget only has one link, for the whole of it.
    if (isCompact && environment.osVersion < 17) return requiredWidgetURL(configureWidgetLink, label);
    return requiredLink(configureWidgetLink, label);
}

View PerchWidgetSetting::body() const {
    // The frame makes the whole strip a target for the finger, not just what is drawn on it.
    if (isCompact)
        return HStack({.spacing = 0}, Image("Setting"), Spacer(), Image("logo"))
            .padding({.leading = 14, .trailing = 14})
            .frame({.height = 26});
    return HStack({.spacing = 6}, Image("Setting"), Text("Perch Widget", Font::system(15)).lineLimit(1))
        .frame({.maxWidth = infinity})
        .frame({.height = 30});
}

}  // namespace extension
