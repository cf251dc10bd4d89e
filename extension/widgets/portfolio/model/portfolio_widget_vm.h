#pragma once

// One figure of the portfolio, ready for display, and the form in which the last good ones are kept.

#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include "extension/widgets/portfolio/model/portfolio_data_model.h"
#include "platform/base/result.h"
#include "platform/base/uuid.h"

namespace extension {

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
