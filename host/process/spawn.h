#pragma once

// Starting a program behind a wall: nothing of its parent's but three descriptors.

#include <filesystem>
#include <string>
#include <vector>
#include "platform/base/result.h"

namespace host {

struct SpawnOptions {
    std::filesystem::path program;
    /// Without the program's own name.
    std::vector<std::string> arguments;
    /// Becomes standard input and output.
    int messages = -1;
    /// Becomes standard error.
    int log = -1;
};

/// The process id of the new child. It has next to no environment, no other open file, no way to gain
/// privileges, leaves no core file, stands in a process group of its own and dies with the *thread*
/// that calls this. Waits until the child is the program and no copy of ours any more: its memory
/// is its own then. A program that is not there or cannot be executed is an error (domain "ExtensionError").
platform::Result<int> spawn(const SpawnOptions& options);

}  // namespace host
