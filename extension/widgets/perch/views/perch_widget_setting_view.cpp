#include "extension/widgets/perch/views/perch_widget_setting_view.h"

#include "extension/app/settings/deep_links.h"
#include "extension/widgets/perch/views/widget_links.h"

namespace extension {

using platform::HStack;
using platform::Image;
using platform::Spacer;
using platform::View;

View PerchWidgetSettingView::body(const platform::EnvironmentValues& environment) const {
    const PerchWidgetSetting label{.isCompact = isCompact};
    // Small widgets know no links of their own before version 17, only the whole widget's.
    if (isCompact && environment.osVersion < 17) return requiredWidgetURL(configureWidgetLink, label);
    return requiredLink(configureWidgetLink, label);
}

View PerchWidgetSetting::body() const {
    // The frame makes the whole strip a target for the finger, not just what is drawn on it.
    if (isCompact)
        return HStack({.spacing = 0}, Image("Setting"), Spacer(), Image("logo"))
            .padding({.leading = 14, .trailing = 14})
            .frame({.height = 26});
    return HStack({.spacing = 6}, Image("Setting"),
                  platform::Text("Perch Widget", platform::Font::system(15)).lineLimit(1))
        .frame({.maxWidth = platform::infinity})
        .frame({.height = 30});
}

}  // namespace extension
