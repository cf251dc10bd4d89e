#include "extension/widgets/perch/timeline/perch_widget_view_model.h"

#include "extension/widgets/perch/model/selected_assets.h"

namespace extension {

void PerchWidgetViewModel::seedDefaults() const { seedDefaultsAtFirstRun(runtime_); }

PerchWidgetViewModel::Assets PerchWidgetViewModel::loadSelectedAssets() {
    Assets loaded = std::make_shared<const DefaultMultiAssetsListVM>(extension::loadSelectedAssets(runtime_));
    assetsListVM.set(loaded);
    return loaded;
}

}  // namespace extension
