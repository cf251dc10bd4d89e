#pragma once

// Small pictures for the stories, drawn by the service itself.

#include <string>

namespace demo {

inline constexpr int pictureCount = 8;

/// A JPEG of 480 × 320 pixels, another scene for every number; the same bytes for the same number.
std::string makePicture(int number);

}  // namespace demo
