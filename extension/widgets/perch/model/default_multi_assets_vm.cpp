#include "extension/widgets/perch/model/default_multi_assets_vm.h"

#include <string_view>
#include "extension/app/settings/deep_links.h"
#include "platform/text/letter_case.h"

namespace extension {
namespace {

std::string withoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

std::string futureTail(const DefaultMultiAssetsVM& asset) {
    std::string instrument = "&instrument=" + asset.instrument;
    if (asset.instrument == "FUTIDX") return "?ind_id=" + asset.indId + instrument;
    if (asset.instrument == "FUTSTK") return "?sc_id=" + asset.scId + instrument;
    if (asset.instrument == "OPTSTK") return "?sc_id=" + asset.scId + "&exchg=" + asset.exchg + instrument;
    if (asset.instrument == "OPTIDX")
        return "?sc_id=" + asset.scId + "&exchg=" + asset.exchg + "&ind_id=" + asset.indId + instrument;
    // Without a "?": the phone app knows the other contracts by this shape.
    return instrument;
}

std::string pathAndQuery(const DefaultMultiAssetsVM& asset) {
    const std::string type = platform::lowerCased(asset.type);
    if (type == "stock")
        return "stock/?id=" + asset.id + "&exchg=" + asset.exchg + "&market=" + asset.market +
               "&title=" + withoutBlanks(asset.title);
    if (type == "indices")
        return "indices/?id=" + asset.id + "&exchg=" + asset.exchg +
               "&link_flag=" + (asset.linkFlag ? "1" : "0");
    if (type == "future") return "future/" + futureTail(asset);
    if (type == "crypto") return "crypto/?id=" + asset.id + "&title=" + withoutBlanks(asset.title);
    return "";
}

}  // namespace

DefaultMultiAssetsVM makeAsset(const platform::PropertyList::Dictionary& record) {
    const auto text = [&record](std::string_view key) {
        const auto found = record.find(key);
        const std::string* const value = found == record.end() ? nullptr : found->second.text();
        return value ? *value : std::string();
    };
    return {.id = text("id"),
            .exchg = platform::lowerCased(text("exchg")),
            .type = platform::lowerCased(text("type")),
            .symbol = text("symbol"),
            .market = platform::lowerCased(text("market")),
            .title = text("title"),
            .instrument = platform::upperCased(text("instrument")),
            .indId = text("ind_id"),
            .scId = text("sc_id"),
            .expiryDate = text("expiryDate"),
            .optionType = text("option_type"),
            .strikePrice = text("strike_price"),
            .priceIdentifier = text("priceIdentifier"),
            .linkFlag = text("link_flag") != "0"};
}

std::string makeDeepLink(const DefaultMultiAssetsVM& asset, std::size_t position) {
    return std::string(widgetScheme) + pathAndQuery(asset) +
           "&positionSelected=" + std::to_string(position + 1);
}

}  // namespace extension
