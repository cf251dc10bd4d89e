#pragma once

// The top stories, as the system sees the widget.

#include <memory>
#include <string>
#include "platform/runtime/runtime.h"
#include "platform/widget/widget.h"

namespace extension {

struct NewsWidget {
    const std::string kind = "NewsWidget";

    std::unique_ptr<platform::WidgetConfiguration> body(const platform::Runtime& runtime) const;
};

}  // namespace extension
