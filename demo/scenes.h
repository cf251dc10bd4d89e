#pragma once

// Answers that never change, for pictures that are to be compared: no clock, no fault, no user.

#include <string_view>
#include "serving/http_server.h"

namespace demo {

inline constexpr std::string_view scenePrefix = "/scene/";

/// Answers "/scene/NAME/…" as the service named NAME would answer "/…" to the extension: quotes for
/// whatever is asked, stories whose thumbnails stand at `origin`, and one user's portfolio.
///
/// NAME is "full", "one", "none", "long", "live", "gain", "loss" or "neutral"; any other is not found.
/// Any thread.
serving::Response sceneAnswer(const serving::Request& request, std::string_view origin);

}  // namespace demo
