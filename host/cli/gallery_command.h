#pragma once

// The command that draws every widget in every state.

#include <optional>
#include <string>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace host {

/// Draws the gallery into `folder` and tells on standard output how many pictures there are. Compared with
/// an earlier gallery, pictures that are not as they were are an error that counts them.
platform::Result<void> drawGalleryFolder(const platform::ProcessOptions& process, const std::string& folder,
                                         const std::optional<std::string>& comparedWith);

}  // namespace host
