#pragma once

// The signals that ask a program to end: SIGINT and SIGTERM.

#include <csignal>

namespace platform {

/// Blocks them, so that `sigwait` and similar calls can receive them. Call it before the first thread starts,
/// so that they interrupt no thread.
sigset_t blockEndingSignals();

}  // namespace platform
