#include "extension/widgets/perch/model/perch_timeline_entry.h"

#include <map>
#include <nlohmann/json.hpp>
#include <unordered_map>
#include <utility>
#include "extension/theme/theme_type.h"
#include "extension/widgets/perch/model/selected_assets.h"
#include "platform/text/letter_case.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

using Quote = MarketPackage_MultiAssetDataListItem;

/// Finds an asset's quote without going through all quotes. Borrows the quotes.
class QuoteIndex {
public:
    explicit QuoteIndex(const QuoteList& quotes) : quotes_(quotes) {
        byAssetId_.reserve(static_cast<std::size_t>(quotes.size()));
        for (int place = 0; place < quotes.size(); ++place) {
            const std::string& assetId = quotes[place].assetid();
            Group& group = byAssetId_.try_emplace(assetId, Group{.firstPlace = place}).first->second;
            if (++group.count == 2) addSymbol(group.firstPlace);
            if (group.count > 1) addSymbol(place);
        }
    }

    struct Match {
        bool hasCandidates = false;
        /// Null in spite of candidates when several fit and none has the price identifier.
        const Quote* quote = nullptr;
    };

    Match find(const DefaultMultiAssetsVM& asset) const {
        Group candidates;
        std::optional<int> preferred;
        const auto consider = [&](std::string_view assetId) {
            const auto found = byAssetId_.find(assetId);
            if (found == byAssetId_.end()) return;
            const Group& group = found->second;
            candidates.count += group.count;
            candidates.firstPlace = group.firstPlace;
            const std::optional<int> exact = placeOf(assetId, group, asset.priceIdentifier);
            if (exact && (!preferred || *exact < *preferred)) preferred = exact;
        };
        // Equal names count once, so that a quote is a candidate only once.
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

    void addSymbol(int place) {
        byAssetIdAndSymbol_.try_emplace({quotes_[place].assetid(), quotes_[place].symbol()}, place);
    }

    std::optional<int> placeOf(std::string_view assetId, const Group& group, std::string_view symbol) const {
        if (group.count == 1) {
            const bool isMatch = quotes_[group.firstPlace].symbol() == symbol;
            return isMatch ? std::optional(group.firstPlace) : std::nullopt;
        }
        const auto found = byAssetIdAndSymbol_.find({assetId, symbol});
        return found == byAssetIdAndSymbol_.end() ? std::nullopt : std::optional(found->second);
    }

    const QuoteList& quotes_;
    std::unordered_map<std::string_view, Group> byAssetId_;
    /// The first place, in wire order, of each pair. Only for ids that several quotes share, so usually
    /// empty.
    std::map<std::pair<std::string_view, std::string_view>, int> byAssetIdAndSymbol_;
};

std::optional<bool> isProfit(std::string_view direction) {
    if (direction == "1" || direction == "+1") return true;
    if (direction == "-1") return false;
    return std::nullopt;
}

nlohmann::ordered_json rowJson(const PerchMultiAssetsVM& row) {
    nlohmann::ordered_json json{
        {"id", row.id.text()},        {"assetID", row.assetID},    {"exchg", row.exchg},
        {"assetType", row.assetType}, {"symbol", row.symbol},      {"market", row.market},
        {"title", row.title},         {"dateTime", row.dateTime},  {"direction", row.direction},
        {"change", row.change},       {"perChange", row.perChange}};
    if (row.isProfit) json["isProfit"] = *row.isProfit;
    json["currentPrice"] = row.currentPrice;
    json["deeplinkURL"] = row.deeplinkURL;
    json["exchgWithTime"] = row.exchgWithTime;
    json["changeWithPercent"] = row.changeWithPercent;
    return json;
}

}  // namespace

std::vector<PerchMultiAssetsVM> makeRows(const QuoteList& quotes,
                                         std::span<const DefaultMultiAssetsVM> assets,
                                         const platform::Runtime& runtime) {
    const QuoteIndex index(quotes);
    std::vector<PerchMultiAssetsVM> rows;
    rows.reserve(assets.size());
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
    row.exchgWithTime =
        row.exchg.empty() ? row.dateTime : platform::upperCased(row.exchg) + ": " + row.dateTime;
    row.changeWithPercent = row.perChange.empty() ? row.change : row.change + " (" + row.perChange + "%)";
    return row;
}

std::string formatNumber(std::string_view text, const platform::Runtime& runtime) {
    double value = 0.0;
    if (!platform::parseDecimal(text, value)) return "";
    return runtime.numberFormatter().twoDecimals(value);
}

PerchTimelineEntry::PerchTimelineEntry(const platform::Runtime& runtime,
                                       std::optional<std::vector<PerchMultiAssetsVM>> rows)
    : id(runtime.ids().next()), date(runtime.now()), multiAssetDataListItem(std::move(rows)) {
    const EntryColors colors = entryColors(runtime);
    backgroundColor = colors.background;
    textColor = colors.text;
    dateTimeColor = colors.dateTime;
}

nlohmann::ordered_json entryJson(const PerchTimelineEntry& entry) {
    nlohmann::ordered_json json{{"id", entry.id.text()}, {"date", platform::formatInstant(entry.date)}};
    if (entry.multiAssetDataListItem) {
        auto& rows = json["multiAssetDataListItem"] = nlohmann::ordered_json::array();
        for (const PerchMultiAssetsVM& row : *entry.multiAssetDataListItem) rows.push_back(rowJson(row));
    }
    json["backgroundColor"] = platform::colorJson(entry.backgroundColor);
    json["textColor"] = platform::colorJson(entry.textColor);
    json["dateTimeColor"] = platform::colorJson(entry.dateTimeColor);
    return json;
}

}  // namespace extension
