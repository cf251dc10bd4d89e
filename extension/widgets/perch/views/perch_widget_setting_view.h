#pragma once

// The strip at the widget's foot, which opens the choice of assets in the phone app.

#include "platform/view/view.h"

namespace extension {

struct PerchWidgetSettingView {
    bool isCompact = false;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

/// The strip's label: a gear, and beside it the app's mark (compact) or the widget's name.
struct PerchWidgetSetting {
    bool isCompact = false;

    platform::View body() const;
};

}  // namespace extension
