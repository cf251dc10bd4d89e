#pragma once

// The three widgets as the system sees them.

#include <memory>
#include <string>
#include "extension/app/settings/widget_kinds.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/widget.h"

namespace extension {

/// The top stories.
struct NewsWidget {
    const std::string kind{newsWidgetKind};

    std::unique_ptr<platform::WidgetConfiguration> body(const platform::Runtime& runtime) const;
};

/// Live quotes of the chosen assets.
struct PerchWidget {
    const std::string kind{perchWidgetKind};

    std::unique_ptr<platform::WidgetConfiguration> body(const platform::Runtime& runtime) const;
};

/// The signed-in user's portfolio at a glance.
struct PortfolioWidget {
    const std::string kind{portfolioWidgetKind};

    std::unique_ptr<platform::WidgetConfiguration> body(const platform::Runtime& runtime) const;
};

}  // namespace extension
