#pragma once

// What the phone app leaves in the settings store for its widgets: who is signed in, which assets they
// chose, where the news come from.

#include <optional>
#include <string>
#include <string_view>
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"
#include "platform/settings/property_list.h"

namespace companion {

/// A signed-in user. The address already carries a query. None of this belongs in a log or a page.
struct Session {
    std::string token;
    std::string userId;
    std::string portfolioAddress;

    bool operator==(const Session&) const = default;
};

/// Each list holds one dictionary for each asset, in the user's order.
struct ChosenAssets {
    platform::PropertyList::Array indices;
    platform::PropertyList::Array stocks;
    platform::PropertyList::Array futures;
    platform::PropertyList::Array cryptos;

    bool operator==(const ChosenAssets&) const = default;
};

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

/// The asset's price identifier, or its title when it has none: the name by which the page knows it.
std::string keyOf(const platform::PropertyList& asset);
/// Its title, or its key when it has none.
std::string titleOf(const platform::PropertyList& asset);

// Every change is one transaction. Any thread; errors are those of the settings store.

/// Signs in, or out when there is no session. The saved portfolio rows of another user go with them.
platform::Result<void> setSession(const platform::Runtime& runtime, const std::optional<Session>& session);
/// Absent when nobody is wholly signed in.
platform::Result<std::optional<Session>> session(const platform::Runtime& runtime);

platform::Result<void> setChosenAssets(const platform::Runtime& runtime, const ChosenAssets& assets);
/// A list that is absent, or not an array, is empty.
platform::Result<ChosenAssets> chosenAssets(const platform::Runtime& runtime);

/// Replaces the news feed's whole address, or gives it back to the environment.
platform::Result<void> setNewsFeedAddress(const platform::Runtime& runtime,
                                          const std::optional<std::string>& address);
/// Absent when the environment decides.
platform::Result<std::optional<std::string>> newsFeedAddress(const platform::Runtime& runtime);

}  // namespace companion
