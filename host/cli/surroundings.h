#pragma once

// The settings of a process from the command line, the environment and the system.

#include "host/process/extension_process.h"
#include "platform/runtime/process_options.h"

namespace host {

platform::Result<platform::RuntimeOptions> surroundings(const platform::ProcessOptions& process);

/// How to start the extension in those surroundings. With --verbose its log goes to standard error.
ExtensionOptions extensionOptions(const platform::ProcessOptions& process,
                                  const platform::RuntimeOptions& resolved);

}  // namespace host
