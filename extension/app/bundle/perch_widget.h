#pragma once

// Live quotes of the chosen assets, as the system sees the widget.

#include <memory>
#include <string>
#include "platform/runtime/runtime.h"
#include "platform/widget/widget.h"

namespace extension {

struct PerchWidget {
    const std::string kind = "PerchWidget";

    std::unique_ptr<platform::WidgetConfiguration> body(const platform::Runtime& runtime) const;
};

}  // namespace extension
