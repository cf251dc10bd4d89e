#pragma once

// The common options on a program's command line.

#include <string>
#include <vector>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace platform {

/// Takes the common options ("--now INSTANT", "--now=INSTANT", ...) out of `arguments`, wherever they stand
/// before a "--", and leaves the rest in order. Of several the last one counts. A missing value is a
/// "UsageError".
Result<ProcessOptions> takeProcessOptions(std::vector<std::string>& arguments);

}  // namespace platform
