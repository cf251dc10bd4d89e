#pragma once

// The fonts for drawing: a few files at known places. Other fonts of the machine are never used.

#include <pango/pango.h>
#include "host/paint/owned.h"
#include "platform/base/result.h"

namespace host {

using TextContext = Owned<PangoContext, g_object_unref>;

inline constexpr const char* textFamily = "Inter";

/// A context that owns its fonts. One unit is a point, hinting is off and the language is fixed.
/// Fails (domain "PaintError") when a font is not installed.
///
/// Call it before other threads start: it removes environment variables that would change how the font
/// libraries draw, and replaces the fonts of the whole process.
platform::Result<TextContext> makeTextContext();

}  // namespace host
