#pragma once

// The formats in which a drawing can be saved. Everything that offers them reads this table.

#include <span>
#include <string>
#include <string_view>
#include "host/paint/painter.h"

namespace host {

struct PictureFormat {
    /// What the file's name ends in, such as ".png".
    std::string ending;
    /// The file's content. `scale` is in pixels per point; `timing` gets what painting and encoding took.
    platform::Result<std::string> (*content)(Painter& painter, const DisplayList& list, int scale,
                                             Painter::Timing& timing);
};

std::span<const PictureFormat> pictureFormats();

/// Fails with "UsageError" when `fileName` ends in none of them.
platform::Result<PictureFormat> pictureFormatOf(std::string_view fileName);

/// ".png, .svg or .json", for help and messages.
std::string pictureEndings();

}  // namespace host
