#pragma once

// The assets that the user has chosen in the phone app, as the settings store holds them, and their links.

#include <cstddef>
#include <string>
#include <vector>
#include "platform/runtime/runtime.h"
#include "platform/settings/property_list.h"

namespace extension {

/// One asset that the user follows.
struct DefaultMultiAssetsVM {
    std::string id;
    /// Lower case, as are `type` and `market`.
    std::string exchg;
    /// "stock", "indices", "future" or "crypto".
    std::string type;
    std::string symbol;
    std::string market;
    std::string title;
    /// Upper case.
    std::string instrument;
    std::string indId;
    std::string scId;
    /// "yyyy-MM-dd".
    std::string expiryDate;
    std::string optionType;
    std::string strikePrice;
    /// What the service is asked for.
    std::string priceIdentifier;
    bool linkFlag = true;

    bool operator==(const DefaultMultiAssetsVM&) const = default;
};

struct DefaultMultiAssetsListVM {
    std::vector<DefaultMultiAssetsVM> defaultAssetsList;

    bool operator==(const DefaultMultiAssetsListVM&) const = default;
};

/// Reads a stored record. A value that is absent or not a text is empty; only the text "0" turns
/// the link flag off. Never fails.
DefaultMultiAssetsVM makeAsset(const platform::PropertyList::Dictionary& record);

/// The address that opens the asset in the phone app: for the asset at `position` (from 0) of the user's
/// list; the link counts from 1. Values go in as they are, and only titles lose their blanks, so the text
/// need not be an address.
std::string makeDeepLink(const DefaultMultiAssetsVM& asset, std::size_t position);

/// Chooses three indices for a user who has just installed the app: once, whatever happens to
/// them later. A store that cannot be read is left as it is, since it may hold a choice. Any thread.
void seedDefaultsAtFirstRun(const platform::Runtime& runtime);

/// Indices, then stocks, futures and crypto assets, each in the user's order; expired futures are
/// removed first. A list that is absent or holds anything but records contributes nothing, and a
/// store that cannot be read has no assets. Any thread.
DefaultMultiAssetsListVM loadSelectedAssets(const platform::Runtime& runtime);

}  // namespace extension
