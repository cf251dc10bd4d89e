#pragma once

// Answers that never change, so that pictures can be compared. They depend on no clock, fault or user.

#include <string_view>
#include "serving/http_server.h"

namespace demo {

inline constexpr std::string_view scenePrefix = "/scene/";

/// Answers "/scene/NAME/…" as the service answers "/…" to the extension: with quotes for every identifier,
/// stories whose thumbnails are at `origin`, and one user's portfolio.
///
/// NAME is "full", "one", "none", "long", "live", "gain", "loss" or "neutral"; other names get status 404.
/// Any thread.
serving::Response sceneAnswer(const serving::Request& request, std::string_view origin);

}  // namespace demo
