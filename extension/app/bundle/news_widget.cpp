#include "extension/app/bundle/news_widget.h"

#include "extension/app/bundle/widget_content.h"
#include "extension/app/settings/deep_links.h"
#include "extension/widgets/news/model/news_timeline_entry.h"
#include "extension/widgets/news/timeline/news_provider.h"
#include "extension/widgets/news/views/news_widget_entry_view.h"

namespace extension {

using platform::EnvironmentValues;
using platform::WidgetFamily;

std::unique_ptr<platform::WidgetConfiguration> NewsWidget::body(const platform::Runtime& runtime) const {
    return std::make_unique<platform::StaticConfiguration<NewsProvider>>(
        platform::WidgetDescription{
            .kind = kind,
            .displayName = "Brightledger News",
            .description = "Stay updated with Top Stories across markets, business and more.",
            .families = {WidgetFamily::systemLarge},
            .contentMarginsDisabled = runtime.osVersion() >= 17,
        },
        std::make_unique<NewsProvider>(runtime),
        [moreNews = moreNewsLink(runtime)](const NewsTimelineEntry& entry,
                                           const EnvironmentValues& environment) {
            const platform::View view =
                NewsWidgetEntryView{.entry = entry, .moreNewsLink = moreNews}.body(environment);
            return widgetContent(view, entry.backgroundColor, environment);
        });
}

}  // namespace extension
