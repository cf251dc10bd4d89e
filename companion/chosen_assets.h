#pragma once

// The assets that the phone app's user watches, as its page speaks of them.

#include <string>
#include "companion/user_choices.h"
#include "platform/settings/property_list.h"

namespace companion {

using AssetList = platform::PropertyList::Array ChosenAssets::*;

/// Where the assets of one type stand.
struct AssetKind {
    const char* type;
    AssetList list;
};

inline constexpr AssetKind assetKinds[] = {{"indices", &ChosenAssets::indices},
                                           {"stock", &ChosenAssets::stocks},
                                           {"future", &ChosenAssets::futures},
                                           {"crypto", &ChosenAssets::cryptos}};

/// The asset's price identifier, or its title when it has none: what the page knows it by.
std::string keyOf(const platform::PropertyList& asset);
/// Its title, or its key when it has none.
std::string titleOf(const platform::PropertyList& asset);

}  // namespace companion
