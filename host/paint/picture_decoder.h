#pragma once

// Decodes pictures that nobody vouches for.

#include <cairo.h>
#include <optional>
#include <string_view>
#include "host/paint/owned.h"

namespace host {

using Surface = Owned<cairo_surface_t, cairo_surface_destroy>;

/// Whether a surface can have these sides, in pixels, and is not larger than any screen asks for.
bool isSurfaceSize(double width, double height);

struct DecodedPicture {
    /// In pixels, as the picture declares them.
    int width = 0;
    int height = 0;
    /// As large, or smaller where that is cheaper to make and still large enough.
    Surface surface;
};

/// Reads PNG, JPEG and WebP, told apart by their first bytes whatever they are called. The surface is at
/// least as large as wanted, unless the picture itself is smaller. Nothing when the bytes are none of
/// these, are cut or broken, are an animation, or declare more than 16 million pixels: that is seen
/// before any pixel is decoded. Any thread.
std::optional<DecodedPicture> decodePicture(std::string_view bytes, int wantedWidth, int wantedHeight);

}  // namespace host
