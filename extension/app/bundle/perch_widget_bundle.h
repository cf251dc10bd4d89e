#pragma once

// The widgets as the system sees them, and the bundle that offers them.

#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include "extension/app/settings/widget_names.h"
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

/// Any thread may ask the widgets; the bundle and `runtime` outlive their answers.
class PerchWidgetBundle {
public:
    explicit PerchWidgetBundle(const platform::Runtime& runtime);

    /// News, Perch, Portfolio.
    const std::vector<std::unique_ptr<platform::WidgetConfiguration>>& body() const { return widgets_; }
    /// Null when there is no widget of that kind.
    platform::WidgetConfiguration* widget(std::string_view kind) const;

private:
    std::vector<std::unique_ptr<platform::WidgetConfiguration>> widgets_;
};

}  // namespace extension
