#pragma once

// The device's language and region, and its time zone, by name.

#include <string>

namespace platform {

/// A locale identifier such as "en_IN".
struct Locale {
    std::string identifier = "en_US";

    bool operator==(const Locale&) const = default;
};

/// A zone identifier such as "Asia/Kolkata".
struct TimeZone {
    std::string identifier = "UTC";

    bool operator==(const TimeZone&) const = default;
};

}  // namespace platform
