#pragma once

// The times of day at which widgets change what they show or how often they ask. Each pair is inclusive.

#include <chrono>

namespace extension {

/// In India: the automatic theme is light.
inline constexpr std::chrono::hours dayBegins{7};
inline constexpr std::chrono::hours dayEnds{19};

/// Of the user's calendar: the portfolio is asked for.
inline constexpr std::chrono::hours marketOpens{9};
inline constexpr std::chrono::hours marketCloses{16};

}  // namespace extension
