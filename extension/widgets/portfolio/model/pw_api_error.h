#pragma once

// What became of a question for the portfolio.

#include <nlohmann/json_fwd.hpp>
#include <string_view>
#include "platform/base/result.h"

namespace extension {

enum class PWAPIError {
    /// A portfolio with money in it; the entry carries its rows.
    success,
    /// No usable answer.
    failed,
    /// Nobody is signed in in the phone app.
    nonLogin,
    /// The user has no portfolio, or nothing is invested.
    noPortfolio,
};

/// The case's name.
std::string_view caseName(PWAPIError state);

/// An object with the case's name as its only key: {"nonLogin": {}}.
nlohmann::ordered_json encodedState(PWAPIError state);
/// Fails (domain "DecodingError") for an object that has not exactly one key, and for a case that is
/// not known.
platform::Result<PWAPIError> decodeState(const nlohmann::json& json);

}  // namespace extension
