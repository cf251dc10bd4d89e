#pragma once

// Outlines with rounded corners.

#include <cairo.h>
#include "host/layout/display_list.h"

namespace host {

/// Adds the rectangle's outline to the canvas's path, clockwise. The radius is at most half of the shorter
/// side. A continuous corner begins earlier on the sides than an arc, and its curvature grows gradually. On
/// the diagonal both are equally far from the corner.
void addRoundedRectangle(cairo_t* canvas, const Rect& frame, double cornerRadius,
                         platform::RoundedCornerStyle style);

}  // namespace host
