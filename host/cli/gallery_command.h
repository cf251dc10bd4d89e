#pragma once

// The command that draws every widget in every state.

#include <optional>
#include <string>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace host {

/// Draws the gallery into `folder` and prints how many pictures it has. When pictures differ from the earlier
/// gallery, the error says how many.
platform::Result<void> drawGalleryFolder(const platform::ProcessOptions& process, const std::string& folder,
                                         const std::optional<std::string>& comparedWith);

}  // namespace host
