#pragma once

// The service's portfolio summary, as its JSON document carries it. Each of the three can be read with
// `platform::decodedJSON` and written with `platform::encodedJSON`.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/result.h"
#include "platform/base/uuid.h"

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

    static void members(auto& self, auto&& member) {
        member("name", self.name);
        member("investments", self.investments);
        member("networth", self.networth);
        member("change", self.change);
        member("percentchange", self.percentchange);
        member("direction", self.direction);
        member("over_change", self.overChange);
        member("over_percentchange", self.overPercentchange);
        member("over_direction", self.overDirection);
        member("over_realized", self.overRealized);
        member("realized_direction", self.realizedDirection);
        member("stk_latest_value", self.stkLatestValue);
        member("no_of_stocks", self.noOfStocks);
        member("portfolio_unit", self.portfolioUnit);
        member("redirect_url", self.redirectURL);
        // The only one in camel case.
        member("userType", self.userType);
    }
    bool operator==(const NetworthDetails&) const = default;
};

struct Portfoliosummary {
    std::optional<NetworthDetails> networthDetails;

    static void members(auto& self, auto&& member) { member("networth_details", self.networthDetails); }
    bool operator==(const Portfoliosummary&) const = default;
};

struct PortfolioDataModel {
    std::optional<Portfoliosummary> portfoliosummary;

    static void members(auto& self, auto&& member) { member("portfoliosummary", self.portfoliosummary); }
    bool operator==(const PortfolioDataModel&) const = default;
};

struct PortfolioWidgetVM {
    platform::UUID id;
    std::string title;
    /// The amount, exactly as the service sent it.
    std::string value;
    /// Gain, loss, or absent when it is neither.
    std::optional<bool> isProfit;
    /// Stands at the trailing side of its line.
    bool isTrailing = false;
    /// "(1.20%)" for the two gains, empty for the others.
    std::string percentage;

    static void members(auto& self, auto&& member) {
        member("id", self.id);
        member("title", self.title);
        member("value", self.value);
        member("isProfit", self.isProfit);
        member("isTrailing", self.isTrailing);
        member("percentage", self.percentage);
    }
    bool operator==(const PortfolioWidgetVM&) const = default;
};

/// Networth, Invested, P&L and Day's Gain, in this order, with fresh ids. An absent text counts as empty.
std::vector<PortfolioWidgetVM> makeRows(const NetworthDetails& details, platform::IdSource& ids);

/// A JSON array with one object a row. Fails when a text is not UTF-8.
platform::Result<std::string> encodedRows(const std::vector<PortfolioWidgetVM>& rows);
/// Every key but "isProfit" must be there and of its type.
platform::Result<std::vector<PortfolioWidgetVM>> decodeRows(std::string_view json);

}  // namespace extension
