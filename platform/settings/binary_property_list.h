#pragma once

// The binary format of property lists.

#include <string>
#include <string_view>
#include "platform/base/result.h"
#include "platform/settings/property_list.h"
#include "platform/settings/property_list_limits.h"

namespace platform::property_list {

inline constexpr std::string_view binaryHeader = "bplist00";

/// Reads a binary property list within the bounds of `budget`. Does not recurse; every
/// reference is checked, and one that leads back to where it stands is an error. An identifier
/// becomes a dictionary of `identifierKey` alone.
Result<PropertyList> readBinary(std::string_view bytes, Budget budget);

/// Writes one; a dictionary of `identifierKey` alone becomes an identifier. A text that is no UTF-8
/// gets U+FFFD where it is none.
std::string writeBinary(const PropertyList& root);

}  // namespace platform::property_list
