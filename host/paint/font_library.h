#pragma once

// The fonts for drawing: a few files at known places. Other fonts of the machine are never used.

#include <pango/pango.h>
#include <string_view>
#include "host/layout/measurer.h"
#include "host/paint/owned.h"
#include "platform/base/result.h"
#include "platform/view/view.h"

namespace host {

using TextContext = Owned<PangoContext, g_object_unref>;

inline constexpr const char* textFamily = "Inter";

/// A context that owns its fonts. One unit is a point, hinting is off and the language is fixed.
/// Fails (domain "PaintError") when a font is not installed.
///
/// Call it before other threads start: it removes environment variables that would change how the font
/// libraries draw, and replaces the fonts of the whole process.
platform::Result<TextContext> makeTextContext();

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
