#pragma once

// How the service answers requests for quotes, and its scenes: answers that never change, whatever the clock,
// the fault and the user, so that pictures can be compared.

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <string_view>
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

inline constexpr std::string_view scenePrefix = "/scene/";

/// Answers "/scene/NAME/…" as the service answers "/…" to the extension: with quotes for every identifier,
/// stories whose thumbnails are at `origin`, and one user's portfolio.
///
/// NAME is "full", "one", "none", "long", "live", "gain", "loss" or "neutral"; other names get status 404.
/// Any thread.
serving::Response sceneAnswer(const serving::Request& request, std::string_view origin);

}  // namespace demo
