#include "extension/widgets/perch/model/perch_timeline_entry.h"

#include <nlohmann/json.hpp>
#include <utility>
#include "extension/theme/theme_type.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

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
