#pragma once

// The assets that the Perch widget follows, as they were last loaded.

#include <memory>
#include "extension/app/settings/observable.h"
#include "extension/widgets/perch/model/selected_assets.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// Any thread; a loaded list never changes.
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

}  // namespace extension
