#pragma once

// The two formats of property lists, binary and XML: their limits for bytes of unknown origin, their readers
// and writers, and how they write numbers and dates. Writing XML is `xmlPropertyList`.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include "platform/base/clock.h"
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

inline constexpr std::string_view binaryHeader = "bplist00";

/// Reads a binary property list within the bounds of `budget`. Every
/// reference is checked, and a cycle is an error. An identifier becomes a dictionary with the only key
/// `identifierKey`.
Result<PropertyList> readBinary(std::string_view bytes, Budget budget);

/// Writes a binary property list; a dictionary with the only key `identifierKey` becomes an identifier. Bytes
/// of a text that are not UTF-8 become U+FFFD.
std::string writeBinary(const PropertyList& root);

/// Reads an XML property list (UTF-8) within the bounds of `budget`. A document type may
/// name the format but declare nothing; entities other than XML's own are an error.
Result<PropertyList> readXml(std::string_view bytes, Budget budget);

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
