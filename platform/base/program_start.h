#pragma once

// What a program does before anything else, for its standard streams and for the signals that end it.

#include <csignal>

namespace platform {

/// Opens /dev/null for every standard stream that the program was started without. Otherwise the next file
/// that it opens would get that number, and output would go into the file. Writing to a standard output that
/// was missing still fails. Call it first.
void fillStandardStreams();

/// Blocks them, so that `sigwait` and similar calls can receive them. Call it before the first thread starts,
/// so that they interrupt no thread.
sigset_t blockEndingSignals();

}  // namespace platform
