#include "extension/widgets/portfolio/views/portfolio_view.h"

#include <string>
#include <utility>
#include "extension/app/settings/widget_names.h"
#include "extension/theme/hex_codec.h"
#include "extension/ui/common/widget_item_texts.h"

namespace extension {

using namespace platform;

namespace {

constexpr node::Frame wholeWidget{
    .minWidth = 0.0, .maxWidth = infinity, .minHeight = 0.0, .maxHeight = infinity};

/// Text whose lines are centred.
View message(const char* text, double size, FontWeight weight, const Color& color) {
    return Text(text, Font::system(size, weight))
        .foregroundColor(color)
        .multilineTextAlignment(HorizontalAlignment::center);
}

Color valueColor(const PortfolioWidgetVM& row, const PWTimelineEntry& entry) {
    if (!row.isProfit) return entry.textColor;
    if (!*row.isProfit) return colorFromHexString("#FF3606");
    return colorFromHexString(entry.isDark ? "#31D300" : "#097100");
}

}  // namespace

View PWidgetRegularText::body() const {
    return oneLine(value, Font::system(isCompact ? font - 2.0 : font), color);
}

View PWidgetItemTitle::body() const {
    const Font face =
        isCompact ? Font::system(font - 2.0, FontWeight::regular) : Font::system(font, FontWeight::bold);
    return Text(value, face).foregroundColor(color).multilineTextAlignment(HorizontalAlignment::center);
}

View PWidgetItemValue::body() const {
    const Font face =
        isCompact ? Font::system(12.0, FontWeight::regular) : Font::system(14.0, FontWeight::bold);
    return oneLine(value, face, color);
}

View PWDivider::body() const {
    return Divider()
        .foregroundColor(color)
        .opacity(0.5)
        .frame({.height = isCompact ? 1.0 : 2.0})
        .frame({.height = isCompact ? 2.0 : 4.0});
}

View RupeeSymbol::body() const {
    // The amount is shortened before the sign is.
    return Text("₹", regularFont(isCompact ? 10.0 : 12.0)).body().fixedSize(true, true);
}

View outlined(const View& label) {
    return label.overlay(RoundedRectangle(
        {.cornerRadius = 6.0,
         .style = RoundedCornerStyle::continuous,
         .fill = {},
         .stroke =
             node::Stroke{.color = colorFromHexString("#28659D"), .lineWidth = 1.0, .miterLimit = 10.0}}));
}

View AddPortfolioCTAView::body() const {
    return outlined(Text("Add to Portfolio", Font::system(12.0, FontWeight::medium))
                        .foregroundColor(pwTimelineEntry.textColor)
                        .body()
                        .padding(10.0));
}

View NoPortfolioRecordView::body() const {
    const View content =
        VStack({.alignment = HorizontalAlignment::center, .spacing = isCompact ? 6.0 : 8.0},
               PWidgetItemTitle{.value = "Add Stocks to your Portfolio",
                                .color = pwTimelineEntry.textColor,
                                .isCompact = isCompact,
                                .font = 14.0},
               message("Track your investments across Stocks, Mutual Funds, ULIP etc",
                       isCompact ? 10.0 : 12.0, FontWeight::regular, pwTimelineEntry.dateTimeColor),
               AddPortfolioCTAView{.pwTimelineEntry = pwTimelineEntry})
            .padding({.leading = 8.0, .trailing = 8.0})
            .frame(wholeWidget);
    return Link(std::string(addPortfolioLink), content).padding(6.0);
}

View LoginToCheckView::body() const {
    // Without its own colour: the outline's blue is too dark to be read on the dark background.
    return outlined(Text("Login", Font::system(14.0, FontWeight::medium))
                        .body()
                        .padding({.top = 8.0, .leading = 20.0, .bottom = 8.0, .trailing = 20.0}));
}

View LoginToCheckPortfolioView::body() const {
    const View content = VStack({.alignment = HorizontalAlignment::center, .spacing = 12.0},
                                message("Please login to check your portfolio", isCompact ? 12.0 : 14.0,
                                        FontWeight::regular, pwTimelineEntry.textColor),
                                LoginToCheckView{})
                             .padding({.leading = 8.0, .trailing = 8.0})
                             .frame(wholeWidget);
    return Link(std::string(loginLink), content).padding(6.0);
}

View HeaderView::body() const {
    const double iconSize = isCompact ? 18.0 : 22.0;
    std::vector<View> parts{Image(pwTimelineEntry.portfolioIcon, {.isResizable = true})
                                .frame({.width = iconSize, .height = iconSize})};
    if (!isCompact)
        parts.push_back(Text("Portfolio", Font::system(16.0)).foregroundColor(pwTimelineEntry.textColor));
    parts.push_back(Spacer(0.0));
    parts.push_back(Image("logo", {.isResizable = true}).frame({.width = iconSize, .height = iconSize}));
    return HStack({.alignment = VerticalAlignment::center, .spacing = 8.0}, std::move(parts));
}

View StaticticsView::body() const {
    const Color color = valueColor(portfolioWidgetVM, pwTimelineEntry);
    std::vector<View> figures{
        RupeeSymbol{.isCompact = isCompact}.body().foregroundColor(color).layoutPriority(2.0),
        PWidgetItemValue{.value = portfolioWidgetVM.value, .color = color, .isCompact = isCompact}
            .body()
            .layoutPriority(1.0)};
    if (!portfolioWidgetVM.percentage.empty()) {
        figures.push_back(oneLine(portfolioWidgetVM.percentage, Font::system(isCompact ? 12.0 : 14.0), color)
                              .padding({.leading = isCompact ? 2.0 : 3.0}));
    }
    const auto side = portfolioWidgetVM.isTrailing && !isCompact ? HorizontalAlignment::trailing
                                                                 : HorizontalAlignment::leading;
    return VStack(
        {.alignment = side, .spacing = isCompact ? 0.0 : 2.0},
        PWidgetRegularText{.value = portfolioWidgetVM.title,
                           .color = pwTimelineEntry.dateTimeColor,
                           .isCompact = isCompact,
                           .font = 12.0},
        HStack({.alignment = VerticalAlignment::firstTextBaseline, .spacing = 1.0}, std::move(figures)));
}

View PortfolioMediumView::body() const {
    std::vector<View> lines;
    std::vector<View> line;
    for (std::size_t index = 0; index < portfolioWidgetVM.size(); ++index) {
        const PortfolioWidgetVM& row = portfolioWidgetVM[index];
        if (row.isTrailing) line.push_back(Spacer(6.0));
        line.push_back(StaticticsView{.portfolioWidgetVM = row,
                                      .pwTimelineEntry = pwTimelineEntry,
                                      .isCompact = isCompact,
                                      .index = index});
        const bool isLast = index + 1 == portfolioWidgetVM.size();
        if (!row.isTrailing && !isLast && portfolioWidgetVM[index + 1].isTrailing) continue;
        if (!lines.empty())
            lines.push_back(PWDivider{.color = pwTimelineEntry.textColor, .isCompact = isCompact});
        lines.push_back(HStack({.alignment = VerticalAlignment::top, .spacing = 0.0}, std::move(line)));
        line.clear();
    }
    return VStack({.alignment = HorizontalAlignment::leading, .spacing = 7.0}, std::move(lines)).padding(5.0);
}

View PortfolioCompactView::body() const {
    std::vector<View> lines;
    for (std::size_t index = 0; index < portfolioWidgetVM.size(); ++index) {
        lines.push_back(StaticticsView{.portfolioWidgetVM = portfolioWidgetVM[index],
                                       .pwTimelineEntry = pwTimelineEntry,
                                       .isCompact = isCompact,
                                       .index = index});
    }
    return VStack({.alignment = HorizontalAlignment::leading, .spacing = 1.0}, std::move(lines));
}

View PortfolioView::body() const {
    const HeaderView header{.pwTimelineEntry = pwTimelineEntry, .isCompact = isCompact};
    const auto& rows = pwTimelineEntry.portfolioWidgetVM;
    const View content =
        isCompact ? PortfolioCompactView{.portfolioWidgetVM = rows, .pwTimelineEntry = pwTimelineEntry}.body()
                  : PortfolioMediumView{.portfolioWidgetVM = rows, .pwTimelineEntry = pwTimelineEntry}.body();
    // The medium rows have their own padding; the header lines up with them.
    const View inset = isCompact ? header.body() : header.body().padding({.leading = 5.0, .trailing = 5.0});
    return VStack({.alignment = HorizontalAlignment::leading, .spacing = 4.0}, inset, content)
        .frame({.minWidth = 0.0,
                .maxWidth = infinity,
                .minHeight = 0.0,
                .maxHeight = infinity,
                .alignment = {HorizontalAlignment::leading, VerticalAlignment::center}})
        .padding(4.0)
        .background(ColorFill(pwTimelineEntry.backgroundColor))
        .widgetURL(std::string(openPortfolioLink));
}

View PortfolioWidgetView::body(const EnvironmentValues& environment) const {
    const bool isCompact = environment.widgetFamily == WidgetFamily::systemSmall;
    const double margin = isCompact ? 9.0 : 12.0;
    // Amounts need all the width there is: a crore with its percentage is wide.
    const double side = isCompact ? margin : 7.0;
    switch (pwTimelineEntry.apiError) {
        case PWAPIError::success:
            return PortfolioView{.pwTimelineEntry = pwTimelineEntry, .isCompact = isCompact}.body().padding(
                {.top = margin, .leading = side, .bottom = margin, .trailing = side});
        case PWAPIError::noPortfolio:
            return NoPortfolioRecordView{.pwTimelineEntry = pwTimelineEntry, .isCompact = isCompact};
        case PWAPIError::nonLogin:
        case PWAPIError::failed:
            return LoginToCheckPortfolioView{.pwTimelineEntry = pwTimelineEntry, .isCompact = isCompact};
    }
    return {};
}

View PortfolioWidgetEntryView::body(const EnvironmentValues& environment) const {
    return PortfolioWidgetView{.pwTimelineEntry = portfolioTimelineEntry}.body(environment);
}

}  // namespace extension
