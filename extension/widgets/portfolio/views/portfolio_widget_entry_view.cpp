#include "extension/widgets/portfolio/views/portfolio_widget_entry_view.h"

#include "extension/widgets/portfolio/views/call_to_action_views.h"
#include "extension/widgets/portfolio/views/portfolio_view.h"

namespace extension {

using namespace platform;

View PortfolioWidgetView::body(const EnvironmentValues& environment) const {
    const bool isCompact = environment.widgetFamily == WidgetFamily::systemSmall;
    const double margin = isCompact ? 9.0 : 12.0;
    // Amounts need all the width there is: a crore with its percentage is wide.
    const double side = isCompact ? margin : 7.0;
    switch (pwTimelineEntry.apiError) {
        case PWAPIError::success:
            return PortfolioView{.pwTimelineEntry = pwTimelineEntry, .isCompact = isCompact}.body().padding(
                {.top = margin, .leading = side, .bottom = margin, .trailing = side});
        case PWAPIError::noPortfolio:
            return NoPortfolioRecordView{.pwTimelineEntry = pwTimelineEntry, .isCompact = isCompact};
        case PWAPIError::nonLogin:
        case PWAPIError::failed:
            return LoginToCheckPortfolioView{.pwTimelineEntry = pwTimelineEntry, .isCompact = isCompact};
    }
    return {};
}

View PortfolioWidgetEntryView::body(const EnvironmentValues& environment) const {
    return PortfolioWidgetView{.pwTimelineEntry = portfolioTimelineEntry}.body(environment);
}

}  // namespace extension
