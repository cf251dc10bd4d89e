#include "extension/widgets/portfolio/model/pw_timeline_entry.h"

#include <utility>
#include "extension/theme/entry_theme.h"
#include "extension/theme/hex_codec.h"
#include "platform/json/json_coding.h"
#include "platform/view/view_json.h"

namespace extension {
namespace {

constexpr const char* darkIcon = "PortfolioDark";
constexpr const char* lightIcon = "PortfolioLight";

}  // namespace

PWTimelineEntry::PWTimelineEntry(const platform::Runtime& runtime, platform::Instant moment,
                                 std::vector<PortfolioWidgetVM> rows, PWAPIError state)
    : id(runtime.ids().next()), date(moment), portfolioWidgetVM(std::move(rows)), apiError(state) {
    const bool isDarkNow = isDarkTheme(runtime);
    backgroundColor = colorFromHexString(isDarkNow ? "#1A1A22" : "#ffffff");
    textColor = colorFromHexString(isDarkNow ? "#ffffff" : "#000000");
    dateTimeColor =
        isDarkNow ? colorFromHexString("#b4b4b4") : platform::Color::rgb(0.0, 0.0, 0.0).withAlpha(0.6);
    portfolioIcon = isDarkNow ? darkIcon : lightIcon;
}

bool PWTimelineEntry::isDark() const { return portfolioIcon == darkIcon; }

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
