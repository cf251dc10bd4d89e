#pragma once

// Numbers and dates as property lists write them.

#include <optional>
#include <string>
#include <string_view>
#include "platform/base/clock.h"

namespace platform::property_list {

/// The shortest text that reads back as the same number; "nan", "+infinity" and "-infinity" too.
std::string realText(double value);

/// The moment that many seconds after 1 January 2001 UTC. Moments that an Instant cannot represent (the
/// distant past and future, for which apps have constants) become the nearest Instant.
Instant instantFromReferenceDate(double seconds);

double secondsSinceReferenceDate(Instant instant);

/// "2026-11-22T03:30:00Z": the format knows whole seconds only.
std::string dateText(Instant instant);

/// Reads that format, with or without a fraction. Years beyond an Instant's range as above.
std::optional<Instant> parseDateText(std::string_view text);

}  // namespace platform::property_list
