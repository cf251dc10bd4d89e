#pragma once

// How a host hands its own surroundings on to its child, whose environment is clean.

#include <filesystem>
#include <string>
#include <vector>
#include "platform/runtime/process_options.h"

namespace host {

/// The child's command line: `options` as they stood on the host's, with what `resolved` took from the
/// environment and the system in place of what stood nowhere.
std::vector<std::string> extensionArguments(const platform::ProcessOptions& options,
                                            const platform::RuntimeOptions& resolved);

/// The extension's program beside the running one.
std::filesystem::path extensionProgram();

}  // namespace host
