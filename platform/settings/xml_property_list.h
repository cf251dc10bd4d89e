#pragma once

// The XML format of property lists. Writing it is `xmlPropertyList`.

#include <string_view>
#include "platform/base/result.h"
#include "platform/settings/property_list.h"
#include "platform/settings/property_list_limits.h"

namespace platform::property_list {

/// Reads an XML property list (UTF-8) within the bounds of `budget`. A document type may
/// name the format but declare nothing; entities other than XML's own are an error.
Result<PropertyList> readXml(std::string_view bytes, Budget budget);

}  // namespace platform::property_list
