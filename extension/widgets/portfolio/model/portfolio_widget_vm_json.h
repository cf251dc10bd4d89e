#pragma once

// The JSON object of one row, for the saved rows and for printed entries.

#include <nlohmann/json_fwd.hpp>
#include "extension/widgets/portfolio/model/portfolio_widget_vm.h"

namespace extension {

/// The row's fields in their order; "isProfit" only when it is there.
nlohmann::ordered_json rowJson(const PortfolioWidgetVM& row);

}  // namespace extension
