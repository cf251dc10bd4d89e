#include "host/paint/system_font.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace host {
namespace {

// Tracking of the platform's text sizes, in thousandths of an em, from 8 points up in whole points.
constexpr double firstTrackedSize = 8.0;
constexpr std::array<double, 10> trackingOfSizes{26, 19, 12, 6, 0, -6, -11, -16, -20, -26};

// Inter Bold runs narrower than the platform's bold.
constexpr double boldTracking = 20.0;

constexpr std::string_view compactMedium = "SFCompactDisplay-Medium";
constexpr std::string_view compactRegular = "SFCompactDisplay-Regular";

bool isCompact(const platform::Font& font) {
    return font.name == compactMedium || font.name == compactRegular;
}

double tableTracking(double size) {
    const double position =
        std::clamp(size - firstTrackedSize, 0.0, static_cast<double>(trackingOfSizes.size() - 1));
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, trackingOfSizes.size() - 1);
    return std::lerp(trackingOfSizes[below], trackingOfSizes[above], position - static_cast<double>(below));
}

}  // namespace

platform::FontWeight drawnWeight(const platform::Font& font) {
    if (font.name == "system") return font.weight;
    return font.name == compactMedium ? platform::FontWeight::medium : platform::FontWeight::regular;
}

double drawnSize(const platform::Font& font) {
    return std::isfinite(font.size) ? std::clamp(font.size, 1.0, 400.0) : platform::Font{}.size;
}

FontMetrics systemMetrics(double size) {
    constexpr double unitsPerEm = 2048.0;
    return {.ascent = size * 1950.0 / unitsPerEm,
            .descent = size * 494.0 / unitsPerEm,
            .capHeight = size * 1443.0 / unitsPerEm};
}

double tracking(const platform::Font& font) {
    if (isCompact(font)) return 0.0;
    const double size = drawnSize(font);
    const double extra = drawnWeight(font) == platform::FontWeight::bold ? boldTracking : 0.0;
    return (tableTracking(size) + extra) / 1000.0 * size;
}

}  // namespace host
