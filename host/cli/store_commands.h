#pragma once

// The commands on the settings store that the phone app and its widgets share.

#include <optional>
#include <string>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace host {

// An error of the domain "UsageError" is wrong usage.

/// Writes to standard output when no file is named.
platform::Result<void> exportStore(const platform::ProcessOptions& process,
                                   const std::optional<std::string>& file);
/// Sets all keys of the file, or none of them.
platform::Result<void> importStore(const platform::ProcessOptions& process, const std::string& file);
platform::Result<void> getKey(const platform::ProcessOptions& process, const std::string& key);
/// `type` is string, integer, real, boolean, data, date or plist.
platform::Result<void> setKey(const platform::ProcessOptions& process, const std::string& key,
                              const std::string& type, const std::string& value);
platform::Result<void> removeKey(const platform::ProcessOptions& process, const std::string& key);
platform::Result<void> repair(const platform::ProcessOptions& process);

}  // namespace host
