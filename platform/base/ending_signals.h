#pragma once

// The signals that ask a program to end: SIGINT and SIGTERM.

#include <csignal>

namespace platform {

/// Blocks them, for `sigwait` and its kin to take. To be called before any thread is there, so that none is
/// interrupted by them.
sigset_t blockEndingSignals();

}  // namespace platform
