#pragma once

// Reading and writing the descriptors over which messages go.

#include <string>
#include <string_view>
#include "platform/base/result.h"

namespace platform {

/// Reads what is there, waiting for the first byte; empty at the end of the stream. Fails with the system's
/// number as code (domain "SystemError").
Result<std::string> readSome(int descriptor);

/// Writes all of `bytes`, waiting as long as it takes. The process must not die of SIGPIPE.
Result<void> writeAll(int descriptor, std::string_view bytes);

}  // namespace platform
