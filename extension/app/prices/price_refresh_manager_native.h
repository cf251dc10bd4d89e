#pragma once

// Fresh quotes for a list of assets.

#include <functional>
#include <string>
#include <vector>
#include "extension/widgets/perch/proto/market_package.h"
#include "platform/base/result.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// A source of prices. For a non-empty list exactly one of the two callbacks is called, once. `fetch` answers
/// whether a request is under way; if not, no callback is called after it returns.
class PriceRefreshDataSource {
public:
    using Success = std::function<void(MarketPackage_MultiAssetInfo)>;
    using Failure = std::function<void(platform::Error)>;

    virtual ~PriceRefreshDataSource() = default;
    virtual bool fetch(const std::vector<std::string>& identifiers, Success success, Failure failure) = 0;
};

/// Asks the service's market host for all assets in one request. Keeps nothing between requests. Any
/// thread.
class PriceRefreshManagerNative final : public PriceRefreshDataSource {
public:
    explicit PriceRefreshManagerNative(const platform::Runtime& runtime) : runtime_(runtime) {}
    PriceRefreshManagerNative(const PriceRefreshManagerNative&) = delete;
    PriceRefreshManagerNative& operator=(const PriceRefreshManagerNative&) = delete;

    /// The one of this process. Called by the phone app; nothing here does.
    static PriceRefreshManagerNative& shared();

    /// Identifiers go out in their order and as they are. Without any, nothing is sent and nothing
    /// called. When they do not make an address, `failure` gets badURL on this thread, before the call
    /// returns; everything else comes on the queue of the process's shared session. Any status but 200 and an
    /// empty body are badServerResponse; a body that is not a whole message is the decoder's error.
    bool fetch(const std::vector<std::string>& identifiers, Success success, Failure failure) override;

private:
    const platform::Runtime& runtime_;
};

}  // namespace extension
