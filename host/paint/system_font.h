#pragma once

// How Inter replaces the platform's fonts: which weight is drawn, with which line metrics and spacing.

#include <string_view>
#include "host/layout/measurer.h"
#include "platform/view/view.h"

namespace host {

/// The weight of Inter that replaces a font. A custom font has its weight in its name; an unknown custom font
/// is replaced by the system font at the same size.
platform::FontWeight drawnWeight(const platform::Font& font);

/// In points. A size that cannot be drawn becomes the nearest size that can.
double drawnSize(const platform::Font& font);

/// The platform's metrics, the same for every weight and name. Inter's own are a little larger; its text is
/// placed on the platform's baseline.
FontMetrics systemMetrics(double size);

/// The space that is added after every letter, in points.
double tracking(const platform::Font& font);

}  // namespace host
