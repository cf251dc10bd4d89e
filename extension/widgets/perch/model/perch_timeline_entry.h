#pragma once

// What the Perch widget shows from one moment on.

#include <google/protobuf/repeated_ptr_field.h>
#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>
#include "extension/widgets/perch/model/selected_assets.h"
#include "extension/widgets/perch/proto/market_package.h"
#include "platform/base/clock.h"
#include "platform/base/color.h"
#include "platform/base/uuid.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// One row of the widget. Numbers are texts with two decimals, or empty where there is no number.
struct PerchMultiAssetsVM {
    platform::UUID id;
    std::string assetID;
    std::string exchg;
    std::string assetType;
    std::string symbol;
    std::string market;
    std::string title;
    std::string dateTime;
    std::string direction;
    std::string change;
    std::string perChange;
    /// Absent when the price did not change or the direction is unknown.
    std::optional<bool> isProfit;
    std::string currentPrice;
    std::string deeplinkURL;
    /// "NSE: 15:30"
    std::string exchgWithTime;
    /// "-12.50 (-0.30%)"
    std::string changeWithPercent;

    bool operator==(const PerchMultiAssetsVM&) const = default;
};

using QuoteList = google::protobuf::RepeatedPtrField<MarketPackage_MultiAssetDataListItem>;

/// One row per asset that has a quote, in the user's order.
///
/// A quote is an asset's when it carries the asset's id, symbol or `scId` as its `assetId`. An asset
/// without a quote leaves no row but keeps its place: the rows after it still link to their own
/// position. If several quotes fit, the first whose symbol is the asset's price identifier is taken; if
/// there is none, the row has empty price texts. `quotes` come in wire order. Takes time nearly in
/// proportion to assets and quotes together. Never fails; any thread.
std::vector<PerchMultiAssetsVM> makeRows(const QuoteList& quotes,
                                         std::span<const DefaultMultiAssetsVM> assets,
                                         const platform::Runtime& runtime);

/// The row of the asset at `position` (from 0) of the user's list; `quote` may be null.
PerchMultiAssetsVM makeRow(const MarketPackage_MultiAssetDataListItem* quote,
                           const DefaultMultiAssetsVM& asset, std::size_t position,
                           const platform::Runtime& runtime);

/// "1234567.891" as "1,234,567.89" or "12,34,567.89", as the device's locale groups. Two decimals,
/// ties to even. Empty when `text` is not wholly a decimal number ("", " 1", "1,000", "12a").
std::string formatNumber(std::string_view text, const platform::Runtime& runtime);

struct PerchTimelineEntry {
    /// An entry of this moment, in the colours of the current theme.
    PerchTimelineEntry(const platform::Runtime& runtime, std::optional<std::vector<PerchMultiAssetsVM>> rows);

    platform::UUID id;
    platform::Instant date;
    /// Absent only in a placeholder whose request is under way; empty when there is nothing to show.
    std::optional<std::vector<PerchMultiAssetsVM>> multiAssetDataListItem;
    platform::Color backgroundColor;
    platform::Color textColor;
    platform::Color dateTimeColor;

    bool operator==(const PerchTimelineEntry&) const = default;
};

/// The entry's own fields, in their own order; what is absent is left out.
nlohmann::ordered_json entryJson(const PerchTimelineEntry& entry);

}  // namespace extension
