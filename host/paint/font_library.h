#pragma once

// The fonts that we draw with: a few files at known places and nothing else of the machine.

#include <pango/pango.h>
#include "host/paint/owned.h"
#include "platform/base/result.h"

namespace host {

using TextContext = Owned<PangoContext, g_object_unref>;

inline constexpr const char* textFamily = "Inter";

/// A context in which one unit is a point, without hinting, in a fixed language. It owns its fonts.
/// Fails (domain "PaintError") when a font is not installed.
///
/// Takes out of the process's environment the variables by which the font libraries would draw
/// otherwise, and makes the fonts the process's own; so call it before other threads start.
platform::Result<TextContext> makeTextContext();

}  // namespace host
