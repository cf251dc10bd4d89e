#include "extension/widgets/perch/model/selected_assets.h"

#include <string>
#include <string_view>
#include "extension/app/settings/store_keys.h"
#include "extension/app/settings/widget_helper.h"
#include "extension/app/settings/widget_names.h"
#include "platform/text/letter_case.h"

namespace extension {
namespace {

using platform::PropertyList;
using platform::Result;
using platform::UserDefaults;

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

PropertyList indexRecord(const char* title, const char* exchange, const char* id, const std::string& symbol) {
    return PropertyList::Dictionary{{"title", title},   {"exchg", exchange},
                                    {"id", id},         {"type", "indices"},
                                    {"symbol", symbol}, {"priceIdentifier", symbol + "-II"},
                                    {"link_flag", "1"}};
}

PropertyList defaultRecords() {
    // The service spells only the last symbol in lower case.
    return PropertyList::Array{indexRecord("SENSEX", "bse", "4", "in;SEN"),
                               indexRecord("NIFTY 50", "nse", "9", "in;NSX"),
                               indexRecord("NIFTY BANK", "nse", "23", "in;nbx")};
}

// All or nothing: with the mark but without the list the user would never have assets.
Result<void> seed(UserDefaults::Transaction& store) {
    // Reads again, now that nobody else can write.
    const auto mark = TRY(store.object(keys::firstTimeAppInstalledForWidget));
    if (mark) return {};

    TRY(store.set(keys::firstTimeAppInstalledForWidget, true));
    return store.set(keys::indicesWidget, defaultRecords());
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

void seedDefaultsAtFirstRun(const platform::Runtime& runtime) {
    const auto store = sharedDefaults(runtime);
    if (!store) return;

    // A plain read first, since only the first run needs the lock.
    const auto mark = (*store)->object(keys::firstTimeAppInstalledForWidget);
    if (!mark || *mark) return;

    if (const auto seeded = (*store)->transaction(seed); !seeded)
        runtime.log().write("Failed to store the default assets: " + seeded.error().message);
}

DefaultMultiAssetsListVM loadSelectedAssets(const platform::Runtime& runtime) {
    pruneExpiredFutures(runtime);

    const auto store = sharedDefaults(runtime);
    if (!store) return {};
    const auto lists = (*store)->objects({std::string(keys::indicesWidget), std::string(keys::stockWidget),
                                          std::string(keys::futureWidget), std::string(keys::cryptoWidget)});
    if (!lists) return {};

    DefaultMultiAssetsListVM assets;
    for (const auto& list : *lists) {
        const auto records = list ? platform::arrayOfDictionaries(*list) : std::nullopt;
        if (!records) continue;
        for (const auto& record : *records) assets.defaultAssetsList.push_back(makeAsset(record));
    }
    return assets;
}

}  // namespace extension
