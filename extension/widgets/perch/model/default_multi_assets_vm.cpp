#include "extension/widgets/perch/model/default_multi_assets_vm.h"

#include <string_view>
#include "platform/text/letter_case.h"

namespace extension {

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

}  // namespace extension
