#pragma once

// What the Portfolio widget shows for an entry: the signed-in user's figures, or what to do instead (add a
// portfolio, or sign in).

#include <cstddef>
#include <string>
#include <vector>
#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "platform/base/color.h"
#include "platform/view/view.h"

namespace extension {

/// The system font at `font` points, two less when compact.
struct PWidgetRegularText {
    std::string value;
    platform::Color color;
    bool isCompact = false;
    double font = 14.0;

    platform::View body() const;
};

/// As PWidgetRegularText, but bold when it is not compact.
struct PWidgetItemTitle {
    std::string value;
    platform::Color color;
    bool isCompact = false;
    double font = 14.0;

    platform::View body() const;
};

/// An amount: 14 points bold, 12 points regular when compact. One line, shortened where it does not fit.
struct PWidgetItemValue {
    std::string value;
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

/// A thin line with a little room around it.
struct PWDivider {
    platform::Color color;
    bool isCompact = false;

    platform::View body() const;
};

/// Stands before every amount, an empty one too.
struct RupeeSymbol {
    bool isCompact = false;

    platform::View body() const;
};

/// The outline of a button around its label.
platform::View outlined(const platform::View& label);

/// The button of NoPortfolioRecordView.
struct AddPortfolioCTAView {
    const PWTimelineEntry& pwTimelineEntry;

    platform::View body() const;
};

/// For a user without a portfolio; a tap leads to adding one.
struct NoPortfolioRecordView {
    const PWTimelineEntry& pwTimelineEntry;
    bool isCompact = false;

    platform::View body() const;
};

/// The button of LoginToCheckPortfolioView.
struct LoginToCheckView {
    platform::View body() const;
};

/// For a user who is not signed in, and for any failure; a tap leads to signing in.
struct LoginToCheckPortfolioView {
    const PWTimelineEntry& pwTimelineEntry;
    bool isCompact = false;

    platform::View body() const;
};

/// The widget's icon and the app's mark; the caption only where there is room for it.
struct HeaderView {
    const PWTimelineEntry& pwTimelineEntry;
    bool isCompact = false;

    platform::View body() const;
};

/// One row: caption above, rupee sign, amount and percentage below.
struct StaticticsView {
    const PortfolioWidgetVM& portfolioWidgetVM;
    const PWTimelineEntry& pwTimelineEntry;
    bool isCompact = false;
    std::size_t index = 0;

    platform::View body() const;
};

/// Two rows a line, the second of each pair at the trailing side.
struct PortfolioMediumView {
    const std::vector<PortfolioWidgetVM>& portfolioWidgetVM;
    const PWTimelineEntry& pwTimelineEntry;
    bool isCompact = false;

    platform::View body() const;
};

/// All rows one below the other.
struct PortfolioCompactView {
    const std::vector<PortfolioWidgetVM>& portfolioWidgetVM;
    const PWTimelineEntry& pwTimelineEntry;
    bool isCompact = true;

    platform::View body() const;
};

/// What a user with a portfolio sees; a tap opens it.
struct PortfolioView {
    const PWTimelineEntry& pwTimelineEntry;
    bool isCompact = false;

    platform::View body() const;
};

/// Picks the content by the entry's state; a failure looks like being signed out.
struct PortfolioWidgetView {
    const PWTimelineEntry& pwTimelineEntry;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

struct PortfolioWidgetEntryView {
    const PWTimelineEntry& portfolioTimelineEntry;

    platform::View body(const platform::EnvironmentValues& environment) const;
};

}  // namespace extension
