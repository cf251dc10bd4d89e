#pragma once

// Answers the widget host's questions about the Perch widget: the chosen assets and their quotes.

#include <functional>
#include <memory>
#include <string>
#include <vector>
#include "extension/app/prices/price_refresh_manager_native.h"
#include "extension/app/settings/observable.h"
#include "extension/widgets/perch/model/perch_timeline_entry.h"
#include "extension/widgets/perch/model/selected_assets.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

namespace extension {

/// The assets that the Perch widget follows, as they were last loaded. Any thread; a loaded list never
/// changes.
class PerchWidgetViewModel {
public:
    using Assets = std::shared_ptr<const DefaultMultiAssetsListVM>;

    explicit PerchWidgetViewModel(const platform::Runtime& runtime) : runtime_(runtime) {}

    /// Chooses the default assets for a new user.
    void seedDefaults() const { seedDefaultsAtFirstRun(runtime_); }

    /// Reads the user's choice again, keeps it as `assetsListVM` and answers with it.
    Assets loadSelectedAssets() {
        Assets loaded =
            std::make_shared<const DefaultMultiAssetsListVM>(extension::loadSelectedAssets(runtime_));
        assetsListVM.set(loaded);
        return loaded;
    }

    /// Empty until the first loading. For the phone app; nothing here reads it.
    Observable<Assets> assetsListVM{std::make_shared<const DefaultMultiAssetsListVM>()};

private:
    const platform::Runtime& runtime_;
};

/// Every answer is one entry; whatever goes wrong, it is an entry without rows. Nothing is kept between
/// questions. Any thread; `runtime` outlives it and the answers under way, which do not need the provider.
class PerchTimelineProvider {
public:
    using Entry = PerchTimelineEntry;

    explicit PerchTimelineProvider(const platform::Runtime& runtime)
        : runtime_(runtime), prices_(runtime), viewModel_(runtime) {}

    /// Answers at once, without rows. Starts a request for quotes that nobody waits for.
    Entry placeholder(const platform::TimelineProviderContext& context);

    /// Calls `completion` once: before it returns when there is nothing to ask for, otherwise on the
    /// background queue of the shared session.
    void getSnapshot(const platform::TimelineProviderContext& context,
                     const std::function<void(Entry)>& completion);

    /// Like `getSnapshot`; to be asked again 30 seconds after this call.
    void getTimeline(const platform::TimelineProviderContext& context,
                     const std::function<void(platform::Timeline<Entry>)>& completion);

private:
    struct Selection {
        PerchWidgetViewModel::Assets assets;
        /// In list order, twice when chosen twice; not every asset has one.
        std::vector<std::string> priceIdentifiers;
    };

    Selection selection();

    const platform::Runtime& runtime_;
    PriceRefreshManagerNative prices_;
    PerchWidgetViewModel viewModel_;
};

}  // namespace extension
