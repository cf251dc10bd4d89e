#pragma once

// Decodes pictures from untrusted sources.

#include <cairo.h>
#include <optional>
#include <string_view>
#include "host/paint/owned.h"

namespace host {

using Surface = Owned<cairo_surface_t, cairo_surface_destroy>;

/// Whether a surface may have these sides, in pixels.
bool isSurfaceSize(double width, double height);

struct DecodedPicture {
    /// In pixels, as the picture declares them.
    int width = 0;
    int height = 0;
    /// As large as the picture, or smaller when that is cheaper to decode and still large enough.
    Surface surface;
};

/// Decodes PNG, JPEG and WebP, recognised by their first bytes. The surface is at least as large as wanted,
/// unless the picture itself is smaller. Absent when the bytes are another format, cut, broken or an
/// animation, or when they declare more than 16 million pixels, which is checked before any pixel is
/// decoded. Any thread.
std::optional<DecodedPicture> decodePicture(std::string_view bytes, int wantedWidth, int wantedHeight);

}  // namespace host
