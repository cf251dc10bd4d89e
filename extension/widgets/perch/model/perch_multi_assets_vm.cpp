#include "extension/widgets/perch/model/perch_multi_assets_vm.h"

#include <functional>
#include <unordered_map>
#include "extension/widgets/perch/model/asset_deep_link.h"
#include "extension/widgets/perch/model/letter_case.h"

namespace extension {
namespace {

using Quote = MarketPackage_MultiAssetDataListItem;

struct AssetIdAndSymbol {
    std::string_view assetId;
    std::string_view symbol;

    bool operator==(const AssetIdAndSymbol&) const = default;
};

struct AssetIdAndSymbolHash {
    std::size_t operator()(const AssetIdAndSymbol& key) const {
        const std::hash<std::string_view> hash;
        return hash(key.assetId) * 31 + hash(key.symbol);
    }
};

/// Finds an asset's quote without going through all quotes. Borrows the quotes.
class QuoteIndex {
public:
    explicit QuoteIndex(const QuoteList& quotes) : quotes_(quotes) {
        byAssetId_.reserve(static_cast<std::size_t>(quotes.size()));
        byAssetIdAndSymbol_.reserve(static_cast<std::size_t>(quotes.size()));
        for (int place = 0; place < quotes.size(); ++place) {
            const Quote& quote = quotes[place];
            ++byAssetId_.try_emplace(quote.assetid(), Group{.firstPlace = place}).first->second.count;
            byAssetIdAndSymbol_.try_emplace({quote.assetid(), quote.symbol()}, place);
        }
    }

    struct Match {
        bool hasCandidates = false;
        /// Null although there are candidates: several fit and none of them is the one.
        const Quote* quote = nullptr;
    };

    Match find(const DefaultMultiAssetsVM& asset) const {
        Group candidates;
        std::optional<int> preferred;
        const auto consider = [&](std::string_view assetId) {
            const auto group = byAssetId_.find(assetId);
            if (group == byAssetId_.end()) return;
            candidates.count += group->second.count;
            candidates.firstPlace = group->second.firstPlace;
            const auto exact = byAssetIdAndSymbol_.find({assetId, asset.priceIdentifier});
            if (exact != byAssetIdAndSymbol_.end() && (!preferred || exact->second < *preferred))
                preferred = exact->second;
        };
        // Equal names are one name: a quote is a candidate once.
        consider(asset.id);
        if (asset.symbol != asset.id) consider(asset.symbol);
        if (asset.scId != asset.id && asset.scId != asset.symbol) consider(asset.scId);

        if (candidates.count == 0) return {};
        if (candidates.count == 1) return {true, &quotes_[candidates.firstPlace]};
        return {true, preferred ? &quotes_[*preferred] : nullptr};
    }

private:
    struct Group {
        std::size_t count = 0;
        int firstPlace = 0;
    };

    const QuoteList& quotes_;
    std::unordered_map<std::string_view, Group> byAssetId_;
    /// The first place, in wire order, where both meet.
    std::unordered_map<AssetIdAndSymbol, int, AssetIdAndSymbolHash> byAssetIdAndSymbol_;
};

std::optional<bool> isProfit(std::string_view direction) {
    if (direction == "1" || direction == "+1") return true;
    if (direction == "-1") return false;
    return std::nullopt;
}

}  // namespace

std::vector<PerchMultiAssetsVM> makeRows(const QuoteList& quotes,
                                         std::span<const DefaultMultiAssetsVM> assets,
                                         const platform::Runtime& runtime) {
    const QuoteIndex index(quotes);
    std::vector<PerchMultiAssetsVM> rows;
    for (std::size_t position = 0; position < assets.size(); ++position) {
        const QuoteIndex::Match match = index.find(assets[position]);
        if (match.hasCandidates) rows.push_back(makeRow(match.quote, assets[position], position, runtime));
    }
    return rows;
}

PerchMultiAssetsVM makeRow(const Quote* quote, const DefaultMultiAssetsVM& asset, std::size_t position,
                           const platform::Runtime& runtime) {
    PerchMultiAssetsVM row;
    row.id = runtime.ids().next();
    row.assetID = asset.id;
    row.exchg = asset.exchg;
    row.assetType = asset.type;
    row.symbol = asset.symbol;
    row.market = asset.market;
    row.title = asset.title;
    row.deeplinkURL = makeDeepLink(asset, position);
    if (quote) {
        row.dateTime = quote->disptime();
        row.direction = quote->direction();
        row.change = formatNumber(quote->change(), runtime);
        row.perChange = formatNumber(quote->perchange(), runtime);
        row.isProfit = isProfit(quote->direction());
        row.currentPrice = formatNumber(quote->currentprice(), runtime);
    }
    row.exchgWithTime = row.exchg.empty() ? row.dateTime : upperCased(row.exchg) + ": " + row.dateTime;
    row.changeWithPercent = row.perChange.empty() ? row.change : row.change + " (" + row.perChange + "%)";
    return row;
}

std::string formatNumber(std::string_view text, const platform::Runtime& runtime) {
    double value = 0.0;
    if (!platform::parseDecimal(text, value)) return "";
    return runtime.numberFormatter().twoDecimals(value);
}

}  // namespace extension
