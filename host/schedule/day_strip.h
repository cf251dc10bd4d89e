#pragma once

// What widgets would show through a whole day, computed in seconds.

#include <chrono>
#include <string>
#include <vector>
#include "host/paint/widget_renderer.h"
#include "host/process/extension_process.h"
#include "platform/base/clock.h"
#include "platform/text/calendar.h"

namespace host {

/// One look that lasts until the next.
struct DayLook {
    platform::Instant from;
    /// "policy", or what changes then: "theme", "window".
    std::string cause;
    DrawnWidget widget;
};

struct DayRow {
    std::string kind;
    platform::WidgetFamily family = platform::WidgetFamily::systemSmall;
    std::vector<DayLook> looks;
    int questions = 0;
    /// Why the row ends early; empty when it does not.
    std::string error;
};

/// Asks a child of its own, whose clock it sets, by the phone's rules of reloading and at every change of the
/// automatic theme (in India) and of the portfolio's hours (in `calendar`'s zone). A look that is like the
/// one before it is left out. `extension` must be used by nobody else meanwhile; once it is closed, or
/// `limit` is over, the rows that are left end with an error.
std::vector<DayRow> lookThroughDay(ExtensionProcess& extension, const std::vector<WidgetListing>& gallery,
                                   platform::Instant day, const platform::Calendar& calendar,
                                   std::chrono::steady_clock::time_point limit);

}  // namespace host
