#pragma once

// What stands in for the platform's fonts: which face is drawn, on which line metrics, and how far apart.

#include <string_view>
#include "host/layout/measurer.h"
#include "platform/view/view.h"

namespace host {

/// The weight of Inter that draws a font. A custom font carries its weight in its name; one that is
/// not there is the system font at the same size.
platform::FontWeight drawnWeight(const platform::Font& font);

/// Points; sizes that cannot be drawn are brought to the nearest that can.
double drawnSize(const platform::Font& font);

/// The platform's own metrics, the same for every weight and name: Inter's are a little larger, and its
/// baseline is put on the platform's.
FontMetrics systemMetrics(double size);

/// What is added to every advance, in points.
double tracking(const platform::Font& font);

}  // namespace host
