#pragma once

// Timelines: dated entries, and when to ask for more.

#include <vector>
#include "platform/base/clock.h"
#include "platform/view/screen.h"

namespace platform {

/// When a host may ask for the next timeline: at the earliest on a date, or after the last entry.
struct TimelineReloadPolicy {
    enum class Kind { atEnd, after };
    Kind kind = Kind::atEnd;
    /// Of `after` only.
    Instant date{};

    static TimelineReloadPolicy after(Instant date) { return {Kind::after, date}; }
    static TimelineReloadPolicy atEnd() { return {}; }

    bool operator==(const TimelineReloadPolicy&) const = default;
};

template <typename Entry>
struct Timeline {
    std::vector<Entry> entries;
    TimelineReloadPolicy policy;
};

/// The widget for which a provider is asked.
struct TimelineProviderContext {
    WidgetFamily family = WidgetFamily::systemSmall;
    /// In points.
    Size displaySize = {};
    bool isPreview = false;
};

}  // namespace platform
