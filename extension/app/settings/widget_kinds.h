#pragma once

// By which name the system and the phone app know each widget.

#include <string_view>

namespace extension {

inline constexpr std::string_view newsWidgetKind = "NewsWidget";
inline constexpr std::string_view perchWidgetKind = "PerchWidget";
inline constexpr std::string_view portfolioWidgetKind = "PortfolioWidget";

}  // namespace extension
