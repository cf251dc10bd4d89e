#pragma once

// The assets that the phone app's user watches, as its page speaks of them.

#include <string>
#include "companion/user_choices.h"
#include "platform/settings/property_list.h"

namespace host {

using AssetList = platform::PropertyList::Array companion::ChosenAssets::*;

/// Where the assets of one type stand.
struct Shelf {
    const char* type;
    AssetList list;
};

inline constexpr Shelf shelves[] = {{"indices", &companion::ChosenAssets::indices},
                                    {"stock", &companion::ChosenAssets::stocks},
                                    {"future", &companion::ChosenAssets::futures},
                                    {"crypto", &companion::ChosenAssets::cryptos}};

/// The asset's price identifier, or its title when it has none: what the page knows it by.
std::string keyOf(const platform::PropertyList& asset);
/// Its title, or its key when it has none.
std::string titleOf(const platform::PropertyList& asset);

}  // namespace host
