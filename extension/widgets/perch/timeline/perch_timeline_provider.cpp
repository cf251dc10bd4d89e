#include "extension/widgets/perch/timeline/perch_timeline_provider.h"

#include <optional>
#include <utility>
#include "platform/base/fatal.h"

namespace extension {
namespace {

constexpr int secondsUntilReload = 30;

platform::Instant reloadDate(const platform::Runtime& runtime) {
    const auto date = runtime.calendar().dateByAddingSeconds(secondsUntilReload, runtime.now());
    if (!date) platform::fatalError("the calendar cannot tell the moment of the next refresh");
    return *date;
}

}  // namespace

PerchTimelineProvider::PerchTimelineProvider(const platform::Runtime& runtime)
    : runtime_(runtime), prices_(runtime), viewModel_(runtime) {}

PerchTimelineEntry PerchTimelineProvider::placeholder(const platform::TimelineProviderContext& /*context*/) {
    const Selection chosen = selection();
    if (chosen.priceIdentifiers.empty()) return makeEntry(std::vector<PerchMultiAssetsVM>(), runtime_);

    Entry entry = makeEntry(std::nullopt, runtime_);
    // The quotes would come too late for this answer, but the next one finds a warm connection.
    prices_.fetch(
        chosen.priceIdentifiers, [](const MarketPackage_MultiAssetInfo&) {}, [](const platform::Error&) {});
    return entry;
}

void PerchTimelineProvider::getSnapshot(const platform::TimelineProviderContext& /*context*/,
                                        const std::function<void(Entry)>& completion) {
    makeCurrentEntry(completion);
}

void PerchTimelineProvider::getTimeline(const platform::TimelineProviderContext& /*context*/,
                                        const std::function<void(platform::Timeline<Entry>)>& completion) {
    const auto policy = platform::TimelineReloadPolicy::after(reloadDate(runtime_));
    makeCurrentEntry([policy, completion](Entry entry) {
        platform::Timeline<Entry> timeline{.entries = {}, .policy = policy};
        timeline.entries.push_back(std::move(entry));
        completion(std::move(timeline));
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

void PerchTimelineProvider::makeCurrentEntry(const std::function<void(Entry)>& completion) {
    const Selection chosen = selection();
    const auto completeWith = [&runtime = runtime_, assets = chosen.assets,
                               completion](const QuoteList& quotes) {
        completion(makeEntry(makeRows(quotes, assets->defaultAssetsList, runtime), runtime));
    };
    if (chosen.priceIdentifiers.empty()) return completeWith({});

    prices_.fetch(
        chosen.priceIdentifiers,
        [completeWith](const MarketPackage_MultiAssetInfo& info) { completeWith(info.data().datalist()); },
        [completeWith](const platform::Error&) { completeWith({}); });
}

}  // namespace extension
