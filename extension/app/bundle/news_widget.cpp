#include "extension/app/bundle/news_widget.h"

#include "extension/app/bundle/widget_content.h"
#include "extension/theme/app_default_colors.h"

namespace extension {

using platform::EnvironmentValues;
using platform::WidgetFamily;

namespace {

struct NewsEntry {
    platform::Instant date;
};
nlohmann::ordered_json entryJson(const NewsEntry&) { return nlohmann::ordered_json::object(); }

struct NewsEntryProvider {
    using Entry = NewsEntry;
    explicit NewsEntryProvider(const platform::Runtime& runtime) : runtime_(runtime) {}
    NewsEntry placeholder(const platform::TimelineProviderContext&) { return {runtime_.now()}; }
    void getSnapshot(const platform::TimelineProviderContext&, const std::function<void(NewsEntry)>& completion) {
        completion({runtime_.now()});
    }
    void getTimeline(const platform::TimelineProviderContext&,
                     const std::function<void(platform::Timeline<NewsEntry>)>& completion) {
        completion({{{runtime_.now()}}, platform::TimelineReloadPolicy::atEnd()});
    }
    const platform::Runtime& runtime_;
};

}  // namespace

std::unique_ptr<platform::WidgetConfiguration> NewsWidget::body(const platform::Runtime& runtime) const {
    return std::make_unique<platform::StaticConfiguration<NewsEntryProvider>>(
        platform::WidgetDescription{
            .kind = kind,
            .displayName = "Brightledger News",
            .description = "Stay updated with Top Stories across markets, business and more.",
            .families = {WidgetFamily::systemLarge},
            .contentMarginsDisabled = runtime.osVersion() >= 17,
        },
        std::make_unique<NewsEntryProvider>(runtime),
        [](const NewsEntry&, const EnvironmentValues& environment) {
            return widgetContent(platform::View(), platform::Color::gray(), environment);
        });
}

}  // namespace extension
