#pragma once

// From the common options on a host's command line to the runtime of the host and to its extension's child
// process, whose environment is clean.

#include "host/process/extension_process.h"
#include "platform/runtime/process_options.h"

namespace host {

/// What the options, the environment and the system say together, with the installed information dictionary.
platform::Result<platform::RuntimeOptions> resolvedOptions(const platform::ProcessOptions& options);

/// How to start the extension beside the running program: `options` as they stood on the host's command line,
/// and what `resolved` took from the environment and the system. With --verbose its log goes to standard
/// error.
ExtensionOptions extensionOptions(const platform::ProcessOptions& options,
                                  const platform::RuntimeOptions& resolved);

}  // namespace host
