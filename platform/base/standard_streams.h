#pragma once

// Descriptors 0, 1 and 2.

namespace platform {

/// Puts an empty file where a program was started without one of its standard streams: else the next file
/// that it opens would take that number, and what is printed would go there. Writing to a standard output
/// that was not there still fails. To be called first of all.
void fillStandardStreams();

}  // namespace platform
