#pragma once

// The home screen in a browser: `run` starts it and serves it until it is told to stop.

#include <chrono>
#include <cstdint>
#include "platform/base/result.h"
#include "platform/runtime/process_options.h"

namespace host {

struct RunOptions {
    /// As they stood on the command line; handed on to the extension.
    platform::ProcessOptions process;
    /// Of the page; 0 takes any free one.
    std::uint16_t port = 0;
    /// Starts the demo service and has the extension call it; otherwise the extension calls what its
    /// information dictionary names.
    bool isDemo = true;
    /// How long to serve, unless SIGINT or SIGTERM comes before.
    std::chrono::nanoseconds duration = std::chrono::nanoseconds::max();
};

/// Serves the home screen on 127.0.0.1 and prints its address, one line on standard output. Fails when it
/// could not start; the domain is "UsageError" when `process` is wrong usage. Blocks SIGINT and SIGTERM in
/// the calling thread; call it from `main()` before other threads are there.
platform::Result<void> runHomeScreen(const RunOptions& options);

}  // namespace host
