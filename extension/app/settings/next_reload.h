#pragma once

// When the widgets ask for a new timeline.

#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

namespace extension {

/// Fatal when the calendar cannot give the moment 30 seconds from now.
platform::TimelineReloadPolicy reloadIn30Seconds(const platform::Runtime& runtime);

}  // namespace extension
