#pragma once

// The assets that the Perch widget follows, as they were last loaded.

#include <memory>
#include <mutex>
#include "extension/widgets/perch/model/default_multi_assets_vm.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// Any thread; what it hands out never changes.
class PerchWidgetViewModel {
public:
    explicit PerchWidgetViewModel(const platform::Runtime& runtime);

    /// Chooses the default assets for a new user.
    void seedDefaults();

    /// Reads the user's choice anew, keeps it as `assetsListVM` and answers with it.
    std::shared_ptr<const DefaultMultiAssetsListVM> loadSelectedAssets();

    /// Empty before the first loading.
    std::shared_ptr<const DefaultMultiAssetsListVM> assetsListVM() const;

private:
    const platform::Runtime& runtime_;
    mutable std::mutex mutex_;
    std::shared_ptr<const DefaultMultiAssetsListVM> assetsListVM_;
};

}  // namespace extension
