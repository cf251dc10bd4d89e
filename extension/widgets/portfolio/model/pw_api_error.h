#pragma once

// How a request for the portfolio ended.

#include <nlohmann/json_fwd.hpp>
#include <string_view>
#include "platform/base/result.h"

namespace extension {

enum class PWAPIError {
    /// A portfolio with money in it; the entry carries its rows.
    success,
    /// No usable answer.
    failed,
    /// Nobody is signed in to the phone app.
    nonLogin,
    /// The user has no portfolio, or nothing is invested.
    noPortfolio,
};

/// The case's name.
std::string_view caseName(PWAPIError state);

/// The state as an error: domain "PWAPIError", the case's index as its code.
platform::Error errorOf(PWAPIError state);

/// An object with the case's name as its only key: {"nonLogin": {}}.
nlohmann::ordered_json encodedState(PWAPIError state);
/// Fails (domain "DecodingError") for an object that does not have exactly one key, and for an unknown case.
platform::Result<PWAPIError> decodeState(const nlohmann::json& json);

}  // namespace extension
