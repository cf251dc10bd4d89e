#pragma once

// The hours of the day that matter to the widgets, and when they ask for a new timeline.

#include <chrono>
#include "platform/base/diagnostics.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

namespace extension {

/// In India: while the automatic theme is light.
inline constexpr std::chrono::hours dayBegins{7};
inline constexpr std::chrono::hours dayEnds{19};

/// In the user's calendar: while the portfolio is asked for.
inline constexpr std::chrono::hours marketOpens{9};
inline constexpr std::chrono::hours marketCloses{16};

/// Fatal when the calendar cannot give the moment 30 seconds from now.
inline platform::TimelineReloadPolicy reloadIn30Seconds(const platform::Runtime& runtime) {
    const auto date = runtime.calendar().dateByAddingSeconds(30, runtime.now());
    if (!date) platform::fatalError("the calendar cannot add 30 seconds to now");
    return platform::TimelineReloadPolicy::after(*date);
}

}  // namespace extension
