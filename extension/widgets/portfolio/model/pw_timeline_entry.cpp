#include "extension/widgets/portfolio/model/pw_timeline_entry.h"

#include <utility>
#include "extension/theme/theme_type.h"
#include "platform/json/json_coding.h"
#include "platform/view/view_json.h"

namespace extension {

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
