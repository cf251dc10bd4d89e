#include "extension/widgets/portfolio/model/portfolio_widget_vm.h"

#include <nlohmann/json.hpp>
#include <utility>
#include "extension/widgets/portfolio/model/portfolio_widget_vm_json.h"
#include "platform/json/strict_json.h"

namespace extension {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using platform::Result;

std::optional<bool> profitFlag(const std::optional<std::string>& direction) {
    if (direction == "1" || direction == "+1") return true;
    if (direction == "-1") return false;
    return std::nullopt;
}

std::string inBrackets(const std::optional<std::string>& percentage) {
    return "(" + percentage.value_or("") + "%)";
}

tl::unexpected<platform::Error> rowFailure(std::string message) {
    return platform::failure("DecodingError", 1, std::move(message));
}

/// A member that must be there.
Result<std::string> text(const json& object, const char* key) {
    Result<std::optional<std::string>> member = platform::optionalText(object, key);
    if (!member) return tl::unexpected(member.error());
    if (!*member) return rowFailure("\"" + std::string(key) + "\" is missing");
    return std::move(**member);
}

Result<std::optional<bool>> optionalFlag(const json& object, const char* key) {
    const json* member = platform::presentMember(object, key);
    if (member == nullptr) return std::nullopt;
    if (!member->is_boolean()) return rowFailure("\"" + std::string(key) + "\" is no boolean");
    return member->get<bool>();
}

Result<PortfolioWidgetVM> decodeRow(const json& object) {
    if (!object.is_object()) return rowFailure("a row is no object");
    const auto id = text(object, "id");
    const auto uuid = id ? platform::UUID::parse(*id) : std::nullopt;
    if (!uuid) return rowFailure("\"id\" is no identifier");
    auto title = text(object, "title");
    if (!title) return tl::unexpected(title.error());
    auto value = text(object, "value");
    if (!value) return tl::unexpected(value.error());
    auto percentage = text(object, "percentage");
    if (!percentage) return tl::unexpected(percentage.error());
    const auto isProfit = optionalFlag(object, "isProfit");
    if (!isProfit) return tl::unexpected(isProfit.error());
    const auto isTrailing = optionalFlag(object, "isTrailing");
    if (!isTrailing) return tl::unexpected(isTrailing.error());
    if (!*isTrailing) return rowFailure("\"isTrailing\" is missing");
    return PortfolioWidgetVM{.id = *uuid,
                             .title = std::move(*title),
                             .value = std::move(*value),
                             .isProfit = *isProfit,
                             .isTrailing = **isTrailing,
                             .percentage = std::move(*percentage)};
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

ordered_json rowJson(const PortfolioWidgetVM& row) {
    ordered_json object{{"id", row.id.text()}, {"title", row.title}, {"value", row.value}};
    if (row.isProfit) object["isProfit"] = *row.isProfit;
    object["isTrailing"] = row.isTrailing;
    object["percentage"] = row.percentage;
    return object;
}

Result<std::string> encodedRows(const std::vector<PortfolioWidgetVM>& rows) {
    ordered_json array = ordered_json::array();
    for (const PortfolioWidgetVM& row : rows) array.push_back(rowJson(row));
    try {
        return array.dump();
    } catch (const json::exception&) {
        return platform::failure("EncodingError", 1, "a text is no UTF-8");
    }
}

Result<std::vector<PortfolioWidgetVM>> decodeRows(std::string_view text) {
    const Result<json> array = platform::parseStrictJson(text);
    if (!array) return tl::unexpected(array.error());
    if (!array->is_array()) return rowFailure("the saved rows are no array");
    std::vector<PortfolioWidgetVM> rows;
    rows.reserve(array->size());
    for (const json& object : *array) {
        Result<PortfolioWidgetVM> row = decodeRow(object);
        if (!row) return tl::unexpected(row.error());
        rows.push_back(std::move(*row));
    }
    return rows;
}

}  // namespace extension
