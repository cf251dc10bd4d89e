#pragma once

// The service's portfolio summary, as its JSON document carries it.

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace extension {

/// The figures. Amounts, percentages and directions come as texts, already formatted.
struct NetworthDetails {
    std::optional<std::string> name;
    std::optional<std::string> investments;
    std::optional<std::string> networth;
    std::optional<std::string> change;
    std::optional<std::string> percentchange;
    std::optional<std::string> direction;
    std::optional<std::string> overChange;
    std::optional<std::string> overPercentchange;
    std::optional<std::string> overDirection;
    std::optional<std::string> overRealized;
    std::optional<std::string> realizedDirection;
    std::optional<std::string> stkLatestValue;
    std::optional<std::int64_t> noOfStocks;
    std::optional<std::string> portfolioUnit;
    std::optional<std::string> redirectURL;
    std::optional<std::string> userType;

    bool operator==(const NetworthDetails&) const = default;
};

struct Portfoliosummary {
    std::optional<NetworthDetails> networthDetails;

    bool operator==(const Portfoliosummary&) const = default;
};

struct PortfolioDataModel {
    std::optional<Portfoliosummary> portfoliosummary;

    bool operator==(const PortfolioDataModel&) const = default;
};

/// Reads a whole document. A missing or null member is absent, members that are not known are
/// ignored, and a member of another type fails the document whole. The error tells nothing of the
/// document's content.
platform::Result<PortfolioDataModel> decodePortfolio(std::string_view body);

/// The same members again; those that are absent are left out.
nlohmann::ordered_json encodedPortfolio(const PortfolioDataModel& portfolio);

}  // namespace extension
