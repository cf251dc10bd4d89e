#include "extension/app/bundle/portfolio_widget.h"

#include "extension/app/bundle/widget_content.h"
#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "extension/widgets/portfolio/timeline/pw_provider.h"
#include "extension/widgets/portfolio/views/portfolio_widget_entry_view.h"

namespace extension {

using platform::EnvironmentValues;
using platform::WidgetFamily;

std::unique_ptr<platform::WidgetConfiguration> PortfolioWidget::body(const platform::Runtime& runtime) const {
    return std::make_unique<platform::StaticConfiguration<PWProvider>>(
        platform::WidgetDescription{
            .kind = kind,
            .displayName = "Portfolio",
            .description = "Real-time Tracking Widget",
            .families = {WidgetFamily::systemMedium, WidgetFamily::systemSmall},
            .contentMarginsDisabled = runtime.osVersion() >= 17,
        },
        std::make_unique<PWProvider>(runtime),
        [](const PWTimelineEntry& entry, const EnvironmentValues& environment) {
            const platform::View view =
                PortfolioWidgetEntryView{.portfolioTimelineEntry = entry}.body(environment);
            return widgetContent(view, entry.backgroundColor, environment);
        });
}

}  // namespace extension
