#pragma once

// How the service and its scenes answer a request for quotes.

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include "demo/market.h"
#include "serving/http_server.h"

namespace demo {

/// One quote for each identifier in the request's "asset_ids", in that order. `priceOf` gets the instrument
/// and its place in the list. `now` is shown as the time of the quotes.
serving::Response quotesResponse(const serving::Request& request, platform::Instant now,
                                 const std::function<Price(const Instrument&, std::size_t place)>& priceOf);

inline serving::Response jsonResponse(const nlohmann::ordered_json& json, int status = 200) {
    return {.status = status, .contentType = "application/json", .body = platform::Bytes(json.dump())};
}

}  // namespace demo
