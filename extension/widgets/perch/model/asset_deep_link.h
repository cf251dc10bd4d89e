#pragma once

// The address that opens an asset in the phone app.

#include <cstddef>
#include <string>
#include "extension/widgets/perch/model/default_multi_assets_vm.h"

namespace extension {

/// For the asset at `position` (from 0) of the user's list; the link counts from 1. Values go
/// in as they are, and only titles lose their blanks, so the text need not be an address.
std::string makeDeepLink(const DefaultMultiAssetsVM& asset, std::size_t position);

}  // namespace extension
