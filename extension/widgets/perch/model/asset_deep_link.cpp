#include "extension/widgets/perch/model/asset_deep_link.h"

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

std::string makeDeepLink(const DefaultMultiAssetsVM& asset, std::size_t position) {
    return std::string(widgetScheme) + pathAndQuery(asset) +
           "&positionSelected=" + std::to_string(position + 1);
}

}  // namespace extension
