#include "extension/widgets/portfolio/model/pw_timeline_entry.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include "extension/theme/theme_type.h"
#include "platform/json/json_coding.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

struct Case {
    const char* name;
    const char* message;
};

/// In the order of the enumeration.
constexpr std::array<Case, 4> cases{{{"success", "the portfolio is there"},
                                     {"failed", "the service gave no usable answer"},
                                     {"nonLogin", "nobody is signed in"},
                                     {"noPortfolio", "nothing is invested"}}};

tl::unexpected<platform::Error> decodingFailure(std::string message) {
    return platform::failure("DecodingError", 1, std::move(message));
}

}  // namespace

std::string_view caseName(PWAPIError state) { return cases[static_cast<std::size_t>(state)].name; }

platform::Error errorOf(PWAPIError state) {
    return {"PWAPIError", static_cast<int>(state), cases[static_cast<std::size_t>(state)].message};
}

nlohmann::ordered_json encodedState(PWAPIError state) {
    return {{std::string(caseName(state)), nlohmann::ordered_json::object()}};
}

platform::Result<PWAPIError> decodeState(const nlohmann::json& json) {
    if (!json.is_object()) return decodingFailure("the state is not an object");
    // Word for word what others look for, full stop included.
    if (json.size() != 1) return decodingFailure("Invalid number of keys found, expected one.");
    const auto* const found = std::ranges::find(cases, json.begin().key(), &Case::name);
    if (found == cases.end()) return decodingFailure("the state is unknown");
    if (!json.begin().value().is_object()) return decodingFailure("the value of the state is not an object");
    return static_cast<PWAPIError>(found - cases.begin());
}

PWTimelineEntry::PWTimelineEntry(const platform::Runtime& runtime, platform::Instant moment,
                                 std::vector<PortfolioWidgetVM> rows, PWAPIError state)
    : id(runtime.ids().next()), date(moment), portfolioWidgetVM(std::move(rows)), apiError(state) {
    const EntryColors colors = entryColors(runtime);
    backgroundColor = colors.background;
    textColor = colors.text;
    dateTimeColor = colors.isDark ? colors.dateTime : colors.dateTime.withAlpha(0.6);
    portfolioIcon = colors.isDark ? "PortfolioDark" : "PortfolioLight";
    isDark = colors.isDark;
}

nlohmann::ordered_json entryJson(const PWTimelineEntry& entry) {
    return {{"id", entry.id.text()},
            {"date", platform::formatInstant(entry.date)},
            {"portfolioWidgetVM", platform::encodedJSON(entry.portfolioWidgetVM)},
            {"backgroundColor", platform::colorJson(entry.backgroundColor)},
            {"textColor", platform::colorJson(entry.textColor)},
            {"dateTimeColor", platform::colorJson(entry.dateTimeColor)},
            {"apiError", caseName(entry.apiError)},
            {"portfolioIcon", entry.portfolioIcon}};
}

}  // namespace extension
