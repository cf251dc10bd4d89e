#include "extension/widgets/perch/timeline/perch_widget_view_model.h"

#include "extension/widgets/perch/model/selected_assets.h"

namespace extension {

PerchWidgetViewModel::PerchWidgetViewModel(const platform::Runtime& runtime)
    : runtime_(runtime), assetsListVM_(std::make_shared<const DefaultMultiAssetsListVM>()) {}

void PerchWidgetViewModel::seedDefaults() { seedDefaultsAtFirstRun(runtime_); }

std::shared_ptr<const DefaultMultiAssetsListVM> PerchWidgetViewModel::loadSelectedAssets() {
    auto loaded = std::make_shared<const DefaultMultiAssetsListVM>(extension::loadSelectedAssets(runtime_));
    const std::lock_guard lock(mutex_);
    assetsListVM_ = loaded;
    return loaded;
}

std::shared_ptr<const DefaultMultiAssetsListVM> PerchWidgetViewModel::assetsListVM() const {
    const std::lock_guard lock(mutex_);
    return assetsListVM_;
}

}  // namespace extension
