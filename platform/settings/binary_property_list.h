#pragma once

// The binary format of property lists.

#include <string>
#include <string_view>
#include "platform/base/result.h"
#include "platform/settings/property_list.h"
#include "platform/settings/property_list_limits.h"

namespace platform::property_list {

inline constexpr std::string_view binaryHeader = "bplist00";

/// Reads a binary property list within the bounds of `budget`. Every
/// reference is checked, and a cycle is an error. An identifier becomes a dictionary with the only key
/// `identifierKey`.
Result<PropertyList> readBinary(std::string_view bytes, Budget budget);

/// Writes a binary property list; a dictionary with the only key `identifierKey` becomes an identifier. Bytes
/// of a text that are not UTF-8 become U+FFFD.
std::string writeBinary(const PropertyList& root);

}  // namespace platform::property_list
