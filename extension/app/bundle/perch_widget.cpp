#include "extension/app/bundle/perch_widget.h"

#include "extension/app/bundle/widget_content.h"
#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "extension/widgets/perch/timeline/perch_timeline_provider.h"
#include "extension/widgets/perch/views/perch_widget_entry_view.h"

namespace extension {

using platform::EnvironmentValues;
using platform::WidgetFamily;

std::unique_ptr<platform::WidgetConfiguration> PerchWidget::body(const platform::Runtime& runtime) const {
    return std::make_unique<platform::StaticConfiguration<PerchTimelineProvider>>(
        platform::WidgetDescription{
            .kind = kind,
            .displayName = "Perch",
            .description = "Real-time Tracking Widget",
            .families = {WidgetFamily::systemLarge, WidgetFamily::systemMedium, WidgetFamily::systemSmall},
            .contentMarginsDisabled = runtime.osVersion() >= 17,
        },
        std::make_unique<PerchTimelineProvider>(runtime),
        [](const PerchTimelineEntry& entry, const EnvironmentValues& environment) {
            const platform::View view = PerchWidgetEntryView{.entry = entry}.body(environment);
            return widgetContent(view, entry.backgroundColor, environment);
        });
}

}  // namespace extension
