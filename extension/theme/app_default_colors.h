#pragma once

// Colours that are the same in every theme.

#include "platform/base/color.h"

namespace extension {

class AppDefaultColors {
public:
    static constexpr platform::Color colorBlack = platform::Color::rgb(0.0, 0.0, 0.0);
    /// Black, whatever its name says: the light theme's secondary text depends on it.
    static constexpr platform::Color colorBlueGray = platform::Color::rgb(0.0, 0.0, 0.0);
    static constexpr platform::Color colorGreen = platform::Color::rgb(0.212, 0.59, 0.08);
    static constexpr platform::Color colorRed = platform::Color::rgb(0.82, 0.23, 0.28);
    static constexpr platform::Color colorWhitieshGray = platform::Color::rgb(0.33, 0.35, 0.4);
    static constexpr platform::Color colorLightBlack = platform::Color::rgb(0.4, 0.41, 0.46);
    static constexpr platform::Color blueThemeColor = platform::Color::rgb(0.09, 0.38, 0.63);

    static constexpr platform::Color colorWhite = platform::Color::rgb(1.0, 1.0, 1.0);

    // The slider between a day's low (left) and high (right).
    static constexpr platform::Color sliderThumbColor = platform::Color::rgb(0.95, 0.96, 0.98);
    static constexpr platform::Color sliderLeftColor = platform::Color::rgb(0.82, 0.23, 0.28);
    static constexpr platform::Color sliderRightColor = platform::Color::rgb(0.212, 0.59, 0.08);
};

}  // namespace extension
