#pragma once

// Writes PNG fast: at a widget's size, encoding is most of what a picture costs.

#include <cairo.h>
#include <string>

namespace host {

/// The pixels of an ARGB32 image surface as 8-bit sRGB, with alpha unless `isOpaque`. The same pixels
/// give the same bytes on one machine; on another processor the compressed bytes may differ.
std::string encodePng(cairo_surface_t* surface, bool isOpaque);

}  // namespace host
