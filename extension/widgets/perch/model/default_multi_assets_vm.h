#pragma once

// One asset that the user has chosen to follow: how it is read from the settings store, and its link.

#include <cstddef>
#include <string>
#include <vector>
#include "platform/settings/property_list.h"

namespace extension {

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

}  // namespace extension
