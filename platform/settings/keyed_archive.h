#pragma once

// Objects as a phone's keyed archiver writes them.

#include <string_view>
#include "platform/base/result.h"
#include "platform/settings/property_list.h"

namespace platform {

/// The root object of a keyed archive: texts, numbers, dates, data, arrays and dictionaries,
/// immutable and mutable, of the current and the older key style. Bounded for bytes of unknown origin:
/// 256 KiB, 20,000 objects, 32 levels, shared objects counting each time; a cycle, a dangling identifier or
/// an unknown class is an error (domain "KeyedArchiveError").
Result<PropertyList> unarchivedObject(std::string_view archive);

/// `root` as a binary keyed archive, as a host app would write it.
std::string archivedObject(const PropertyList& root);

}  // namespace platform
