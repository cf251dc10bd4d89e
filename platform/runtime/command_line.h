#pragma once

// The common options on a program's command line.

#include <string>
#include <vector>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace platform {

/// Takes the common options ("--now INSTANT", "--now=INSTANT", ...) out of `arguments`, wherever they are
/// before a "--", and leaves the rest in order. The last one of several counts. A missing value is a
/// "UsageError".
Result<ProcessOptions> takeProcessOptions(std::vector<std::string>& arguments);

}  // namespace platform
