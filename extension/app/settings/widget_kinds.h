#pragma once

// The names by which the system and the phone app know the widgets.

#include <string_view>

namespace extension {

inline constexpr std::string_view newsWidgetKind = "NewsWidget";
inline constexpr std::string_view perchWidgetKind = "PerchWidget";
inline constexpr std::string_view portfolioWidgetKind = "PortfolioWidget";

}  // namespace extension
