#pragma once

// The limits for reading bytes of unknown origin, and the error when they are exceeded.

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include "platform/base/result.h"
#include "platform/settings/property_list.h"

namespace platform::property_list {

inline constexpr std::size_t maximumSize = 64U << 20;
inline constexpr std::size_t maximumObjects = 1'000'000;
/// How deeply arrays and dictionaries may be nested.
inline constexpr std::size_t maximumDepth = 32;

/// The key of an object's identifier in a keyed archive, in a dictionary of its own. XML lists write
/// identifiers this way, and so do we when we read binary ones.
inline constexpr const char* identifierKey = "CF$UID";

inline tl::unexpected<Error> refused(std::string message) {
    return failure("PropertyListError", 1, std::move(message));
}

/// Counts what has been read. Content that several objects share counts each time, since each gets a copy.
class Budget {
public:
    explicit Budget(std::size_t objects = maximumObjects, std::size_t bytes = maximumSize)
        : objectsLeft_(objects), bytesLeft_(bytes) {}

    /// Takes one more object with `size` bytes of content; false when that is too much.
    bool take(std::size_t size = 0) {
        if (objectsLeft_ == 0 || size > bytesLeft_) return false;
        --objectsLeft_;
        bytesLeft_ -= size;
        return true;
    }

private:
    std::size_t objectsLeft_;
    std::size_t bytesLeft_;
};

/// Like `parsePropertyList`, but within the limits of `budget`.
Result<PropertyList> parse(std::string_view bytes, Budget budget);

}  // namespace platform::property_list
