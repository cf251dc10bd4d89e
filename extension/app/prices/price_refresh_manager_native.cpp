#include "extension/app/prices/price_refresh_manager_native.h"

#include <utility>
#include "extension/app/settings/build_flags.h"
#include "platform/url/url_session.h"

namespace extension {
namespace {

using platform::HTTPResponse;
using platform::Result;

/// Room for about ten thousand quotes, well within the memory that an extension may use.
constexpr std::size_t largestAnswer = 2U << 20;

std::string quotesAddress(const platform::Runtime& runtime, const std::vector<std::string>& identifiers) {
    std::string address = apiHost(runtime) + "/swiftapi/v1/markets/multi-asset-info?asset_ids=";
    for (std::size_t i = 0; i < identifiers.size(); ++i) {
        if (i > 0) address += ',';
        address += identifiers[i];
    }
    return address;
}

Result<MarketPackage_MultiAssetInfo> quotesOf(const Result<HTTPResponse>& response) {
    if (!response) return tl::unexpected(response.error());
    if (response->statusCode != 200 || !response->body)
        return tl::unexpected(platform::urlError(platform::url_error::badServerResponse));
    return decodeMultiAssetInfo(response->body->view());
}

}  // namespace

PriceRefreshManagerNative& PriceRefreshManagerNative::shared() {
    static PriceRefreshManagerNative manager(platform::Runtime::process());
    return manager;
}

bool PriceRefreshManagerNative::fetch(const std::vector<std::string>& identifiers, Success success,
                                      Failure failure) {
    if (identifiers.empty()) return false;
    const std::string address = quotesAddress(runtime_, identifiers);
    const std::optional<platform::URL> url = platform::URL::parse(address);
    if (!url) {
        failure(platform::urlError(platform::url_error::badURL));
        return false;
    }
    if (runtime_.log().isEnabled()) runtime_.log().write("Refresh API - " + address);
    runtime_.urls().sharedSession().dataTask(
        {.url = *url, .maximumBodySize = largestAnswer},
        [success = std::move(success), failure = std::move(failure)](const Result<HTTPResponse>& response) {
            Result<MarketPackage_MultiAssetInfo> quotes = quotesOf(response);
            if (!quotes) return failure(std::move(quotes.error()));
            success(*std::move(quotes));
        });
    return true;
}

}  // namespace extension
