#include "host/gallery/sheet_states.h"

#include <utility>

namespace host {
namespace {

using companion::ChosenAssets;
using platform::PropertyList;

constexpr std::string_view news = "NewsWidget";
constexpr std::string_view perch = "PerchWidget";
constexpr std::string_view portfolio = "PortfolioWidget";

PropertyList asset(const std::string& type, const std::string& id, const std::string& title,
                   const std::string& exchange, const std::string& symbol, const std::string& identifier) {
    return PropertyList::Dictionary{{"type", type},       {"id", id},         {"title", title},
                                    {"exchg", exchange},  {"symbol", symbol}, {"priceIdentifier", identifier},
                                    {"market", "equity"}, {"link_flag", "1"}};
}

PropertyList sensex() { return asset("indices", "4", "SENSEX", "bse", "in;SEN", "in;SEN-II"); }
PropertyList nifty50() { return asset("indices", "9", "NIFTY 50", "nse", "in;NSX", "in;NSX-II"); }
PropertyList niftyBank() { return asset("indices", "23", "NIFTY BANK", "nse", "in;nbx", "in;nbx-II"); }

PropertyList stock(const std::string& id, const std::string& title) {
    return asset("stock", id, title, "nse", id, id + "-EQ");
}

PropertyList crypto(const std::string& id, const std::string& title) {
    return asset("crypto", id, title, "", id, id + "-INR");
}

ChosenAssets indices(PropertyList::Array list) {
    ChosenAssets assets;
    assets.indices = std::move(list);
    return assets;
}

ChosenAssets threeIndices() { return indices({sensex(), nifty50(), niftyBank()}); }

ChosenAssets eighteenAssets() {
    ChosenAssets assets = threeIndices();
    assets.stocks = {stock("KVT", "Kaveri Textiles"), stock("SHP", "Sahyadri Power"),
                     stock("MLB", "Malabar Bank"),    stock("NLS", "Nilgiri Software Services"),
                     stock("GDP", "Godavari Pharma"), stock("ARV", "Aravalli Cement"),
                     stock("SAT", "Satpura Foods"),   stock("PAL", "Palani Paints"),
                     stock("ANM", "Anamudi Tea"),     stock("KDR", "Kedar Airways"),
                     stock("TPT", "Tapti Ports"),     stock("CHN", "Chenab Glass")};
    assets.cryptos = {crypto("BTC", "Bitcoin"), crypto("ETH", "Ether"), crypto("DOGE", "Dogecoin")};
    return assets;
}

// Plain letters only: an asset's link carries its title as it is, and a compact row whose link is not an
// address ends the extension.
ChosenAssets longNames() {
    ChosenAssets assets =
        indices({asset("indices", "4", "The Broad Market Equal Weight Total Return Index of All Shares",
                       "bse", "in;SEN", "in;SEN-II")});
    assets.stocks = {
        stock("KVT", "Donaudampfschifffahrtsgesellschaftskapitaensmuetzenabzeichen Holdings"),
        stock("SHP", "Sahyadri Power Generation Transmission and Distribution Company of Maharashtra")};
    return assets;
}

}  // namespace

std::vector<SheetState> sheetStates() {
    const std::vector every{news, perch, portfolio};
    return {
        // The service has nothing to say, so that a placeholder looks the same however early it answers.
        {.name = "placeholder",
         .title = "Placeholder",
         .scene = "none",
         .kinds = every,
         .request = EntryRequest::placeholder,
         .assets = threeIndices(),
         .isSignedIn = false},
        {.name = "full", .title = "Full", .scene = "full", .kinds = every, .assets = threeIndices()},
        {.name = "empty",
         .title = "Empty",
         .scene = "none",
         .kinds = {news, perch},
         .assets = threeIndices()},
        {.name = "one-row",
         .title = "One row",
         .scene = "one",
         .kinds = {news, perch},
         .assets = indices({sensex()})},
        {.name = "many-rows",
         .title = "Many rows",
         .scene = "full",
         .kinds = {perch},
         .assets = eighteenAssets()},
        {.name = "long-texts", .title = "Long texts", .scene = "long", .kinds = every, .assets = longNames()},
        {.name = "live-story", .title = "Live stories", .scene = "live", .kinds = {news}},
        {.name = "signed-out",
         .title = "Signed out",
         .scene = "full",
         .kinds = {portfolio},
         .isSignedIn = false},
        {.name = "no-portfolio", .title = "No portfolio", .scene = "none", .kinds = {portfolio}},
        {.name = "gain",
         .title = "Gain",
         .scene = "gain",
         .kinds = {perch, portfolio},
         .assets = threeIndices()},
        {.name = "loss",
         .title = "Loss",
         .scene = "loss",
         .kinds = {perch, portfolio},
         .assets = threeIndices()},
        {.name = "neutral",
         .title = "Neutral",
         .scene = "neutral",
         .kinds = {perch, portfolio},
         .assets = threeIndices()},
        {.name = "system-16",
         .title = "Full, on version 16",
         .scene = "full",
         .kinds = every,
         .assets = threeIndices(),
         .osVersion = 16},
    };
}

}  // namespace host
