#pragma once

// The assets that the user has chosen in the phone app, as the settings store holds them.

#include "extension/widgets/perch/model/default_multi_assets_vm.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// Chooses three indices for a user who has just installed the app: once, whatever happens to
/// them later. A store that cannot be read is left as it is, since it may hold a choice. Any thread.
void seedDefaultsAtFirstRun(const platform::Runtime& runtime);

/// Indices, then stocks, futures and crypto assets, each in the user's order; expired futures are
/// removed first. A list that is absent or holds anything but records contributes nothing, and a
/// store that cannot be read has no assets. Any thread.
DefaultMultiAssetsListVM loadSelectedAssets(const platform::Runtime& runtime);

}  // namespace extension
