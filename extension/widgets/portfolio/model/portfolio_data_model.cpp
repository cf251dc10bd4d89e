#include "extension/widgets/portfolio/model/portfolio_data_model.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>
#include "platform/json/strict_json.h"

namespace extension {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using platform::Result;

using TextField = std::optional<std::string> NetworthDetails::*;

struct TextMember {
    const char* key;
    TextField field;
};

constexpr const char* countKey = "no_of_stocks";

/// In the service's order; the count of stocks stands between the two lists.
constexpr std::array<TextMember, 12> membersBeforeCount{
    {{"name", &NetworthDetails::name},
     {"investments", &NetworthDetails::investments},
     {"networth", &NetworthDetails::networth},
     {"change", &NetworthDetails::change},
     {"percentchange", &NetworthDetails::percentchange},
     {"direction", &NetworthDetails::direction},
     {"over_change", &NetworthDetails::overChange},
     {"over_percentchange", &NetworthDetails::overPercentchange},
     {"over_direction", &NetworthDetails::overDirection},
     {"over_realized", &NetworthDetails::overRealized},
     {"realized_direction", &NetworthDetails::realizedDirection},
     {"stk_latest_value", &NetworthDetails::stkLatestValue}}};
// "userType" alone is in camel case.
constexpr std::array<TextMember, 3> membersAfterCount{{{"portfolio_unit", &NetworthDetails::portfolioUnit},
                                                       {"redirect_url", &NetworthDetails::redirectURL},
                                                       {"userType", &NetworthDetails::userType}}};

template <typename Members>
Result<void> readTexts(const json& object, const Members& members, NetworthDetails& details) {
    for (const auto& [key, field] : members) {
        Result<std::optional<std::string>> text = platform::optionalText(object, key);
        if (!text) return tl::unexpected(text.error());
        details.*field = std::move(*text);
    }
    return {};
}

Result<NetworthDetails> decodeDetails(const json& object) {
    if (const auto isObject = platform::requireObject(object, "networth_details"); !isObject) {
        return tl::unexpected(isObject.error());
    }
    NetworthDetails details;
    if (const auto read = readTexts(object, membersBeforeCount, details); !read) {
        return tl::unexpected(read.error());
    }
    const auto count = platform::optionalInteger(object, countKey);
    if (!count) return tl::unexpected(count.error());
    details.noOfStocks = *count;
    if (const auto read = readTexts(object, membersAfterCount, details); !read) {
        return tl::unexpected(read.error());
    }
    return details;
}

Result<Portfoliosummary> decodeSummary(const json& object) {
    if (const auto isObject = platform::requireObject(object, "portfoliosummary"); !isObject) {
        return tl::unexpected(isObject.error());
    }
    Portfoliosummary summary;
    if (const json* details = platform::presentMember(object, "networth_details")) {
        Result<NetworthDetails> decoded = decodeDetails(*details);
        if (!decoded) return tl::unexpected(decoded.error());
        summary.networthDetails = std::move(*decoded);
    }
    return summary;
}

template <typename Members>
void writeTexts(const NetworthDetails& details, const Members& members, ordered_json& object) {
    for (const auto& [key, field] : members) {
        if (const auto& text = details.*field) object[key] = *text;
    }
}

}  // namespace

Result<PortfolioDataModel> decodePortfolio(std::string_view body) {
    const Result<json> document = platform::parseStrictJson(body);
    if (!document) return tl::unexpected(document.error());
    if (const auto isObject = platform::requireObject(*document, "the document"); !isObject) {
        return tl::unexpected(isObject.error());
    }
    PortfolioDataModel portfolio;
    if (const json* summary = platform::presentMember(*document, "portfoliosummary")) {
        Result<Portfoliosummary> decoded = decodeSummary(*summary);
        if (!decoded) return tl::unexpected(decoded.error());
        portfolio.portfoliosummary = std::move(*decoded);
    }
    return portfolio;
}

ordered_json encodedPortfolio(const PortfolioDataModel& portfolio) {
    ordered_json document = ordered_json::object();
    if (!portfolio.portfoliosummary) return document;
    ordered_json& summary = document["portfoliosummary"] = ordered_json::object();
    if (!portfolio.portfoliosummary->networthDetails) return document;
    const NetworthDetails& details = *portfolio.portfoliosummary->networthDetails;
    ordered_json& object = summary["networth_details"] = ordered_json::object();
    writeTexts(details, membersBeforeCount, object);
    if (details.noOfStocks) object[countKey] = *details.noOfStocks;
    writeTexts(details, membersAfterCount, object);
    return document;
}

}  // namespace extension
