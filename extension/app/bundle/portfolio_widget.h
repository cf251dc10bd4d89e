#pragma once

// The signed-in user's portfolio at a glance, as the system sees the widget.

#include <memory>
#include <string>
#include "platform/runtime/runtime.h"
#include "platform/widget/widget.h"

namespace extension {

struct PortfolioWidget {
    const std::string kind = "PortfolioWidget";

    std::unique_ptr<platform::WidgetConfiguration> body(const platform::Runtime& runtime) const;
};

}  // namespace extension
