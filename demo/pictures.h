#pragma once

// Pictures for the stories, drawn by the service.

#include <string>

namespace demo {

inline constexpr int pictureCount = 8;

/// A JPEG of 480 × 320 pixels. Each number has its own picture, and always the same bytes.
std::string makePicture(int number);

}  // namespace demo
