#pragma once

// The times of day at which widgets change what they show or when they ask. Both ends belong to a span.

#include <chrono>

namespace extension {

/// In India: while the automatic theme is light.
inline constexpr std::chrono::hours dayBegins{7};
inline constexpr std::chrono::hours dayEnds{19};

/// In the user's calendar: while the portfolio is asked for.
inline constexpr std::chrono::hours marketOpens{9};
inline constexpr std::chrono::hours marketCloses{16};

}  // namespace extension
