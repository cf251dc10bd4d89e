#pragma once

// What is shown instead of figures: add a portfolio, or sign in.

#include "extension/widgets/portfolio/model/pw_timeline_entry.h"
#include "platform/view/view.h"

namespace extension {

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

}  // namespace extension
