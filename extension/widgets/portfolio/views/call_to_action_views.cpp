#include "extension/widgets/portfolio/views/call_to_action_views.h"

#include <string>
#include "extension/app/settings/deep_links.h"
#include "extension/widgets/portfolio/views/portfolio_texts.h"

namespace extension {
namespace {

using namespace platform;

constexpr node::Frame wholeWidget{
    .minWidth = 0.0, .maxWidth = infinity, .minHeight = 0.0, .maxHeight = infinity};

/// Text whose lines are centred.
View message(const char* text, double size, FontWeight weight, const Color& color) {
    return Text(text, Font::system(size, weight))
        .foregroundColor(color)
        .multilineTextAlignment(HorizontalAlignment::center);
}

}  // namespace

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

}  // namespace extension
