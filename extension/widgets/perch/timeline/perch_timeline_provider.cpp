#include "extension/widgets/perch/timeline/perch_timeline_provider.h"

#include <optional>
#include <utility>
#include "extension/app/settings/reload_times.h"

namespace extension {

PerchTimelineEntry PerchTimelineProvider::placeholder(const platform::TimelineProviderContext& /*context*/) {
    const Selection chosen = selection();
    // The quotes would come too late for this answer, but the next one finds a warm connection.
    const bool isUnderWay = prices_.fetch(
        chosen.priceIdentifiers, [](const MarketPackage_MultiAssetInfo&) {}, [](const platform::Error&) {});
    if (isUnderWay) return Entry(runtime_, std::nullopt);
    return Entry(runtime_, std::vector<PerchMultiAssetsVM>());
}

void PerchTimelineProvider::getTimeline(const platform::TimelineProviderContext& context,
                                        const std::function<void(platform::Timeline<Entry>)>& completion) {
    getSnapshot(context, [policy = reloadIn30Seconds(runtime_), completion](Entry entry) {
        completion({{std::move(entry)}, policy});
    });
}

PerchTimelineProvider::Selection PerchTimelineProvider::selection() {
    viewModel_.seedDefaults();
    Selection chosen{.assets = viewModel_.loadSelectedAssets(), .priceIdentifiers = {}};
    for (const DefaultMultiAssetsVM& asset : chosen.assets->defaultAssetsList) {
        if (!asset.priceIdentifier.empty()) chosen.priceIdentifiers.push_back(asset.priceIdentifier);
    }
    return chosen;
}

void PerchTimelineProvider::getSnapshot(const platform::TimelineProviderContext& /*context*/,
                                        const std::function<void(Entry)>& completion) {
    const Selection chosen = selection();
    const auto completeWith = [&runtime = runtime_, assets = chosen.assets,
                               completion](const QuoteList& quotes) {
        completion(Entry(runtime, makeRows(quotes, assets->defaultAssetsList, runtime)));
    };
    if (chosen.priceIdentifiers.empty()) return completeWith({});

    prices_.fetch(
        chosen.priceIdentifiers,
        [completeWith](const MarketPackage_MultiAssetInfo& info) { completeWith(info.data().datalist()); },
        [completeWith](const platform::Error&) { completeWith({}); });
}

}  // namespace extension
