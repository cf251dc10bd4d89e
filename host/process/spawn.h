#pragma once

// Starts a program that inherits nothing from its parent except three descriptors.

#include <sys/resource.h>

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
    /// In bytes; what would take more fails in the child. 0: no limit.
    rlim_t addressSpace = 0;
};

/// The process id of the new child. It has next to no environment, no other open file and no way to gain
/// privileges; it leaves no core file, writes no file above 256 MiB, has a process group of its own and dies
/// with the *thread* that called this. Returns when the child has become the program, so that its memory is
/// its own. An error when the program does not exist or cannot be executed: domain "ProcessError", the
/// message goes on after the program's name
/// ("cannot be started: …").
platform::Result<int> spawn(const SpawnOptions& options);

}  // namespace host
