#pragma once

// One entry of the Portfolio widget's timeline, and how the request for it ended.

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>
#include "extension/widgets/portfolio/model/portfolio_data_model.h"
#include "platform/base/clock.h"
#include "platform/base/color.h"
#include "platform/base/result.h"
#include "platform/base/uuid.h"
#include "platform/runtime/runtime.h"

namespace extension {

/// How a request for the portfolio ended.
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

/// Its colours and its icon follow the theme at the moment when it is made.
struct PWTimelineEntry {
    PWTimelineEntry(const platform::Runtime& runtime, platform::Instant moment,
                    std::vector<PortfolioWidgetVM> rows, PWAPIError state);

    platform::UUID id;
    platform::Instant date;
    /// Empty unless the state is `success`.
    std::vector<PortfolioWidgetVM> portfolioWidgetVM;
    platform::Color backgroundColor;
    platform::Color textColor;
    platform::Color dateTimeColor;
    PWAPIError apiError;
    std::string portfolioIcon;
    /// Whether the colours are those of the dark theme.
    bool isDark = true;
};

nlohmann::ordered_json entryJson(const PWTimelineEntry& entry);

}  // namespace extension
