#include "extension/widgets/portfolio/model/portfolio_widget_vm.h"

#include "platform/json/json_coding.h"

namespace extension {
namespace {

std::optional<bool> profitFlag(const std::optional<std::string>& direction) {
    if (direction == "1" || direction == "+1") return true;
    if (direction == "-1") return false;
    return std::nullopt;
}

std::string inBrackets(const std::optional<std::string>& percentage) {
    return "(" + percentage.value_or("") + "%)";
}

}  // namespace

std::vector<PortfolioWidgetVM> makeRows(const NetworthDetails& details, platform::IdSource& ids) {
    return {{.id = ids.next(),
             .title = "Networth",
             .value = details.networth.value_or(""),
             .isProfit = {},
             .isTrailing = false,
             .percentage = ""},
            {.id = ids.next(),
             .title = "Invested",
             .value = details.investments.value_or(""),
             .isProfit = {},
             .isTrailing = true,
             .percentage = ""},
            {.id = ids.next(),
             .title = "P&L",
             .value = details.overChange.value_or(""),
             .isProfit = profitFlag(details.overDirection),
             .isTrailing = false,
             .percentage = inBrackets(details.overPercentchange)},
            {.id = ids.next(),
             .title = "Day's Gain",
             .value = details.change.value_or(""),
             .isProfit = profitFlag(details.direction),
             .isTrailing = true,
             .percentage = inBrackets(details.percentchange)}};
}

platform::Result<std::string> encodedRows(const std::vector<PortfolioWidgetVM>& rows) {
    try {
        return platform::encodedJSON(rows).dump();
    } catch (const nlohmann::json::exception&) {
        return platform::failure("EncodingError", 1, "a text is not UTF-8");
    }
}

platform::Result<std::vector<PortfolioWidgetVM>> decodeRows(std::string_view json) {
    return platform::decodedJSON<std::vector<PortfolioWidgetVM>>(json);
}

}  // namespace extension
