#pragma once

// When the widgets ask for a new timeline.

#include "platform/base/fatal.h"
#include "platform/runtime/runtime.h"
#include "platform/widget/timeline.h"

namespace extension {

/// Fatal when the calendar cannot give the moment 30 seconds from now.
inline platform::TimelineReloadPolicy reloadIn30Seconds(const platform::Runtime& runtime) {
    const auto date = runtime.calendar().dateByAddingSeconds(30, runtime.now());
    if (!date) platform::fatalError("the calendar cannot add 30 seconds to now");
    return platform::TimelineReloadPolicy::after(*date);
}

}  // namespace extension
