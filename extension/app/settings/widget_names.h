#pragma once

// The names by which the system and the phone app know the widgets, and the links through which a tap on a
// widget opens the phone app.

#include <string>
#include <string_view>
#include "extension/app/settings/build_flags.h"
#include "platform/runtime/runtime.h"

namespace extension {

inline constexpr std::string_view newsWidgetKind = "NewsWidget";
inline constexpr std::string_view perchWidgetKind = "PerchWidget";
inline constexpr std::string_view portfolioWidgetKind = "PortfolioWidget";

inline constexpr std::string_view widgetScheme = "brightledgerwidget://";

inline constexpr std::string_view openPortfolioLink = "brightledgerwidget://openPortfolio";
inline constexpr std::string_view addPortfolioLink = "brightledgerwidget://addPortfolio";
inline constexpr std::string_view loginLink = "brightledgerwidget://login";
inline constexpr std::string_view configureWidgetLink = "brightledgerwidget://configureWidget";

/// The link to all news: a page of the production web host, in staging too.
inline std::string moreNewsLink(const platform::Runtime& runtime) {
    return std::string(widgetScheme) + "news/?isArticle=0&url=" + productionWebHost(runtime) +
           "/sports/All-News/news/";
}

}  // namespace extension
