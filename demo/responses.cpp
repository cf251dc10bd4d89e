#include "demo/responses.h"

#include <string>
#include "extension/widgets/perch/proto/market_package.h"

namespace demo {

serving::Response quotesResponse(const serving::Request& request, platform::Instant now,
                                 const std::function<Price(const Instrument&, std::size_t place)>& priceOf) {
    extension::MarketPackage_MultiAssetInfo info;
    info.set_success(1);
    auto& list = *info.mutable_data()->mutable_datalist();
    std::string identifiers = serving::queryValue(request.query, "asset_ids").value_or("");
    while (!identifiers.empty()) {
        const std::string identifier = identifiers.substr(0, identifiers.find(','));
        identifiers.erase(0, identifier.size() + 1);
        if (identifier.empty()) continue;
        const Instrument instrument = instrumentFor(identifier);
        const Price price = priceOf(instrument, static_cast<std::size_t>(list.size()));
        auto& item = *list.Add();
        item.set_assetid(std::string(instrument.id));
        item.set_symbol(identifier);
        item.set_shortname(std::string(instrument.title));
        item.set_currentprice(twoDecimals(price.current));
        item.set_change(twoDecimals(price.change));
        item.set_perchange(twoDecimals(price.percentChange));
        item.set_volume(std::to_string(static_cast<long long>(1e9 / price.current)));
        item.set_direction(direction(price.change));
        item.set_ex(std::string(instrument.exchange));
        item.set_disptime(displayTime(now));
        item.set_dateformat("dd MMM, HH:mm:ss");
        item.set_lastupdated(platform::formatInstant(now));
        item.set_assettype(std::string(instrument.type));
        item.set_priceidentifier(identifier);
    }
    return {.contentType = "application/x-protobuf", .body = platform::Bytes(info.SerializeAsString())};
}

}  // namespace demo
