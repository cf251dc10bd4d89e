#pragma once

// One entry of the Portfolio widget's timeline.

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>
#include "extension/widgets/portfolio/model/portfolio_widget_vm.h"
#include "extension/widgets/portfolio/model/pw_api_error.h"
#include "platform/base/clock.h"
#include "platform/base/color.h"
#include "platform/base/uuid.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// Its colours and its icon follow the theme at the moment when it is made.
struct PWTimelineEntry {
    PWTimelineEntry(const platform::Runtime& runtime, platform::Instant moment,
                    std::vector<PortfolioWidgetVM> rows, PWAPIError state);

    platform::UUID id;
    platform::Instant date;
    /// Empty unless the state is `success`.
    std::vector<PortfolioWidgetVM> portfolioWidgetVM;
    platform::Color backgroundColor;
    platform::Color textColor;
    platform::Color dateTimeColor;
    PWAPIError apiError;
    std::string portfolioIcon;
    /// Whether the colours are those of the dark theme.
    bool isDark = true;
};

nlohmann::ordered_json entryJson(const PWTimelineEntry& entry);

}  // namespace extension
