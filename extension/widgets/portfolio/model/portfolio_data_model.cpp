#include "extension/widgets/portfolio/model/portfolio_data_model.h"

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
    const auto row = [&ids](const char* title, const std::optional<std::string>& value, bool isTrailing) {
        return PortfolioWidgetVM{.id = ids.next(),
                                 .title = title,
                                 .value = value.value_or(""),
                                 .isProfit = {},
                                 .isTrailing = isTrailing,
                                 .percentage = ""};
    };
    std::vector rows{row("Networth", details.networth, false), row("Invested", details.investments, true),
                     row("P&L", details.overChange, false), row("Day's Gain", details.change, true)};
    rows[2].isProfit = profitFlag(details.overDirection);
    rows[2].percentage = inBrackets(details.overPercentchange);
    rows[3].isProfit = profitFlag(details.direction);
    rows[3].percentage = inBrackets(details.percentchange);
    return rows;
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
