#pragma once

// Numbers and dates as property lists write them.

#include <optional>
#include <string>
#include <string_view>
#include "platform/base/clock.h"

namespace platform::property_list {

/// The shortest text that reads back as the same number; "nan", "+infinity" and "-infinity" too.
std::string realText(double value);

/// The moment so many seconds after 1 January 2001 UTC. What an Instant cannot tell (the distant past
/// and future, for which apps have constants) becomes the nearest one that it can.
Instant instantFromReferenceDate(double seconds);

double secondsSinceReferenceDate(Instant instant);

/// "2026-11-22T03:30:00Z": the format knows whole seconds only.
std::string dateText(Instant instant);

/// Reads that, with or without a fraction; other years than an Instant can tell as above.
std::optional<Instant> parseDateText(std::string_view text);

}  // namespace platform::property_list
