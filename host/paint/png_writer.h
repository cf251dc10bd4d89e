#pragma once

// Writes PNG fast: at the size of a widget, encoding takes most of the time of a picture.

#include <cairo.h>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// Keeps its memory between pictures. One thread at a time.
class PngWriter {
public:
    /// The pixels of an ARGB32 image surface as 8-bit sRGB, with alpha unless `isOpaque`. On one
    /// machine, the same pixels give the same bytes; on another processor the compressed bytes may differ.
    std::string encode(cairo_surface_t* surface, bool isOpaque);

private:
    void filterRows(cairo_surface_t* surface, bool isOpaque);
    void compressRows();

    /// The two latest rows, before filtering.
    std::vector<std::uint8_t> above_;
    std::vector<std::uint8_t> current_;
    std::vector<std::uint8_t> filtered_;
    std::vector<std::uint8_t> work_;
    std::string compressed_;
};

}  // namespace host
