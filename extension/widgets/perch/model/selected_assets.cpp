#include "extension/widgets/perch/model/selected_assets.h"

#include <string>
#include "extension/app/settings/store_keys.h"
#include "extension/app/settings/widget_helper.h"

namespace extension {
namespace {

using platform::PropertyList;
using platform::Result;
using platform::UserDefaults;

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
