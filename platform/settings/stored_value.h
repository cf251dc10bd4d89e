#pragma once

// A property-list value as the bytes of one row of a store.

#include <optional>
#include <string>
#include <string_view>
#include "platform/settings/property_list.h"

namespace platform {

/// One level less than a property list may have, so that an export of the whole store can be read again.
inline constexpr int maximumStoredDepth = 31;

/// Every value keeps its type and every bit. Nothing when it is nested too deeply.
std::optional<std::string> encodeStoredValue(const PropertyList& value);

/// Nothing for bytes that `encodeStoredValue` did not write.
std::optional<PropertyList> decodeStoredValue(std::string_view bytes);

}  // namespace platform
