#include "extension/app/settings/next_reload.h"

#include "platform/base/fatal.h"

namespace extension {

platform::TimelineReloadPolicy reloadIn30Seconds(const platform::Runtime& runtime) {
    const auto date = runtime.calendar().dateByAddingSeconds(30, runtime.now());
    if (!date) platform::fatalError("the calendar cannot add 30 seconds to now");
    return platform::TimelineReloadPolicy::after(*date);
}

}  // namespace extension
