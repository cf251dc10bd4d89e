#pragma once

// The outline that a widget has on the home screen.

#include <string>
#include "host/layout/display_list.h"

namespace host {

/// A closed path from (0, 0) to `size` in SVG's path language, which CSS's `clip-path: path()` reads too.
/// Lengths are in points.
std::string widgetOutline(const platform::Size& size);

}  // namespace host
