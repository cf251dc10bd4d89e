#include "extension/app/bundle/perch_widget_bundle.h"

#include <algorithm>
#include <utility>
#include "extension/app/settings/widget_names.h"
#include "extension/widgets/news/timeline/news_provider.h"
#include "extension/widgets/news/views/news_widget_entry_view.h"
#include "extension/widgets/perch/timeline/perch_timeline_provider.h"
#include "extension/widgets/perch/views/perch_widget_entry_view.h"
#include "extension/widgets/portfolio/timeline/pw_provider.h"
#include "extension/widgets/portfolio/views/portfolio_view.h"
#include "platform/view/view.h"

namespace extension {

using namespace platform;

namespace {

/// The entry view on its background, edge to edge and without the system's margins: from version 17 on
/// the background is the container's, before that a plain one.
View widgetContent(const View& entryView, const Color& backgroundColor,
                   const EnvironmentValues& environment) {
    // Twice, once in each form that the platform offers.
    const View background = ColorFill(backgroundColor).ignoresSafeArea().ignoresSafeArea();
    const View filled = environment.osVersion >= 17 ? entryView.containerBackground(background)
                                                    : entryView.background(background);
    return filled.padding(0.0);
}

/// A widget whose entries are shown by `makeView`, edge to edge on their own background.
template <typename Provider, typename MakeView>
std::unique_ptr<WidgetConfiguration> makeWidget(const Runtime& runtime, WidgetDescription description,
                                                const MakeView& makeView) {
    description.contentMarginsDisabled = runtime.osVersion() >= 17;
    return std::make_unique<StaticConfiguration<Provider>>(
        std::move(description), std::make_unique<Provider>(runtime),
        [makeView](const typename Provider::Entry& entry, const EnvironmentValues& environment) {
            return widgetContent(makeView(entry).body(environment), entry.backgroundColor, environment);
        });
}

}  // namespace

std::unique_ptr<WidgetConfiguration> NewsWidget::body(const Runtime& runtime) const {
    return makeWidget<NewsProvider>(
        runtime,
        {.kind = kind,
         .displayName = "Brightledger News",
         .description = "Stay updated with Top Stories across markets, business and more.",
         .families = {WidgetFamily::systemLarge}},
        [moreNews = moreNewsLink(runtime)](const NewsTimelineEntry& entry) {
            return NewsWidgetEntryView{.entry = entry, .moreNewsLink = moreNews};
        });
}

std::unique_ptr<WidgetConfiguration> PerchWidget::body(const Runtime& runtime) const {
    return makeWidget<PerchTimelineProvider>(
        runtime,
        {.kind = kind,
         .displayName = "Perch",
         .description = "Real-time Tracking Widget",
         .families = {WidgetFamily::systemLarge, WidgetFamily::systemMedium, WidgetFamily::systemSmall}},
        [](const PerchTimelineEntry& entry) { return PerchWidgetEntryView{.entry = entry}; });
}

std::unique_ptr<WidgetConfiguration> PortfolioWidget::body(const Runtime& runtime) const {
    return makeWidget<PWProvider>(runtime,
                                  {.kind = kind,
                                   .displayName = "Portfolio",
                                   .description = "Real-time Tracking Widget",
                                   .families = {WidgetFamily::systemMedium, WidgetFamily::systemSmall}},
                                  [](const PWTimelineEntry& entry) {
                                      return PortfolioWidgetEntryView{.portfolioTimelineEntry = entry};
                                  });
}

PerchWidgetBundle::PerchWidgetBundle(const Runtime& runtime) {
    widgets_.push_back(NewsWidget{}.body(runtime));
    widgets_.push_back(PerchWidget{}.body(runtime));
    widgets_.push_back(PortfolioWidget{}.body(runtime));
}

WidgetConfiguration* PerchWidgetBundle::widget(std::string_view kind) const {
    const auto found =
        std::ranges::find(widgets_, kind, [](const auto& each) { return each->description().kind; });
    return found == widgets_.end() ? nullptr : found->get();
}

}  // namespace extension
